#include "core/Description.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <unordered_map>

#include <pugixml.hpp>

#include "Base/GCException.h"

namespace genapi {

namespace {

constexpr int maxGroupDepth = 64;
constexpr std::size_t maxProperties = 4'000'000; // 160 MB; the largest cameras have some 100 000

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view attributeText(const pugi::xml_node& element, const char* name) {
    return trimmed(element.attribute(name).value());
}

/// The element's word without a name-space prefix.
std::string_view wordOf(const pugi::xml_node& element) {
    const std::string_view name = element.name();
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::uint16_t versionPart(const pugi::xml_node& root, const char* name, std::uint16_t missing) {
    const std::string_view text = attributeText(root, name);
    std::uint16_t number = missing;
    if (!text.empty() && std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc())
        throw RUNTIME_EXCEPTION("the XML's %s is '%.*s', which is no version number", name,
                                static_cast<int>(text.size()), text.data());
    return number;
}

/// Properties that a node can have several of; of all others the last one counts.
bool addsUp(PropertyId id) {
    switch (id) {
    case PropertyId::pInvalidator:
    case PropertyId::pError:
    case PropertyId::pSelected:
    case PropertyId::pFeature:
    case PropertyId::pValueCopy:
    case PropertyId::pVariable:
    case PropertyId::Constant:
    case PropertyId::Expression:
    case PropertyId::Address:
    case PropertyId::pAddress:
    case PropertyId::pIntSwissKnife:
    case PropertyId::pIndex:
    case PropertyId::ValueIndexed:
    case PropertyId::pValueIndexed:
    case PropertyId::pEnumEntry:
        return true;
    default:
        return false;
    }
}

} // namespace

struct Description::Texts {
    std::string xml;
    pugi::xml_document document; // holds the texts itself when the XML had to be converted to UTF-8
    std::deque<std::string> made;

    std::string_view keep(std::string text) { return made.emplace_back(std::move(text)); }
};

/// Walks one XML and fills a description.
class DescriptionReader {
public:
    DescriptionReader(Description& description, Description::Texts& texts)
        : m_description(description), m_texts(texts) {}

    void read();

private:
    void readDevice(const pugi::xml_node& root);
    void readNodes(const pugi::xml_node& parent, int depth);
    void readNode(const pugi::xml_node& element, NodeKind kind);
    void readStruct(const pugi::xml_node& element);
    /// Opens a record; its properties follow until the next one is opened.
    std::size_t open(NodeKind kind, std::string_view name, const pugi::xml_node& element);
    void close(std::size_t record);
    std::string_view nameOf(const pugi::xml_node& element) const;
    void addAttributes(const pugi::xml_node& element);
    void addChildren(const pugi::xml_node& element, std::size_t record);
    void add(const Property& property);
    void addFormulaAddress(const pugi::xml_node& element, std::size_t record);
    /// All of the element's text, also when a comment or a CDATA section divides it.
    std::string_view textOf(const pugi::xml_node& element);

    struct Inner { // a node inside of another, read after it
        pugi::xml_node element;
        std::string_view name;
        NodeKind kind;
    };

