#include "core/NumberNodes.h"

#include <algorithm>
#include <limits>

#include "core/RegisterNumbers.h"

namespace genapi {

using namespace GenApi_3_0;

namespace {

/// The mode of an Integer or a Float: that of its value's source, which the index must be readable to choose,
/// and without writing where one of the copies can't be written.
template<class T>
EAccessMode choiceMode(Node& owner, ValueChoice<T>& value, Aspect aspect, EAccessMode (*needed)(Node&)) {
    EAccessMode mode = RW;
    if (Node* index = value.index()) {
        mode = needed(*index);
        if (!IsAvailable(mode))
            return mode;
    }
    if (Node* node = value.current(owner).node)
        mode = node->mode(aspect);
    if (IsWritable(mode))
        for (Node* copy : value.copies())
            if (!IsWritable(copy->mode(aspect)))
                mode = Combine(mode, RO);
    return mode;
}

} // namespace

// IntegerNode

void IntegerNode::link(Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::Min:
        linker.constant(*this, property, m_min);
        break;
    case PropertyId::pMin:
        linker.reference(*this, property, m_min);
        break;
    case PropertyId::Max:
        linker.constant(*this, property, m_max);
        if (m_max.constant < 0 && property.text.find('-') == std::string_view::npos)
            m_max.constant =
                std::numeric_limits<std::int64_t>::max(); // meant without sign: beyond all integers here
        break;
    case PropertyId::pMax:
        linker.reference(*this, property, m_max);
        break;
    case PropertyId::Inc:
        linker.constant(*this, property, m_inc);
        break;
    case PropertyId::pInc:
        linker.reference(*this, property, m_inc);
        break;
    case PropertyId::ValidValueSet:
        if (!parseIntegers(property.text, m_valid))
            setFault("ValidValueSet is '" + std::string(property.text) + "', which is no list of integers");
        std::sort(m_valid.begin(), m_valid.end());
        break;
    default:
        if (!m_value.link(*this, linker, property))
            ValueNode::link(linker, property);
        break;
    }
}

void IntegerNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    m_value.linked(*this);
}

EAccessMode IntegerNode::chainMode(Aspect aspect) {
    return choiceMode(*this, m_value, aspect, neededMode);
}

std::int64_t IntegerNode::computeInteger(Reading how) {
    const IntegerSource& source = m_value.current(*this);
    return source.node != nullptr ? source.node->readInteger(how) : source.constant;
}

void IntegerNode::storeInteger(std::int64_t value, bool verify) {
    IntegerSource& source = m_value.current(*this);
    if (source.node != nullptr) {
        source.node->writeInteger(value, verify);
    } else {
        source.constant = value;
        drop();
        map().changed(*this);
    }
    for (Node* copy : m_value.copies())
        copy->writeInteger(value, verify);
}

std::int64_t IntegerNode::ownMin() {
    if (m_min.given)
        return m_min.get();
    Node* node = m_value.current(*this).node;
    return node != nullptr ? node->minInteger() : std::numeric_limits<std::int64_t>::min();
}

std::int64_t IntegerNode::ownMax() {
    if (m_max.given)
        return m_max.get();
    Node* node = m_value.current(*this).node;
    return node != nullptr ? node->maxInteger() : std::numeric_limits<std::int64_t>::max();
}

std::int64_t IntegerNode::ownInc() {
    if (m_inc.given)
        return m_inc.get();
    Node* node = m_value.current(*this).node;
    return node != nullptr ? node->incInteger() : 1;
}

const std::vector<std::int64_t>* IntegerNode::validIntegers() {
    const Evaluation evaluation(*this, Evaluation::Inc);
    if (!m_valid.empty())
        return &m_valid;
    return m_value.node() != nullptr ? m_value.node()->validIntegers() : nullptr;
}

ERepresentation IntegerNode::representation() {
    const Evaluation evaluation(*this, Evaluation::Value);
    const ERepresentation own = declaredRepresentation(*this);
    return own == _UndefinedRepresentation && m_value.node() != nullptr ? m_value.node()->representation()
                                                                        : own;
}

