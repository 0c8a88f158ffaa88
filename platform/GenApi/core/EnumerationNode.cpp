#include "core/EnumerationNode.h"

#include <algorithm>
#include <limits>

#include "core/Evaluation.h"
#include "core/FloatInterface.h"
#include "core/NumberText.h"

namespace genapi {

using namespace GenApi_3_0;
using GenICam_3_0::gcstring;

// EnumEntryNode

int64_t EnumEntryNode::GetValue() const {
    checkFault();
    return value();
}

gcstring EnumEntryNode::GetSymbolic() const {
    return {m_symbolic.data(), m_symbolic.size()};
}

double EnumEntryNode::GetNumericValue() {
    checkFault();
    return numericValue();
}

bool EnumEntryNode::IsSelfClearing() {
    return m_selfClearing;
}

void EnumEntryNode::link(Linker& linker, const Property& property) {
    switch (property.id) {
    case PropertyId::Symbolic:
        m_symbolic = property.text;
        break;
    case PropertyId::Value:
        linker.constant(*this, property, m_value);
        break;
    case PropertyId::NumericValue:
        linker.constant(*this, property, m_numeric);
        break;
    case PropertyId::IsSelfClearing:
        m_selfClearing = linker.yesNo(*this, property);
        break;
    default:
        ValueNode::link(linker, property);
        break;
    }
}

void EnumEntryNode::linked(Linker& linker) {
    ValueNode::linked(linker);
    if (!m_value.given)
        setFault("it has no Value");
}

double EnumEntryNode::numericValue() const {
    return m_numeric.given ? m_numeric.constant : static_cast<double>(m_value.constant);
}

const char* EnumEntryNode::refusal() {
    const EAccessMode now = mode(Aspect::Readable);
    return now == NI   ? "not implemented"
           : now == NA ? "not available now"
           : locked()  ? "locked now"
                       : nullptr;
}

std::int64_t EnumEntryNode::readInteger(Reading) {
    return GetValue();
}
double EnumEntryNode::readFloat(Reading) {
    return GetNumericValue();
}

std::string EnumEntryNode::toText(bool, Reading) {
    return std::string(m_symbolic);
}

void EnumEntryNode::fromText(const std::string&, bool) {
    throw ACCESS_EXCEPTION("%s can't be written: it is an entry", label().c_str());
}

// EnumerationNode

EnumerationNode::EnumerationNode(NodeMap& map, const NodeRecord& record, const Property* properties,
                                 std::uint32_t index)
    : BackedNode(map, record, properties, index) {}

void EnumerationNode::GetSymbolics(StringList_t& Symbolics) {
    Symbolics.clear();
    const Operation operation(map());
    checkFault();
    for (EnumEntryNode* entry : m_entries)
        if (IsAvailable(entry->mode(Aspect::Readable)))
            Symbolics.push_back(entry->GetSymbolic());
}

void EnumerationNode::GetEntries(NodeList_t& Entries) {
    Entries.assign(m_entries.begin(), m_entries.end());
}

void EnumerationNode::SetIntValue(int64_t Value, bool Verify) {
    const Operation operation(map());
    if (Verify)
        requireWritable(Value);
    writeInteger(Value, Verify);
}

int64_t EnumerationNode::GetIntValue(bool Verify, bool IgnoreCache) {
    const Operation operation(map());
    requireReadable();
    const std::int64_t value = readInteger({IgnoreCache});
    if (Verify)
        currentEntry(value);
    return value;
}

IEnumEntry* EnumerationNode::GetEntryByName(const gcstring& Symbolic) {
    return entry(Symbolic.str());
}
IEnumEntry* EnumerationNode::GetEntry(int64_t IntValue) {
    return entry(IntValue);
}

IEnumEntry* EnumerationNode::GetCurrentEntry(bool Verify, bool IgnoreCache) {
    return entry(GetIntValue(Verify, IgnoreCache));
}

void EnumerationNode::link(Linker& linker, const Property& property) {
    if (property.id != PropertyId::pEnumEntry) {
        BackedNode::link(linker, property);
        return;
    }
    Node* named = linker.ifThere(property.text);
    if (named == nullptr || named->kind() != NodeKind::EnumEntry) {
        setFault("pEnumEntry names '" + std::string(property.text) + "', which is no entry");
        return;
    }
    m_entries.push_back(static_cast<EnumEntryNode*>(named));
    linker.depends(*this, *named);
}

EnumEntryNode* EnumerationNode::entry(std::int64_t value) const {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [value](const EnumEntryNode* entry) {
        return entry->hasValue() && entry->value() == value;
    });
    return found != m_entries.end() ? *found : nullptr;
}

