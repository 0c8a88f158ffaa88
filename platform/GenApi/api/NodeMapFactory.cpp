#include "GenApi/NodeMapFactory.h"

#include <string>
#include <utility>
#include <vector>

#include "Base/GCException.h"
#include "core/NodeMap.h"
#include "core/XmlBytes.h"

namespace GenApi_3_0 {

struct CNodeMapFactory::Content {
    std::string xml;
    std::vector<std::string> injected;
};

CNodeMapFactory::CNodeMapFactory() = default;
CNodeMapFactory::CNodeMapFactory(const CNodeMapFactory& other) = default;
CNodeMapFactory& CNodeMapFactory::operator=(const CNodeMapFactory& other) = default;
CNodeMapFactory::~CNodeMapFactory() = default;

CNodeMapFactory::CNodeMapFactory(EContentType_t ContentType, const GenICam_3_0::gcstring& FileName)
    : m_content(std::make_shared<Content>(Content{
          genapi::unpack(ContentType, genapi::readFile(FileName.str())), std::vector<std::string>()})) {}

CNodeMapFactory::CNodeMapFactory(EContentType_t ContentType, const void* pData, std::size_t DataSize) {
    if (pData == nullptr || DataSize == 0)
        throw INVALID_ARGUMENT_EXCEPTION("there are no bytes of an XML");
    std::string bytes(static_cast<const char*>(pData), DataSize);
    m_content = std::make_shared<Content>(
        Content{genapi::unpack(ContentType, std::move(bytes)), std::vector<std::string>()});
}

bool CNodeMapFactory::IsLoaded() const {
    return m_content != nullptr;
}

void CNodeMapFactory::AddInjectionData(const CNodeMapFactory& injected) {
    if (!m_content || !injected.m_content)
        throw LOGICAL_ERROR_EXCEPTION("an XML is to be merged before both are loaded");
    auto merged = std::make_shared<Content>(*m_content);
    merged->injected.push_back(injected.m_content->xml);
    merged->injected.insert(merged->injected.end(), injected.m_content->injected.begin(),
                            injected.m_content->injected.end());
    m_content = std::move(merged);
}

INodeMap* CNodeMapFactory::CreateNodeMap(const GenICam_3_0::gcstring& DeviceName) const {
    if (!m_content)
        throw LOGICAL_ERROR_EXCEPTION("a node map is to be made before an XML is loaded");
    genapi::Description description(m_content->xml);
    for (const std::string& injected : m_content->injected)
        description.merge(genapi::Description(injected));
    return new genapi::NodeMap(std::move(description), DeviceName.str());
}

} // namespace GenApi_3_0
