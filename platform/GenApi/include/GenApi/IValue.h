#pragma once
/// Every node that has a value, as text.
#include "Base/GCString.h"
#include "GenApi/IBase.h"

namespace GenApi_3_0 {

class INode;

/// What holds for all value interfaces:
/// Reading always checks the access mode (AccessException). `Verify` also checks the value read against its
/// range (OutOfRangeException). `IgnoreCache` goes to the camera. Writing with `Verify` checks access mode,
/// range and increment first; without it only that the value fits the place where it is kept. An exception of
/// the port goes through to the caller, and the next read of what it concerns goes to the camera.
class GENAPI_API IValue : public virtual IBase {
public:
    virtual INode* GetNode() = 0;
    virtual GenICam_3_0::gcstring ToString(bool Verify = false, bool IgnoreCache = false) = 0;
    /// Throws InvalidArgumentException for a text that is no value of this node.
    virtual void FromString(const GenICam_3_0::gcstring& ValueStr, bool Verify = true) = 0;
    /// Whether the next read is answered without the camera.
    virtual bool IsValueCacheValid() const = 0;
};

} // namespace GenApi_3_0