EnumEntryNode* EnumerationNode::entry(std::string_view symbolic) const {
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(),
                     [symbolic](const EnumEntryNode* entry) { return entry->symbolic() == symbolic; });
    return found != m_entries.end() ? *found : nullptr;
}

EnumEntryNode& EnumerationNode::currentEntry(std::int64_t value) const {
    EnumEntryNode* current = entry(value);
    if (current == nullptr)
        throw OUT_OF_RANGE_EXCEPTION("%s: the camera's value %lld belongs to none of its entries",
                                     label().c_str(), static_cast<long long>(value));
    return *current;
}

std::int64_t EnumerationNode::readInteger(Reading how) {
    return cachedRead(m_cached.integer, how, [&] { return readBehind(how); });
}

double EnumerationNode::readFloat(Reading how) {
    const std::int64_t value = readInteger(how);
    const EnumEntryNode* current = entry(value);
    return current != nullptr ? current->numericValue() : static_cast<double>(value);
}

void EnumerationNode::writeInteger(std::int64_t value, bool verify) {
    checkFault();
    if (verify) {
        EnumEntryNode* chosen = entry(value);
        if (chosen == nullptr)
            throw INVALID_ARGUMENT_EXCEPTION("%s: value %lld belongs to none of its entries",
                                             Evaluation::blame(*this).c_str(), static_cast<long long>(value));
        if (const char* refusal = chosen->refusal())
            throw ACCESS_EXCEPTION("%s: entry '%s' (value %lld) can't be chosen: it is %s",
                                   Evaluation::blame(*this).c_str(), std::string(chosen->symbolic()).c_str(),
                                   static_cast<long long>(value), refusal);
    }
    performWrite(*this, value, [&] { writeBehind(value, verify); });
}

void EnumerationNode::writeFloat(double value, bool verify) {
    for (const EnumEntryNode* candidate : m_entries)
        if (candidate->hasNumericValue() && candidate->numericValue() == value) {
            writeInteger(candidate->value(), verify);
            return;
        }
    writeInteger(roundForNode(*this, value), verify);
}

std::int64_t EnumerationNode::minInteger() {
    checkFault();
    std::int64_t min = std::numeric_limits<std::int64_t>::max();
    for (const EnumEntryNode* entry : m_entries)
        min = std::min(min, entry->value());
    return m_entries.empty() ? 0 : min;
}

std::int64_t EnumerationNode::maxInteger() {
    checkFault();
    std::int64_t max = std::numeric_limits<std::int64_t>::min();
    for (const EnumEntryNode* entry : m_entries)
        max = std::max(max, entry->value());
    return m_entries.empty() ? 0 : max;
}

std::int64_t EnumerationNode::entryValue(std::string_view symbolic) {
    const EnumEntryNode* named = entry(symbolic);
    if (named == nullptr)
        throw PROPERTY_EXCEPTION("%s has no entry '%s'", label().c_str(), std::string(symbolic).c_str());
    return named->value();
}

std::string_view EnumerationNode::entryName(std::int64_t value) {
    const EnumEntryNode* named = entry(value);
    return named != nullptr ? named->symbolic() : std::string_view();
}

std::string EnumerationNode::toText(bool, Reading how) {
    return std::string(currentEntry(readInteger(how)).symbolic());
}

void EnumerationNode::fromText(const std::string& text, bool verify) {
    const EnumEntryNode* named = entry(std::string_view(text));
    if (named == nullptr)
        throwBadText(text, "entry");
    writeInteger(named->value(), verify);
}

} // namespace genapi
