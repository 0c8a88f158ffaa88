#include "core/ComputedNodes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/RegisterNumbers.h"

namespace genapi {

using namespace GenApi_3_0;

namespace {

constexpr std::int64_t smallestInteger = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t largestInteger = std::numeric_limits<std::int64_t>::max();
constexpr double largestFloat = std::numeric_limits<double>::max();

[[noreturn]] void throwComputed(const Node& node) {
    throw ACCESS_EXCEPTION("%s can't be written: it is worked out by a formula", node.label().c_str());
}

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

} // namespace

// IntSwissKnife

void IntSwissKnifeNode::link(Linker& linker, const Property& property) {
    if (!m_names.link(*this, linker, property))
        ValueNode::link(linker, property);
}

void IntSwissKnifeNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    if (text(PropertyId::Formula).empty())
        setFault("it has no Formula");
}

EAccessMode IntSwissKnifeNode::chainMode(Aspect) {
    return Combine(RO, m_names.mode(neededMode));
}

std::int64_t IntSwissKnifeNode::computeInteger(Reading how) {
    return m_formula.integer(*this, m_names, how);
}
void IntSwissKnifeNode::storeInteger(std::int64_t, bool) {
    throwComputed(*this);
}
std::int64_t IntSwissKnifeNode::ownMin() {
    return smallestInteger;
}
std::int64_t IntSwissKnifeNode::ownMax() {
    return largestInteger;
}
ERepresentation IntSwissKnifeNode::representation() {
    return declaredRepresentation(*this);
}

bool IntSwissKnifeNode::compile() {
    return compiles(*this, m_names, {&m_formula}, Formula::Arithmetic::Integer);
}

// SwissKnife

void SwissKnifeNode::link(Linker& linker, const Property& property) {
    if (!m_names.link(*this, linker, property))
        ValueNode::link(linker, property);
}

void SwissKnifeNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    if (text(PropertyId::Formula).empty())
        setFault("it has no Formula");
}

EAccessMode SwissKnifeNode::chainMode(Aspect) {
    return Combine(RO, m_names.mode(neededMode));
}

double SwissKnifeNode::computeFloat(Reading how) {
    return m_formula.floating(*this, m_names, how);
}
void SwissKnifeNode::storeFloat(double, bool) {
    throwComputed(*this);
}
double SwissKnifeNode::ownMin() {
    return -largestFloat;
}
double SwissKnifeNode::ownMax() {
    return largestFloat;
}
ERepresentation SwissKnifeNode::representation() {
    return declaredRepresentation(*this);
}
EDisplayNotation SwissKnifeNode::displayNotation() {
    return declaredNotation(*this);
}
std::int64_t SwissKnifeNode::displayPrecision() {
    return declaredPrecision(*this);
}

bool SwissKnifeNode::compile() {
    return compiles(*this, m_names, {&m_formula}, Formula::Arithmetic::Float);
}

// What converters share

bool ConverterParts::link(Node& owner, Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::pValue:
        value = linker.number(owner, property);
        return true;
    case PropertyId::Slope:
        varying = property.text == "Varying";
        return true;
    default:
        return names.link(owner, linker, property);
    }
}

void ConverterParts::linked(Node& owner) const {
    if (value == nullptr)
        owner.setFault("pValue is missing");
    if (owner.text(PropertyId::FormulaFrom).empty())
        owner.setFault("it has no FormulaFrom");
}

void ConverterParts::children(std::vector<Node*>& all) const {
    if (value != nullptr)
        all.push_back(value);
    names.children(all);
}

EAccessMode ConverterParts::mode(Aspect aspect, EAccessMode (*needed)(Node&)) const {
    return Combine(value->mode(aspect), names.mode(needed));
}

void ConverterParts::limits(Node& owner, NodeFormula& from, double& first, double& second) const {
    first = from.floating(owner, names, {}, value->minFloat());
    second = from.floating(owner, names, {}, value->maxFloat());
}

// IntConverter

