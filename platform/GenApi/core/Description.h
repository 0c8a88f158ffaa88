#pragma once
/// A camera's XML taken apart: what nodes there are and which texts each has. Nothing is interpreted yet.
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/Vocabulary.h"

namespace genapi {

/// One element inside of a node, or one attribute of it. The texts belong to the description.
struct Property {
    PropertyId id = PropertyId::Unknown;
    bool attributeNamesANode = false; ///< pIndex with pOffset instead of Offset
    std::string_view text;
    std::string_view attribute; ///< Name of a variable, Offset of a pIndex, Index of an indexed value
};

struct NodeRecord {
    NodeKind kind = NodeKind::Node;
    int mergePriority = 0;
    std::uint32_t firstProperty = 0;
    std::uint32_t propertyCount = 0;
    std::string_view name;
    std::string_view fault; ///< What is wrong with the node as a whole; empty: nothing
};

struct DeviceRecord {
    std::string_view modelName, vendorName, toolTip, standardNameSpace, productGuid, versionGuid;
    std::uint16_t schemaVersion[3] = {1, 1, 0};
    std::uint16_t deviceVersion[3] = {0, 0, 0};
};

/// Owns the texts that its records point into; so does whoever takes it over by moving.
class Description {
public:
    /// Reads an XML. Throws RuntimeException for one that isn't well formed or is no camera description, with
    /// the node's name where one is at fault.
    explicit Description(std::string xml);
    Description(Description&&) noexcept;
    Description& operator=(Description&&) noexcept;
    ~Description();

    /// Lays another description over this one, as CNodeMapFactory::AddInjectionData tells.
    void merge(Description injected);

    const DeviceRecord& device() const { return m_device; }
    const std::vector<NodeRecord>& nodes() const { return m_nodes; }
    const Property* properties(const NodeRecord& node) const {
        return m_properties.data() + node.firstProperty;
    }

private:
    friend class DescriptionReader;

    struct Texts; // the XML's bytes and names that were made from them
    std::vector<std::unique_ptr<Texts>> m_texts;
    DeviceRecord m_device;
    std::vector<NodeRecord> m_nodes;
    std::vector<Property> m_properties;
};

} // namespace genapi
