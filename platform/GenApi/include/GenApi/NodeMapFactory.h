#pragma once
/// Makes node maps from a camera's XML.
#include <cstddef>
#include <memory>

#include "Base/GCString.h"
#include "Base/GCTypes.h"
#include "GenApi/INodeMap.h"
#include "GenApi/Types.h"

namespace GenApi_3_0 {

/// Holds one XML, and what is merged into it, until a map is made of it. Used by one thread at a time. Copies
/// share the text.
class GENAPI_API CNodeMapFactory {
public:
    CNodeMapFactory();
    /// Reads a file. Throws RuntimeException when it can't be read.
    CNodeMapFactory(EContentType_t ContentType, const GenICam_3_0::gcstring& FileName);
    /// Copies the bytes. Of a zipped XML the first file of the archive counts.
    CNodeMapFactory(EContentType_t ContentType, const void* pData, std::size_t DataSize);
    CNodeMapFactory(const CNodeMapFactory& other);
    CNodeMapFactory& operator=(const CNodeMapFactory& other);
    ~CNodeMapFactory();

    /// Whether there is an XML to make a map of.
    bool IsLoaded() const;
    /// Merges another XML into this one when the map is made: a node that both have is taken from the one
    /// with the higher MergePriority; with equal priority the injected one's properties are laid over those
    /// of the node, and categories get the features of both.
    void AddInjectionData(const CNodeMapFactory& injected);
    /// A new map, which the caller owns (IDestroy, or a CNodeMapRef that takes it over). Throws
    /// RuntimeException or PropertyException, with the name of the node where one is at fault, for an XML
    /// that can't be made a map of.
    INodeMap* CreateNodeMap(const GenICam_3_0::gcstring& DeviceName = "Device") const;

private:
    struct Content;
    std::shared_ptr<const Content> m_content;
};

} // namespace GenApi_3_0
