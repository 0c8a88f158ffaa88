#pragma once
#include "Base/GCTypes.h"

namespace GenApi_3_0 {

/// Gives up one hold on an object; with the last it is gone, and every pointer into it too.
class GENAPI_API IDestroy {
public:
    virtual void Destroy() = 0;
    virtual ~IDestroy() = default;
};

} // namespace GenApi_3_0