    Description& m_description;
    Description::Texts& m_texts;
    std::vector<Inner> m_inner;
};

void DescriptionReader::read() {
    std::string& xml = m_texts.xml;
    // Cameras pad their file to whole registers.
    const std::size_t end = xml.find_last_not_of(std::string_view("\0 \t\r\n", 5));
    xml.resize(end == std::string::npos ? 0 : end + 1);
    if (xml.empty())
        throw RUNTIME_EXCEPTION("the XML is empty");
    const bool wide =
        xml.size() > 1 && (xml[0] == '\0' || xml[1] == '\0' || xml[0] == '\xFE' || xml[0] == '\xFF');
    if (wide)
        xml.append(3, '\0'); // the end of a wide character may have been taken for padding
    const pugi::xml_parse_result result = m_texts.document.load_buffer_inplace(
        xml.data(), xml.size(), pugi::parse_default | pugi::parse_trim_pcdata | pugi::parse_embed_pcdata);
    if (!result)
        throw RUNTIME_EXCEPTION("the XML is not well formed: %s, at byte %lld of %zu", result.description(),
                                static_cast<long long>(result.offset), xml.size());
    const pugi::xml_node root = m_texts.document.document_element();
    if (wordOf(root) != "RegisterDescription")
        throw RUNTIME_EXCEPTION(
            "the XML is no camera description: its root is <%s>, not <RegisterDescription>", root.name());
    readDevice(root);
    readNodes(root, 0);
}

void DescriptionReader::readDevice(const pugi::xml_node& root) {
    DeviceRecord& device = m_description.m_device;
    device.modelName = attributeText(root, "ModelName");
    device.vendorName = attributeText(root, "VendorName");
    device.toolTip = attributeText(root, "ToolTip");
    device.standardNameSpace = attributeText(root, "StandardNameSpace");
    device.productGuid = attributeText(root, "ProductGuid");
    device.versionGuid = attributeText(root, "VersionGuid");
    device.schemaVersion[0] = versionPart(root, "SchemaMajorVersion", 1);
    device.schemaVersion[1] = versionPart(root, "SchemaMinorVersion", 1);
    device.schemaVersion[2] = versionPart(root, "SchemaSubMinorVersion", 0);
    device.deviceVersion[0] = versionPart(root, "MajorVersion", 0);
    device.deviceVersion[1] = versionPart(root, "MinorVersion", 0);
    device.deviceVersion[2] = versionPart(root, "SubMinorVersion", 0);
    if (device.schemaVersion[0] != 1)
        throw RUNTIME_EXCEPTION("the XML follows schema %u.%u; known are 1.0 and 1.1",
                                device.schemaVersion[0], device.schemaVersion[1]);
}

void DescriptionReader::readNodes(const pugi::xml_node& parent, int depth) {
    if (depth > maxGroupDepth)
        throw RUNTIME_EXCEPTION("the XML nests groups deeper than %d", maxGroupDepth);
    for (const pugi::xml_node& element : parent.children()) {
        if (element.type() != pugi::node_element)
            continue;
        const std::string_view word = wordOf(element);
        NodeKind kind = NodeKind::Node;
        if (word == "Group")
            readNodes(element, depth + 1);
        else if (word == "StructReg")
            readStruct(element);
        else if (KindFromName(word, kind) && kind != NodeKind::EnumEntry && kind != NodeKind::StructEntry)
            readNode(element, kind);
        // What the schema doesn't know (a maker's own extension) is passed over with all that is in it.
    }
}

std::string_view DescriptionReader::nameOf(const pugi::xml_node& element) const {
    const std::string_view name = attributeText(element, "Name");
    if (name.empty())
        throw RUNTIME_EXCEPTION("a <%s> in the XML has no name (at byte %lld)", element.name(),
                                static_cast<long long>(element.offset_debug()));
    return name;
}

std::size_t DescriptionReader::open(NodeKind kind, std::string_view name, const pugi::xml_node& element) {
    NodeRecord record;
    record.kind = kind;
    record.name = name;
    record.firstProperty = static_cast<std::uint32_t>(m_description.m_properties.size());
    const std::string_view priority = attributeText(element, "MergePriority");
    if (!priority.empty())
        record.mergePriority = priority.front() == '-' ? -1 : priority == "0" ? 0 : 1;
    m_description.m_nodes.push_back(record);
    Property property;
    property.id = PropertyId::Name;
    property.text = name;
    add(property);
    return m_description.m_nodes.size() - 1;
}

void DescriptionReader::close(std::size_t record) {
    NodeRecord& node = m_description.m_nodes[record];
    node.propertyCount = static_cast<std::uint32_t>(m_description.m_properties.size()) - node.firstProperty;
}

void DescriptionReader::add(const Property& property) {
    if (m_description.m_properties.size() >= maxProperties)
        throw RUNTIME_EXCEPTION("node '%s': the XML has more than %zu properties up to here",
                                std::string(m_description.m_nodes.back().name).c_str(), maxProperties);
    m_description.m_properties.push_back(property);
}

void DescriptionReader::addAttributes(const pugi::xml_node& element) {
    for (const pugi::xml_attribute& attribute : element.attributes()) {
        Property property;
        property.id = PropertyFromName(attribute.name());
        property.text = trimmed(attribute.value());
        if (property.id == PropertyId::NameSpace || property.id == PropertyId::MergePriority ||
            property.id == PropertyId::ExposeStatic)
            add(property);
    }
}

void DescriptionReader::addFormulaAddress(const pugi::xml_node& element, std::size_t record) {
    std::string_view name = attributeText(element, "Name");
    if (name.empty())
        name = m_texts.keep("IntSwissKnife_" + std::string(m_description.m_nodes[record].name) + "_" +
                            std::to_string(m_inner.size()));
    Property property;
    property.id = PropertyId::pIntSwissKnife;
    property.text = name;
    add(property);
    m_inner.push_back({element, name, NodeKind::IntSwissKnife});
}

std::string_view DescriptionReader::textOf(const pugi::xml_node& element) {
    const bool embedded = *element.value() != '\0';
    std::size_t pieces = embedded ? 1 : 0;
    for (const pugi::xml_node& piece : element.children())
        pieces += piece.type() == pugi::node_pcdata || piece.type() == pugi::node_cdata ? 1 : 0;
    if (pieces < 2)
        return trimmed(element.child_value());
    std::string joined = element.value();
    for (const pugi::xml_node& piece : element.children())
        if (piece.type() == pugi::node_pcdata || piece.type() == pugi::node_cdata)
            joined.append(" ").append(piece.value());
    return trimmed(m_texts.keep(std::move(joined)));
}

void DescriptionReader::addChildren(const pugi::xml_node& element, std::size_t record) {
    for (const pugi::xml_node& child : element.children()) {
        if (child.type() != pugi::node_element)
            continue;
        const std::string_view word = wordOf(child);
        Property property;
        property.id = PropertyFromName(word);
        if (property.id == PropertyId::Unknown) {
            const NodeKind owner = m_description.m_nodes[record].kind;
            if (word == "EnumEntry" && owner == NodeKind::Enumeration) {
                property.id = PropertyId::pEnumEntry;
                property.text = m_texts.keep("EnumEntry_" + std::string(m_description.m_nodes[record].name) +
                                             "_" + std::string(nameOf(child)));
                add(property);
                m_inner.push_back({child, property.text, NodeKind::EnumEntry});
            } else if (word == "IntSwissKnife") {
                addFormulaAddress(child, record);
            }
            continue;
        }
        property.text = textOf(child);
        for (const pugi::xml_attribute& attribute : child.attributes()) {
            const std::string_view name = attribute.name();
            if (name == "Name" || name == "Offset" || name == "Index" || name == "pOffset") {
                property.attribute = trimmed(attribute.value());
                property.attributeNamesANode = name == "pOffset";
                break;
            }
        }
        add(property);
    }
}

void DescriptionReader::readNode(const pugi::xml_node& element, NodeKind kind) {
    m_inner.clear();
    std::size_t record = open(kind, nameOf(element), element);
    addAttributes(element);
    addChildren(element, record);
    close(record);
    // Inner nodes hold no further ones: an address formula and an entry have only texts.
    const std::vector<Inner> inner = std::move(m_inner);
    m_inner.clear();
    for (const Inner& node : inner) {
        record = open(node.kind, node.name, node.element);
        addAttributes(node.element);
        if (node.kind == NodeKind::EnumEntry) {
            Property symbolic;
            symbolic.id = PropertyId::Symbolic;
            symbolic.text = nameOf(node.element);
            add(symbolic);
        }
        addChildren(node.element, record);
        m_inner.clear();
        close(record);
    }
}

void DescriptionReader::readStruct(const pugi::xml_node& element) {
    // The properties of the structure are read once, as if they were a node's, and given to each of its
    // entries.
    m_inner.clear();
    const std::size_t shared = open(NodeKind::StructEntry, "StructReg", element);
    std::string comment(attributeText(element, "Comment"));
    m_description.m_nodes[shared].name = m_texts.keep(comment.empty() ? "StructReg" : std::move(comment));
    addChildren(element, shared);
    close(shared);
    const NodeRecord structure = m_description.m_nodes[shared];
    const std::vector<Property> common(m_description.m_properties.begin() + structure.firstProperty + 1,
                                       m_description.m_properties.end());
    m_description.m_properties.resize(structure.firstProperty);
    m_description.m_nodes.pop_back();
    const std::vector<Inner> formulas = std::move(m_inner);

    for (const pugi::xml_node& child : element.children()) {
        if (child.type() != pugi::node_element || wordOf(child) != "StructEntry")
            continue;
        m_inner.clear();
        const std::size_t record = open(NodeKind::StructEntry, nameOf(child), child);
        const std::size_t begin = m_description.m_properties.size();
        addAttributes(child);
        addChildren(child, record);
        const std::size_t end = m_description.m_properties.size();
        for (const Property& property : common) {
            const auto overridden = [&property](const Property& own) { return own.id == property.id; };
            const auto own = m_description.m_properties.begin();
            if (addsUp(property.id) || std::none_of(own + static_cast<std::ptrdiff_t>(begin),
                                                    own + static_cast<std::ptrdiff_t>(end), overridden))
                add(property);
        }
        close(record);
    }
    for (const Inner& formula : formulas) {
        m_inner.clear();
        const std::size_t record = open(formula.kind, formula.name, formula.element);
        addAttributes(formula.element);
        addChildren(formula.element, record);
        close(record);
    }
    m_inner.clear();
}

Description::Description(std::string xml) {
    m_texts.push_back(std::make_unique<Texts>());
    Texts& texts = *m_texts.back();
    texts.xml = std::move(xml);
    // One element in about 35 bytes, and every third of a node's line is one.
    m_properties.reserve(std::min(maxProperties, texts.xml.size() / 40));
    m_nodes.reserve(texts.xml.size() / 250);
    DescriptionReader(*this, texts).read();
    const char* first = texts.xml.data();
    const char* name = texts.document.document_element().name();
    if (name >= first && name < first + texts.xml.size())
        texts.document.reset(); // the texts stand in the XML's own bytes
}

Description::Description(Description&&) noexcept = default;
Description& Description::operator=(Description&&) noexcept = default;
Description::~Description() = default;

void Description::merge(Description injected) {
    std::unordered_map<std::string_view, std::size_t> byName;
    for (std::size_t i = 0; i < m_nodes.size(); ++i)
        byName.emplace(m_nodes[i].name, i);
    for (const NodeRecord& incoming : injected.m_nodes) {
        const Property* from = injected.properties(incoming);
        const auto found = byName.find(incoming.name);
        NodeRecord merged = incoming;
        merged.firstProperty = static_cast<std::uint32_t>(m_properties.size());
        if (found != byName.end()) {
            const NodeRecord own = m_nodes[found->second];
            if (own.mergePriority > incoming.mergePriority)
                continue;
            if (own.mergePriority == incoming.mergePriority && own.kind == incoming.kind)
                for (std::uint32_t i = 0; i < own.propertyCount; ++i) {
                    const Property kept = m_properties[own.firstProperty + i];
                    const auto same = [&kept](const Property& other) {
                        return other.id == kept.id && (!addsUp(kept.id) || other.text == kept.text);
                    };
                    if (std::none_of(from, from + incoming.propertyCount, same))
                        m_properties.push_back(kept);
                }
        }
        m_properties.insert(m_properties.end(), from, from + incoming.propertyCount);
        merged.propertyCount = static_cast<std::uint32_t>(m_properties.size()) - merged.firstProperty;
        if (found != byName.end())
            m_nodes[found->second] = merged;
        else
            m_nodes.push_back(merged);
    }
    for (std::unique_ptr<Texts>& texts : injected.m_texts)
        m_texts.push_back(std::move(texts));
}

} // namespace genapi
