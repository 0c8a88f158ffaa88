// Builds the GenICam XML: nodes in the order in which they were made, the elements of each in the order that
// the schema asks for.
#ifndef VCAM_DEVICE_XMLDOCUMENT_H
#define VCAM_DEVICE_XMLDOCUMENT_H

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vcam {

std::string EscapeXml(const std::string& text);
std::string Hex(uint32_t value);
std::string Decimal(double value); // shortest text that gives the same number again

class XmlNode {
public:
    XmlNode(std::string kind, std::string name) : m_kind(std::move(kind)), m_name(std::move(name)) {}

    const std::string& Name() const { return m_name; }
    const std::string& Kind() const { return m_kind; }
    // An element with a text; several of one name stay in their order.
    XmlNode& Add(const std::string& element, const std::string& text);
    XmlNode& Add(const std::string& element, int64_t number);
    // Another text for the elements of this name.
    XmlNode& Replace(const std::string& element, const std::string& text);
    XmlNode& AddFloat(const std::string& element, double number);
    // <pVariable Name="variable">node</pVariable>
    XmlNode& Variable(const std::string& variable, const std::string& node);
    // <pIndex Offset="stride">node</pIndex>
    XmlNode& Index(const std::string& node, uint32_t stride);
    // An <EnumEntry>, itself a node.
    XmlNode& Entry(const std::string& name, int64_t value);

    // Display names of the entries, made from their names.
    void RenameEntries(const std::function<std::string(const std::string& name)>& rename);

    void Write(std::string& to, int depth) const;

private:
    struct Element {
        std::string name;
        std::string attribute; // with a leading blank
        std::string text;
    };

    std::string m_kind;
    std::string m_name;
    std::vector<Element> m_elements;
    std::deque<XmlNode> m_entries; // a deque, so that references stay good
};

class XmlDocument {
public:
    XmlNode& Node(const std::string& kind, const std::string& name);
    XmlNode* Find(const std::string& name);
    // Lists a feature in a category; the category is made, and listed under Root, at the first mention.
    void List(const std::string& category, const std::string& feature);
    std::string Text(const std::string& vendor, const std::string& model, const std::string& toolTip) const;

private:
    std::deque<XmlNode> m_nodes;
    std::deque<XmlNode> m_categories; // Root first
};

} // namespace vcam

#endif
