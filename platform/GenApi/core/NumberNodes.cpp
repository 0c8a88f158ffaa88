#include "core/NumberNodes.h"

#include <algorithm>

namespace genapi {

using namespace GenApi_3_0;

namespace {

bool parseList(std::string_view text, std::vector<std::int64_t>& list) {
    return parseIntegers(text, list);
}
bool parseList(std::string_view text, std::vector<double>& list) {
    return parseFloats(text, list);
}

} // namespace

template<class T>
void NumberNode<T>::link(Linker& linker, const Property& property) {
    if (!linkRange(linker, property) && !m_value.link(*this, linker, property))
        ValueNode::link(linker, property);
}

/// True when the property was one of these.
template<class T>
bool NumberNode<T>::linkRange(Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::Min:
        linker.constant(*this, property, m_min);
        return true;
    case PropertyId::pMin:
        linker.reference(*this, property, m_min);
        return true;
    case PropertyId::Max:
        linker.constant(*this, property, m_max);
        if (std::is_integral_v<T> && m_max.constant < 0 && property.text.find('-') == std::string_view::npos)
            m_max.constant = Number::largest; // meant without sign: beyond all integers here
        return true;
    case PropertyId::pMax:
        linker.reference(*this, property, m_max);
        return true;
    case PropertyId::Inc:
        linker.constant(*this, property, m_inc);
        return true;
    case PropertyId::pInc:
        linker.reference(*this, property, m_inc);
        return true;
    case PropertyId::ValidValueSet:
        if (!parseList(property.text, m_valid))
            this->setFault("ValidValueSet is '" + std::string(property.text) + "', which is no list of " +
                           (std::is_integral_v<T> ? "integers" : "numbers"));
        else
            std::sort(m_valid.begin(), m_valid.end());
        return true;
    default:
        return false;
    }
}

template<class T>
void NumberNode<T>::linked(Linker& linker) {
    ValueNode::linked(linker);
    m_value.linked(*this);
}

// That of the value's source, which the index must be readable to choose, and without writing where one of
// the copies can't be written.
template<class T>
EAccessMode NumberNode<T>::chainMode(Aspect aspect) {
    EAccessMode mode = RW;
    if (Node* index = m_value.index()) {
        mode = this->neededMode(*index);
        if (!IsAvailable(mode))
            return mode;
    }
    if (Node* node = m_value.current(*this).node)
        mode = node->mode(aspect);
    if (IsWritable(mode))
        for (Node* copy : m_value.copies())
            if (!IsWritable(copy->mode(aspect)))
                mode = Combine(mode, RO);
    return mode;
}

template<class T>
T NumberNode<T>::compute(Reading how) {
    const Source<T>& source = m_value.current(*this);
    return source.node != nullptr ? Number::read(*source.node, how) : source.constant;
}

template<class T>
void NumberNode<T>::store(T value, bool verify) {
    Source<T>& source = m_value.current(*this);
    if (source.node != nullptr) {
        Number::write(*source.node, value, verify);
    } else {
        source.constant = value;
        this->drop();
        this->map().changed(*this);
    }
    for (Node* copy : m_value.copies())
        Number::write(*copy, value, verify);
}

template<class T>
T NumberNode<T>::ownMin() {
    if (m_min.given)
        return m_min.get();
    Node* node = m_value.current(*this).node;
    return node != nullptr ? Number::min(*node) : Number::smallest;
}

template<class T>
T NumberNode<T>::ownMax() {
    if (m_max.given)
        return m_max.get();
    Node* node = m_value.current(*this).node;
    return node != nullptr ? Number::max(*node) : Number::largest;
}

template<class T>
T NumberNode<T>::ownInc() {
    if (m_inc.given)
        return m_inc.get();
    Node* node = m_value.current(*this).node;
    return node != nullptr ? Number::inc(*node) : Number::noIncrement;
}

template<class T>
const std::vector<T>* NumberNode<T>::validValues() {
    const Evaluation evaluation(*this, Evaluation::Inc);
    if (!m_valid.empty())
        return &m_valid;
    return m_value.node() != nullptr ? Number::valid(*m_value.node()) : nullptr;
}

template<class T>
ERepresentation NumberNode<T>::representation() {
    const Evaluation evaluation(*this, Evaluation::Value);
    const ERepresentation own = Node::representation();
    return own == _UndefinedRepresentation && m_value.node() != nullptr ? m_value.node()->representation()
                                                                        : own;
}

template<class T>
std::string_view NumberNode<T>::unit() {
    const Evaluation evaluation(*this, Evaluation::Value);
    const std::string_view own = Node::unit();
    return own.empty() && m_value.node() != nullptr ? m_value.node()->unit() : own;
}

template<class T>
EDisplayNotation NumberNode<T>::displayNotation() {
    const Evaluation evaluation(*this, Evaluation::Value);
    const EDisplayNotation own = Node::displayNotation();
    return own == _UndefinedEDisplayNotation && m_value.node() != nullptr ? m_value.node()->displayNotation()
                                                                          : own;
}

template<class T>
std::int64_t NumberNode<T>::displayPrecision() {
    const Evaluation evaluation(*this, Evaluation::Value);
    const std::int64_t own = Node::displayPrecision();
    return own < 0 && m_value.node() != nullptr ? m_value.node()->displayPrecision() : own;
}

template class NumberNode<std::int64_t>;
template class NumberNode<double>;

} // namespace genapi
