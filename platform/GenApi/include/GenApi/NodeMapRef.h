#pragma once
/// A counted hold on a node map, with the map's operations under the names that the interface publishes.
#include "Base/GCStringVector.h"
#include "GenApi/Pointer.h"

namespace GenApi_3_0 {

/// Copies hold the same map; with the last one it is gone. One object is used by one thread at a time; the
/// map behind it by any number. Everything but loading, _Ptr and _Destroy throws LogicalErrorException while
/// there is no map.
class GENAPI_API CNodeMapRef {
public:
    explicit CNodeMapRef(const GenICam_3_0::gcstring& DeviceName = "Device");
    /// Takes over the hold that the caller has on the map.
    explicit CNodeMapRef(INodeMap* pNodeMap, const GenICam_3_0::gcstring& DeviceName = "Device");
    CNodeMapRef(const CNodeMapRef& other);
    CNodeMapRef& operator=(const CNodeMapRef& other);
    /// Lets go of the map held so far and takes over another.
    CNodeMapRef& operator=(INodeMap* pNodeMap);
    virtual ~CNodeMapRef();

    void _LoadXMLFromFile(const GenICam_3_0::gcstring& FileName);
    void _LoadXMLFromZIPFile(const GenICam_3_0::gcstring& ZipFileName);
    void _LoadXMLFromZIPData(const void* zipData, std::size_t zipSize);
    void _LoadXMLFromFileInject(const GenICam_3_0::gcstring& TargetFileName,
                                const GenICam_3_0::gcstring& InjectFileName);
    void _LoadXMLFromString(const GenICam_3_0::gcstring& XMLData);
    void _LoadXMLFromStringInject(const GenICam_3_0::gcstring& TargetXMLData,
                                  const GenICam_3_0::gcstring& InjectXMLData);
    /// "1.0" and "1.1".
    void _GetSupportedSchemaVersions(GenICam_3_0::gcstring_vector& SchemaVersions) const;
    GenICam_3_0::gcstring _GetDeviceName() const;
    void _Poll(int64_t ElapsedTime);
    void _Destroy();

    void _GetNodes(NodeList_t& Nodes) const;
    INode* _GetNode(const GenICam_3_0::gcstring& key) const;
    void _InvalidateNodes() const;
    bool _Connect(IPort* pPort, const GenICam_3_0::gcstring& PortName) const;
    bool _Connect(IPort* pPort) const;
    bool _ParseSwissKnifes(GenICam_3_0::gcstring_vector* pErrors = nullptr) const;

    GenICam_3_0::gcstring _GetModelName() const;
    GenICam_3_0::gcstring _GetVendorName() const;
    GenICam_3_0::gcstring _GetToolTip() const;
    GenICam_3_0::gcstring _GetStandardNameSpace() const;
    void _GetGenApiVersion(GenICam_3_0::Version_t& Version, uint16_t& Build) const;
    void _GetSchemaVersion(GenICam_3_0::Version_t& Version) const;
    void _GetDeviceVersion(GenICam_3_0::Version_t& Version) const;
    GenICam_3_0::gcstring _GetProductGuid() const;
    GenICam_3_0::gcstring _GetVersionGuid() const;

    /// Null while there is no map.
    INodeMap* _Ptr = nullptr;

private:
    INodeMap& map() const;
    IDeviceInfo& info() const;
    void release();

    GenICam_3_0::gcstring m_deviceName;
};

} // namespace GenApi_3_0
