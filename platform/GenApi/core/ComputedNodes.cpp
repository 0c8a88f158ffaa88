#include "core/ComputedNodes.h"

#include <algorithm>
#include <cmath>

namespace genapi {

using namespace GenApi_3_0;

namespace {

constexpr double largestFloat = NumberOf<double>::largest;

template<class T>
constexpr Formula::Arithmetic arithmeticOf =
    std::is_same_v<T, double> ? Formula::Arithmetic::Float : Formula::Arithmetic::Integer;

bool compiles(Node& owner, const FormulaNames& names, std::initializer_list<NodeFormula*> formulas,
              Formula::Arithmetic arithmetic) {
    try {
        owner.checkFault();
        for (NodeFormula* formula : formulas)
            formula->compile(owner, names, arithmetic);
        return true;
    } catch (const GenICam_3_0::PropertyException&) {
        return false;
    }
}

template<class T>
T evaluate(NodeFormula& formula, Node& owner, const FormulaNames& names, Reading how, T input = 0) {
    if constexpr (std::is_same_v<T, double>)
        return formula.floating(owner, names, how, input);
    else
        return formula.integer(owner, names, how, input);
}

} // namespace

// Swiss knives

template<class T>
void KnifeNode<T>::link(Linker& linker, const Property& property) {
    if (!m_names.link(*this, linker, property))
        ValueNode::link(linker, property);
}

template<class T>
void KnifeNode<T>::linked(Linker& linker) {
    ValueNode::linked(linker);
    if (this->text(PropertyId::Formula).empty())
        this->setFault("it has no Formula");
}

template<class T>
EAccessMode KnifeNode<T>::chainMode(Aspect) {
    return Combine(RO, m_names.mode(this->neededMode));
}

template<class T>
T KnifeNode<T>::compute(Reading how) {
    return evaluate<T>(m_formula, *this, m_names, how);
}

template<class T>
void KnifeNode<T>::store(T value, bool) {
    throw ACCESS_EXCEPTION("%s can't be %s: it is worked out by a formula", this->label().c_str(),
                           writtenText(*this, value).c_str());
}

template<class T>
bool KnifeNode<T>::compile() {
    return compiles(*this, m_names, {&m_formula}, arithmeticOf<T>);
}

template class KnifeNode<std::int64_t>;
template class KnifeNode<double>;

// What converters share

template<class T>
void ConversionNode<T>::link(Linker& linker, const Property& property) {
    if (property.id == PropertyId::pValue)
        m_value = linker.number(*this, property);
    else if (property.id == PropertyId::Slope)
        m_varying = property.text == "Varying";
    else if (!m_names.link(*this, linker, property))
        ValueNode::link(linker, property);
}

template<class T>
void ConversionNode<T>::linked(Linker& linker) {
    ValueNode::linked(linker);
    if (m_value == nullptr)
        this->setFault("pValue is missing");
    if (this->text(PropertyId::FormulaFrom).empty())
        this->setFault("it has no FormulaFrom");
}

template<class T>
void ConversionNode<T>::valueChildren(std::vector<Node*>& children) const {
    if (m_value != nullptr)
        children.push_back(m_value);
    m_names.children(children);
}

template<class T>
EAccessMode ConversionNode<T>::chainMode(Aspect aspect) {
    return Combine(m_value->mode(aspect), m_names.mode(this->neededMode));
}

template<class T>
T ConversionNode<T>::converted(T behind, Reading how) {
    return evaluate(m_from, *this, m_names, how, behind);
}

template<class T>
T ConversionNode<T>::compute(Reading how) {
    return converted(NumberOf<T>::read(*m_value, how), how);
}

template<class T>
void ConversionNode<T>::store(T value, bool verify) {
    NumberOf<T>::write(*m_value, evaluate(m_to, *this, m_names, {}, value), verify);
}

template<class T>
bool ConversionNode<T>::limits(NodeFormula& from, double& first, double& second) {
    if (m_varying)
        return false;
    first = from.floating(*this, m_names, {}, m_value->minFloat());
    second = from.floating(*this, m_names, {}, m_value->maxFloat());
    return !std::isnan(first) && !std::isnan(second);
}

template<class T>
bool ConversionNode<T>::compile() {
    return compiles(*this, m_names, {&m_from, &m_to}, arithmeticOf<T>);
}

template class ConversionNode<std::int64_t>;
template class ConversionNode<double>;

// Ranges of converters

std::int64_t IntConverterNode::end(bool upper) {
    double first = 0;
    double second = 0;
    if (!limits(m_range, first, second))
        return upper ? NumberOf<std::int64_t>::largest : NumberOf<std::int64_t>::smallest;
    // The range in floats tells which end is which and whether it fits; the exact number is the integer
    // formula's.
    const bool useFirst = upper ? first > second : first <= second;
    const double ending = useFirst ? first : second;
    std::int64_t rounded = 0;
    if (!roundToInteger(ending, rounded))
        return ending > 0 ? NumberOf<std::int64_t>::largest : NumberOf<std::int64_t>::smallest;
    return converted(useFirst ? behind().minInteger() : behind().maxInteger());
}

double ConverterNode::ownMin() {
    double first = 0;
    double second = 0;
    return limits(from(), first, second) ? std::clamp(std::min(first, second), -largestFloat, largestFloat)
                                         : -largestFloat;
}

double ConverterNode::ownMax() {
    double first = 0;
    double second = 0;
    return limits(from(), first, second) ? std::clamp(std::max(first, second), -largestFloat, largestFloat)
                                         : largestFloat;
}

} // namespace genapi
