#pragma once
/// What the XML says about the camera and about itself.
#include "Base/GCString.h"
#include "Base/GCTypes.h"
#include "GenApi/Types.h"

namespace GenApi_3_0 {

class GENAPI_API IDeviceInfo {
public:
    virtual GenICam_3_0::gcstring GetModelName() = 0;
    virtual GenICam_3_0::gcstring GetVendorName() = 0;
    virtual GenICam_3_0::gcstring GetToolTip() = 0;
    virtual GenICam_3_0::gcstring GetStandardNameSpace() = 0;
    /// The version of this library's interface.
    virtual void GetGenApiVersion(GenICam_3_0::Version_t& Version, uint16_t& Build) = 0;
    virtual void GetSchemaVersion(GenICam_3_0::Version_t& Version) = 0;
    virtual void GetDeviceVersion(GenICam_3_0::Version_t& Version) = 0;
    virtual GenICam_3_0::gcstring GetProductGuid() = 0;
    virtual GenICam_3_0::gcstring GetVersionGuid() = 0;
    virtual ~IDeviceInfo() = default;
};

} // namespace GenApi_3_0