void IntConverterNode::link(Linker& linker, const Property& property) {
    if (!m_parts.link(*this, linker, property))
        ValueNode::link(linker, property);
}

void IntConverterNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    m_parts.linked(*this);
}

EAccessMode IntConverterNode::chainMode(Aspect aspect) {
    return m_parts.mode(aspect, neededMode);
}

std::int64_t IntConverterNode::computeInteger(Reading how) {
    return m_from.integer(*this, m_parts.names, how, m_parts.value->readInteger(how));
}

void IntConverterNode::storeInteger(std::int64_t value, bool verify) {
    m_parts.value->writeInteger(m_to.integer(*this, m_parts.names, {}, value), verify);
}

std::int64_t IntConverterNode::end(bool upper) {
    const std::int64_t beyond = upper ? largestInteger : smallestInteger;
    double first = 0;
    double second = 0;
    if (m_parts.varying)
        return beyond;
    m_parts.limits(*this, m_range, first, second);
    if (std::isnan(first) || std::isnan(second))
        return beyond;
    // The range in floats tells which end is which and whether it fits; the exact number is the integer
    // formula's.
    const bool useFirst = upper ? first > second : first <= second;
    std::int64_t rounded = 0;
    if (!roundToInteger(useFirst ? first : second, rounded))
        return (useFirst ? first : second) > 0 ? largestInteger : smallestInteger;
    const std::int64_t raw = useFirst ? m_parts.value->minInteger() : m_parts.value->maxInteger();
    return m_from.integer(*this, m_parts.names, {}, raw);
}

std::int64_t IntConverterNode::ownMin() {
    return end(false);
}
std::int64_t IntConverterNode::ownMax() {
    return end(true);
}
ERepresentation IntConverterNode::representation() {
    return declaredRepresentation(*this);
}
std::string_view IntConverterNode::unit() {
    return text(PropertyId::Unit);
}

bool IntConverterNode::compile() {
    return compiles(*this, m_parts.names, {&m_from, &m_to}, Formula::Arithmetic::Integer);
}

// Converter

void ConverterNode::link(Linker& linker, const Property& property) {
    if (!m_parts.link(*this, linker, property))
        ValueNode::link(linker, property);
}

void ConverterNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    m_parts.linked(*this);
}

EAccessMode ConverterNode::chainMode(Aspect aspect) {
    return m_parts.mode(aspect, neededMode);
}

double ConverterNode::computeFloat(Reading how) {
    return m_from.floating(*this, m_parts.names, how, m_parts.value->readFloat(how));
}

void ConverterNode::storeFloat(double value, bool verify) {
    m_parts.value->writeFloat(m_to.floating(*this, m_parts.names, {}, value), verify);
}

double ConverterNode::ownMin() {
    double first = 0;
    double second = 0;
    if (!m_parts.varying)
        m_parts.limits(*this, m_from, first, second);
    const bool unknown = m_parts.varying || std::isnan(first) || std::isnan(second);
    return unknown ? -largestFloat : std::clamp(std::min(first, second), -largestFloat, largestFloat);
}

double ConverterNode::ownMax() {
    double first = 0;
    double second = 0;
    if (!m_parts.varying)
        m_parts.limits(*this, m_from, first, second);
    const bool unknown = m_parts.varying || std::isnan(first) || std::isnan(second);
    return unknown ? largestFloat : std::clamp(std::max(first, second), -largestFloat, largestFloat);
}

ERepresentation ConverterNode::representation() {
    return declaredRepresentation(*this);
}
std::string_view ConverterNode::unit() {
    return text(PropertyId::Unit);
}
EDisplayNotation ConverterNode::displayNotation() {
    return declaredNotation(*this);
}
std::int64_t ConverterNode::displayPrecision() {
    return declaredPrecision(*this);
}

bool ConverterNode::compile() {
    return compiles(*this, m_parts.names, {&m_from, &m_to}, Formula::Arithmetic::Float);
}

} // namespace genapi
