#pragma once
/// The words of the schema: kinds of nodes and their properties, as numbers.
#include <cstdint>
#include <string_view>

namespace genapi {

enum class NodeKind : std::uint8_t {
    Node,
    Category,
    Integer,
    IntReg,
    MaskedIntReg,
    IntSwissKnife,
    IntConverter,
    Float,
    FloatReg,
    SwissKnife,
    Converter,
    Boolean,
    Command,
    Enumeration,
    EnumEntry,
    StringReg,
    String,
    Register,
    StructEntry,
    Port,
    // Known and kept by name, without a value of their own.
    ConfRom,
    TextDesc,
    IntKey,
    AdvFeatureLock,
    SmartFeature,
    DcamLock,
};

std::string_view KindName(NodeKind kind);

/// What a text inside of a node can be. Attributes of the node itself (Name, NameSpace, ...) count as
/// properties too.
enum class PropertyId : std::uint8_t {
    Unknown,
    Name,
    NameSpace,
    MergePriority,
    ExposeStatic,
    ToolTip,
    Description,
    DisplayName,
    Visibility,
    DocuURL,
    IsDeprecated,
    EventID,
    ImposedAccessMode,
    ImposedVisibility,
    Streamable,
    Value,
    Min,
    Max,
    Inc,
    ValidValueSet,
    ValueIndexed,
    ValueDefault,
    Unit,
    Representation,
    DisplayNotation,
    DisplayPrecision,
    Address,
    Length,
    AccessMode,
    Cachable,
    PollingTime,
    Sign,
    Endianess,
    Bit,
    LSB,
    MSB,
    OnValue,
    OffValue,
    CommandValue,
    NumericValue,
    Symbolic,
    IsSelfClearing,
    Constant,
    Expression,
    Formula,
    FormulaTo,
    FormulaFrom,
    Slope,
    IsLinear,
    ChunkID,
    SwapEndianess,
    CacheChunkData,
    FeatureID,
    // From here on the text names another node.
    pFirst,
    pFeature = pFirst,
    pIsImplemented,
    pIsAvailable,
    pIsLocked,
    pBlockPolling,
    pError,
    pAlias,
    pCastAlias,
    pValue,
    pValueCopy,
    pMin,
    pMax,
    pInc,
    pIndex,
    pValueIndexed,
    pValueDefault,
    pSelected,
    pAddress,
    pLength,
    pPort,
    pInvalidator,
    pVariable,
    pCommandValue,
    pChunkID,
    pEnumEntry,     // made by the reader for entries inside of an enumeration
    pIntSwissKnife, // made by the reader for a formula inside of a register's address
};

std::string_view PropertyName(PropertyId id);

/// `Unknown` for a word that the schema doesn't have.
PropertyId PropertyFromName(std::string_view name);
/// False for a word that is no kind of node.
bool KindFromName(std::string_view name, NodeKind& kind);

inline bool NamesANode(PropertyId id) {
    return id >= PropertyId::pFirst;
}

} // namespace genapi
