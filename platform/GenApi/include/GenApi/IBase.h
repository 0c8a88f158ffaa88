#pragma once
/// The root of all node interfaces, and the arithmetic of access modes, visibilities and caching modes.
#include "Base/GCTypes.h"
#include "GenApi/Types.h"

namespace GenApi_3_0 {

class GENAPI_API IBase {
public:
    /// The mode of the whole chain behind the node as it is now. May read the camera.
    virtual EAccessMode GetAccessMode() const = 0;
    virtual ~IBase() = default;
};

inline bool IsReadable(EAccessMode mode) {
    return mode == RW || mode == RO;
}
inline bool IsReadable(const IBase* node) {
    return node != nullptr && IsReadable(node->GetAccessMode());
}
inline bool IsReadable(const IBase& node) {
    return IsReadable(node.GetAccessMode());
}
inline bool IsWritable(EAccessMode mode) {
    return mode == RW || mode == WO;
}
inline bool IsWritable(const IBase* node) {
    return node != nullptr && IsWritable(node->GetAccessMode());
}
inline bool IsWritable(const IBase& node) {
    return IsWritable(node.GetAccessMode());
}
inline bool IsImplemented(EAccessMode mode) {
    return mode != NI;
}
inline bool IsImplemented(const IBase* node) {
    return node != nullptr && IsImplemented(node->GetAccessMode());
}
inline bool IsImplemented(const IBase& node) {
    return IsImplemented(node.GetAccessMode());
}
inline bool IsAvailable(EAccessMode mode) {
    return mode != NI && mode != NA;
}
inline bool IsAvailable(const IBase* node) {
    return node != nullptr && IsAvailable(node->GetAccessMode());
}
inline bool IsAvailable(const IBase& node) {
    return IsAvailable(node.GetAccessMode());
}

/// What remains possible when both modes bind: NI before NA; reading and writing only where both allow it.
inline EAccessMode Combine(EAccessMode first, EAccessMode second) {
    if (first == NI || second == NI)
        return NI;
    if (first == NA || second == NA)
        return NA;
    if ((first == RO && second == WO) || (first == WO && second == RO))
        return NA;
    if (first == WO || second == WO)
        return WO;
    if (first == RO || second == RO)
        return RO;
    return RW;
}

/// The more hidden of the two.
inline EVisibility Combine(EVisibility first, EVisibility second) {
    return first > second ? first : second;
}
inline bool IsVisible(EVisibility visibility, EVisibility userLevel) {
    return visibility <= userLevel;
}

/// The more careful of the two: NoCache before WriteAround before WriteThrough.
inline ECachingMode CombineCachingMode(ECachingMode first, ECachingMode second) {
    if (first == NoCache || second == NoCache)
        return NoCache;
    return first == WriteAround || second == WriteAround ? WriteAround : WriteThrough;
}
inline bool IsCacheable(ECachingMode mode) {
    return mode != NoCache;
}

} // namespace GenApi_3_0
