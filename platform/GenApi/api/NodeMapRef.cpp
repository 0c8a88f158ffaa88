#include "GenApi/NodeMapRef.h"

#include "GenApi/NodeMapFactory.h"
#include "core/NodeMap.h"

namespace GenApi_3_0 {

using GenICam_3_0::gcstring;
using GenICam_3_0::gcstring_vector;
using GenICam_3_0::Version_t;

CNodeMapRef::CNodeMapRef(const gcstring& DeviceName) : m_deviceName(DeviceName) {}

CNodeMapRef::CNodeMapRef(INodeMap* pNodeMap, const gcstring& DeviceName)
    : _Ptr(pNodeMap), m_deviceName(DeviceName) {}

CNodeMapRef::CNodeMapRef(const CNodeMapRef& other) : _Ptr(other._Ptr), m_deviceName(other.m_deviceName) {
    if (auto* counted = dynamic_cast<genapi::NodeMap*>(_Ptr))
        counted->addHold();
}

CNodeMapRef& CNodeMapRef::operator=(const CNodeMapRef& other) {
    if (this == &other)
        return *this;
    CNodeMapRef copy(other);
    std::swap(_Ptr, copy._Ptr);
    m_deviceName = copy.m_deviceName;
    return *this;
}

CNodeMapRef& CNodeMapRef::operator=(INodeMap* pNodeMap) {
    if (pNodeMap != _Ptr) {
        release();
        _Ptr = pNodeMap;
    }
    return *this;
}

CNodeMapRef::~CNodeMapRef() {
    release();
}

void CNodeMapRef::release() {
    if (auto* held = dynamic_cast<IDestroy*>(_Ptr))
        held->Destroy();
    _Ptr = nullptr;
}

INodeMap& CNodeMapRef::map() const {
    if (_Ptr == nullptr)
        throw LOGICAL_ERROR_EXCEPTION("there is no node map: no XML was loaded, or the map was destroyed");
    return *_Ptr;
}

IDeviceInfo& CNodeMapRef::info() const {
    auto* info = dynamic_cast<IDeviceInfo*>(&map());
    if (info == nullptr)
        throw LOGICAL_ERROR_EXCEPTION("the node map tells nothing of its device");
    return *info;
}

void CNodeMapRef::_LoadXMLFromFile(const gcstring& FileName) {
    *this = CNodeMapFactory(ContentType_Xml, FileName).CreateNodeMap(m_deviceName);
}

void CNodeMapRef::_LoadXMLFromZIPFile(const gcstring& ZipFileName) {
    *this = CNodeMapFactory(ContentType_ZippedXml, ZipFileName).CreateNodeMap(m_deviceName);
}

void CNodeMapRef::_LoadXMLFromZIPData(const void* zipData, std::size_t zipSize) {
    *this = CNodeMapFactory(ContentType_ZippedXml, zipData, zipSize).CreateNodeMap(m_deviceName);
}

void CNodeMapRef::_LoadXMLFromFileInject(const gcstring& TargetFileName, const gcstring& InjectFileName) {
    CNodeMapFactory factory(ContentType_Xml, TargetFileName);
    factory.AddInjectionData(CNodeMapFactory(ContentType_Xml, InjectFileName));
    *this = factory.CreateNodeMap(m_deviceName);
}

void CNodeMapRef::_LoadXMLFromString(const gcstring& XMLData) {
    *this = CNodeMapFactory(ContentType_Xml, XMLData.c_str(), XMLData.size()).CreateNodeMap(m_deviceName);
}

void CNodeMapRef::_LoadXMLFromStringInject(const gcstring& TargetXMLData, const gcstring& InjectXMLData) {
    CNodeMapFactory factory(ContentType_Xml, TargetXMLData.c_str(), TargetXMLData.size());
    factory.AddInjectionData(CNodeMapFactory(ContentType_Xml, InjectXMLData.c_str(), InjectXMLData.size()));
    *this = factory.CreateNodeMap(m_deviceName);
}

void CNodeMapRef::_GetSupportedSchemaVersions(gcstring_vector& SchemaVersions) const {
    SchemaVersions = gcstring_vector{"1.0", "1.1"};
}

gcstring CNodeMapRef::_GetDeviceName() const {
    return map().GetDeviceName();
}
void CNodeMapRef::_Poll(int64_t ElapsedTime) {
    map().Poll(ElapsedTime);
}
void CNodeMapRef::_Destroy() {
    release();
}

void CNodeMapRef::_GetNodes(NodeList_t& Nodes) const {
    map().GetNodes(Nodes);
}
INode* CNodeMapRef::_GetNode(const gcstring& key) const {
    return map().GetNode(key);
}
void CNodeMapRef::_InvalidateNodes() const {
    map().InvalidateNodes();
}
bool CNodeMapRef::_Connect(IPort* pPort, const gcstring& PortName) const {
    return map().Connect(pPort, PortName);
}
bool CNodeMapRef::_Connect(IPort* pPort) const {
    return map().Connect(pPort);
}
bool CNodeMapRef::_ParseSwissKnifes(gcstring_vector* pErrors) const {
    return map().ParseSwissKnifes(pErrors);
}

gcstring CNodeMapRef::_GetModelName() const {
    return info().GetModelName();
}
gcstring CNodeMapRef::_GetVendorName() const {
    return info().GetVendorName();
}
gcstring CNodeMapRef::_GetToolTip() const {
    return info().GetToolTip();
}
gcstring CNodeMapRef::_GetStandardNameSpace() const {
    return info().GetStandardNameSpace();
}
void CNodeMapRef::_GetGenApiVersion(Version_t& Version, uint16_t& Build) const {
    info().GetGenApiVersion(Version, Build);
}
void CNodeMapRef::_GetSchemaVersion(Version_t& Version) const {
    info().GetSchemaVersion(Version);
}
void CNodeMapRef::_GetDeviceVersion(Version_t& Version) const {
    info().GetDeviceVersion(Version);
}
gcstring CNodeMapRef::_GetProductGuid() const {
    return info().GetProductGuid();
}
gcstring CNodeMapRef::_GetVersionGuid() const {
    return info().GetVersionGuid();
}

} // namespace GenApi_3_0
