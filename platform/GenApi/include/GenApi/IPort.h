#pragma once
/// The road to the camera's registers. Whoever has a camera implements IPort and connects it to a node map;
/// calls come one at a time, under the lock of the map. Failures are thrown, as GenericException of any
/// class.
#include "GenApi/IBase.h"

namespace GenApi_3_0 {

class GENAPI_API IPort : public virtual IBase {
public:
    virtual void Read(void* pBuffer, int64_t Address, int64_t Length) = 0;
    virtual void Write(const void* pBuffer, int64_t Address, int64_t Length) = 0;
};

/// A port node, which hands on to a port that is connected later.
class GENAPI_API IPortConstruct : public virtual IPort {
public:
    virtual EYesNo GetSwapEndianess() = 0;
    /// Null disconnects. The port must stay until it is disconnected or the map is gone.
    virtual void SetPortImpl(IPort* pPort) = 0;
};

} // namespace GenApi_3_0
