#include "core/Vocabulary.h"

#include <array>
#include <cstddef>

namespace genapi {

namespace {

constexpr std::array<std::string_view, 26> kindNames = {
    "Node",         "Category",    "Integer",   "IntReg",     "MaskedIntReg", "IntSwissKnife",
    "IntConverter", "Float",       "FloatReg",  "SwissKnife", "Converter",    "Boolean",
    "Command",      "Enumeration", "EnumEntry", "StringReg",  "String",       "Register",
    "StructEntry",  "Port",        "ConfRom",   "TextDesc",   "IntKey",       "AdvFeatureLock",
    "SmartFeature", "DcamLock",
};

constexpr std::array<std::string_view, 79> propertyNames = {
    "Unknown",
    "Name",
    "NameSpace",
    "MergePriority",
    "ExposeStatic",
    "ToolTip",
    "Description",
    "DisplayName",
    "Visibility",
    "DocuURL",
    "IsDeprecated",
    "EventID",
    "ImposedAccessMode",
    "ImposedVisibility",
    "Streamable",
    "Value",
    "Min",
    "Max",
    "Inc",
    "ValidValueSet",
    "ValueIndexed",
    "ValueDefault",
    "Unit",
    "Representation",
    "DisplayNotation",
    "DisplayPrecision",
    "Address",
    "Length",
    "AccessMode",
    "Cachable",
    "PollingTime",
    "Sign",
    "Endianess",
    "Bit",
    "LSB",
    "MSB",
    "OnValue",
    "OffValue",
    "CommandValue",
    "NumericValue",
    "Symbolic",
    "IsSelfClearing",
    "Constant",
    "Expression",
    "Formula",
    "FormulaTo",
    "FormulaFrom",
    "Slope",
    "IsLinear",
    "ChunkID",
    "SwapEndianess",
    "CacheChunkData",
    "FeatureID",
    "pFeature",
    "pIsImplemented",
    "pIsAvailable",
    "pIsLocked",
    "pBlockPolling",
    "pError",
    "pAlias",
    "pCastAlias",
    "pValue",
    "pValueCopy",
    "pMin",
    "pMax",
    "pInc",
    "pIndex",
    "pValueIndexed",
    "pValueDefault",
    "pSelected",
    "pAddress",
    "pLength",
    "pPort",
    "pInvalidator",
    "pVariable",
    "pCommandValue",
    "pChunkID",
    "pEnumEntry",
    "pIntSwissKnife",
};
static_assert(kindNames.size() == static_cast<std::size_t>(NodeKind::DcamLock) + 1);
static_assert(propertyNames.size() == static_cast<std::size_t>(PropertyId::pIntSwissKnife) + 1);

constexpr std::size_t slots = 512; // a power of two, far more than there are words
constexpr std::uint8_t empty = 0xFF;

constexpr std::size_t hashOf(std::string_view word) {
    std::size_t hash = word.size();
    for (const char letter : word)
        hash = hash * 33 + static_cast<unsigned char>(letter);
    return (hash ^ (hash >> 9)) % slots;
}

template<std::size_t Count>
constexpr std::array<std::uint8_t, slots> indexOf(const std::array<std::string_view, Count>& words) {
    static_assert(Count < empty);
    std::array<std::uint8_t, slots> table{};
    for (std::uint8_t& slot : table)
        slot = empty;
    for (std::size_t i = 0; i < Count; ++i) {
        std::size_t slot = hashOf(words[i]);
        while (table[slot] != empty)
            slot = (slot + 1) % slots;
        table[slot] = static_cast<std::uint8_t>(i);
    }
    return table;
}

template<std::size_t Count>
std::uint8_t find(const std::array<std::string_view, Count>& words,
                  const std::array<std::uint8_t, slots>& table, std::string_view word) {
    std::size_t slot = hashOf(word);
    while (table[slot] != empty && words[table[slot]] != word)
        slot = (slot + 1) % slots;
    return table[slot];
}

constexpr std::array<std::uint8_t, slots> kindTable = indexOf(kindNames);
constexpr std::array<std::uint8_t, slots> propertyTable = indexOf(propertyNames);

} // namespace

std::string_view KindName(NodeKind kind) {
    return kindNames[static_cast<std::size_t>(kind)];
}

std::string_view PropertyName(PropertyId id) {
    return propertyNames[static_cast<std::size_t>(id)];
}

PropertyId PropertyFromName(std::string_view name) {
    const std::uint8_t index = find(propertyNames, propertyTable, name);
    return index == empty ? PropertyId::Unknown : static_cast<PropertyId>(index);
}

bool KindFromName(std::string_view name, NodeKind& kind) {
    const std::uint8_t index = find(kindNames, kindTable, name);
    if (index == empty)
        return false;
    kind = static_cast<NodeKind>(index);
    return true;
}

} // namespace genapi