std::string_view IntegerNode::unit() {
    const Evaluation evaluation(*this, Evaluation::Value);
    const std::string_view own = text(PropertyId::Unit);
    return own.empty() && m_value.node() != nullptr ? m_value.node()->unit() : own;
}

// FloatNode

void FloatNode::link(Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::Min:
        linker.constant(*this, property, m_min);
        break;
    case PropertyId::pMin:
        linker.reference(*this, property, m_min);
        break;
    case PropertyId::Max:
        linker.constant(*this, property, m_max);
        break;
    case PropertyId::pMax:
        linker.reference(*this, property, m_max);
        break;
    case PropertyId::Inc:
        linker.constant(*this, property, m_inc);
        break;
    case PropertyId::pInc:
        linker.reference(*this, property, m_inc);
        break;
    case PropertyId::ValidValueSet:
        if (!parseFloats(property.text, m_valid))
            setFault("ValidValueSet is '" + std::string(property.text) + "', which is no list of numbers");
        std::sort(m_valid.begin(), m_valid.end());
        break;
    default:
        if (!m_value.link(*this, linker, property))
            ValueNode::link(linker, property);
        break;
    }
}

void FloatNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    m_value.linked(*this);
}

EAccessMode FloatNode::chainMode(Aspect aspect) {
    return choiceMode(*this, m_value, aspect, neededMode);
}

double FloatNode::computeFloat(Reading how) {
    const FloatSource& source = m_value.current(*this);
    return source.node != nullptr ? source.node->readFloat(how) : source.constant;
}

void FloatNode::storeFloat(double value, bool verify) {
    FloatSource& source = m_value.current(*this);
    if (source.node != nullptr) {
        source.node->writeFloat(value, verify);
    } else {
        source.constant = value;
        drop();
        map().changed(*this);
    }
    for (Node* copy : m_value.copies())
        copy->writeFloat(value, verify);
}

double FloatNode::ownMin() {
    if (m_min.given)
        return m_min.get();
    Node* node = m_value.current(*this).node;
    return node != nullptr ? node->minFloat() : std::numeric_limits<double>::lowest();
}

double FloatNode::ownMax() {
    if (m_max.given)
        return m_max.get();
    Node* node = m_value.current(*this).node;
    return node != nullptr ? node->maxFloat() : std::numeric_limits<double>::max();
}

double FloatNode::ownInc() {
    if (m_inc.given)
        return m_inc.get();
    Node* node = m_value.current(*this).node;
    return node != nullptr ? node->incFloat() : 0;
}

const std::vector<double>* FloatNode::validFloats() {
    const Evaluation evaluation(*this, Evaluation::Inc);
    if (!m_valid.empty())
        return &m_valid;
    return m_value.node() != nullptr ? m_value.node()->validFloats() : nullptr;
}

ERepresentation FloatNode::representation() {
    const Evaluation evaluation(*this, Evaluation::Value);
    const ERepresentation own = declaredRepresentation(*this);
    return own == _UndefinedRepresentation && m_value.node() != nullptr ? m_value.node()->representation()
                                                                        : own;
}

std::string_view FloatNode::unit() {
    const Evaluation evaluation(*this, Evaluation::Value);
    const std::string_view own = text(PropertyId::Unit);
    return own.empty() && m_value.node() != nullptr ? m_value.node()->unit() : own;
}

EDisplayNotation FloatNode::displayNotation() {
    const Evaluation evaluation(*this, Evaluation::Value);
    const EDisplayNotation own = declaredNotation(*this);
    return own == _UndefinedEDisplayNotation && m_value.node() != nullptr ? m_value.node()->displayNotation()
                                                                          : own;
}

std::int64_t FloatNode::displayPrecision() {
    const Evaluation evaluation(*this, Evaluation::Value);
    const std::int64_t own = declaredPrecision(*this);
    return own < 0 && m_value.node() != nullptr ? m_value.node()->displayPrecision() : own;
}

} // namespace genapi
