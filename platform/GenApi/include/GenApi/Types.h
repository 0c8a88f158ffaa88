#pragma once
/// Enumerations of the published GenApi interface. The numbers are part of it; the underscore in front of an
/// enumerator marks "not set".

namespace GenApi_3_0 {

/// What may be done with a node now. NI: the camera doesn't have it. NA: it has, but not in its present
/// state.
typedef enum _EAccessMode {
    NI,
    NA,
    WO,
    RO,
    RW,
    _UndefinedAccesMode,   ///< No mode was worked out yet
    _CycleDetectAccesMode, ///< A mode depends on itself
} EAccessMode;

/// For whom a feature is meant; a user sees all levels up to his own.
typedef enum _EVisibility {
    Beginner = 0,
    Expert = 1,
    Guru = 2,
    Invisible = 3,
    _UndefinedVisibility = 99,
} EVisibility;

typedef enum _ECachingMode {
    NoCache,      ///< Each read goes to the port
    WriteThrough, ///< A written value is kept as if it had been read
    WriteAround,  ///< A write empties the cache, the next read fills it
    _UndefinedCachingMode,
} ECachingMode;

/// How a number is best shown.
typedef enum _ERepresentation {
    Linear,
    Logarithmic,
    Boolean,
    PureNumber,
    HexNumber,
    IPV4Address,
    MACAddress,
    _UndefinedRepresentation,
} ERepresentation;

typedef enum _EEndianess {
    BigEndian,
    LittleEndian,
    _UndefinedEndian,
} EEndianess;

/// Where a node's name comes from.
typedef enum _ENameSpace {
    Custom,
    Standard,
    _UndefinedNameSpace,
} ENameSpace;

typedef enum _EStandardNameSpace {
    None,
    GEV,
    IIDC,
    CL,
    USB,
    _UndefinedStandardNameSpace,
} EStandardNameSpace;

typedef enum _EYesNo {
    No = 0,
    Yes = 1,
    _UndefinedYesNo = 2,
} EYesNo;

/// The direction in which a converter's formula runs.
typedef enum _ESlope {
    Increasing,
    Decreasing,
    Varying,
    Automatic,
    _UndefinedESlope,
} ESlope;

typedef enum _ESign {
    Signed,
    Unsigned,
    _UndefinedSign,
} ESign;

/// How a float is best written.
typedef enum _EDisplayNotation {
    fnAutomatic,
    fnFixed,
    fnScientific,
    _UndefinedEDisplayNotation,
} EDisplayNotation;

/// The interface that a node is mainly used by.
typedef enum _EInterfaceType {
    intfIValue,
    intfIBase,
    intfIInteger,
    intfIBoolean,
    intfICommand,
    intfIFloat,
    intfIString,
    intfIRegister,
    intfICategory,
    intfIEnumeration,
    intfIEnumEntry,
    intfIPort,
} EInterfaceType;

/// Which neighbours of a node are asked for.
typedef enum _ELinkType {
    ctParentNodes,          ///< Nodes that refer to this one
    ctReadingChildren,      ///< Nodes that may be read when this one is read
    ctWritingChildren,      ///< Nodes that may be written when this one is written
    ctInvalidatingChildren, ///< Nodes that make this one invalid when they change (its pInvalidator)
    ctDependingNodes,       ///< All nodes that become invalid when this one changes
    ctTerminalNodes,        ///< The registers and constants at the end of the writing children
} ELinkType;

/// What values lie between minimum and maximum.
typedef enum _EIncMode {
    noIncrement,    ///< Every one
    fixedIncrement, ///< Minimum + n * increment
    listIncrement,  ///< A list of its own
} EIncMode;

/// When a callback runs, seen from the lock of the node map.
typedef enum _ECallbackType {
    cbPostInsideLock = 1,  ///< At the end of the operation, while the lock is held
    cbPostOutsideLock = 2, ///< After the lock was released
} ECallbackType;

/// What a node map is made of.
typedef enum _EContentType {
    ContentType_Xml,
    ContentType_ZippedXml,
} EContentType_t;

} // namespace GenApi_3_0

namespace GenApi = GenApi_3_0;
