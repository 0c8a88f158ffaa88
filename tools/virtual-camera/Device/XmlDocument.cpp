#include "Device/XmlDocument.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

namespace vcam {

namespace {

// The order of a node's elements in the schema. What is not listed comes last.
size_t Rank(const std::string& element) {
    static const std::array<const char*, 62> kOrder = {"Extension",
                                                       "ToolTip",
                                                       "Description",
                                                       "DisplayName",
                                                       "Visibility",
                                                       "DocuURL",
                                                       "IsDeprecated",
                                                       "EventID",
                                                       "pIsImplemented",
                                                       "pIsAvailable",
                                                       "pIsLocked",
                                                       "pBlockPolling",
                                                       "ImposedAccessMode",
                                                       "pError",
                                                       "pAlias",
                                                       "pCastAlias",
                                                       "pInvalidator",
                                                       "Streamable",
                                                       "pVariable",
                                                       "Constant",
                                                       "Expression",
                                                       "EnumEntry",
                                                       "Value",
                                                       "pValue",
                                                       "pValueCopy",
                                                       "pIndex",
                                                       "ValueIndexed",
                                                       "pValueIndexed",
                                                       "ValueDefault",
                                                       "pValueDefault",
                                                       "Address",
                                                       "IntSwissKnife",
                                                       "pAddress",
                                                       "pOffset",
                                                       "Length",
                                                       "pLength",
                                                       "AccessMode",
                                                       "pPort",
                                                       "Cachable",
                                                       "PollingTime",
                                                       "LSB",
                                                       "MSB",
                                                       "Bit",
                                                       "Sign",
                                                       "Endianess",
                                                       "OnValue",
                                                       "OffValue",
                                                       "CommandValue",
                                                       "pCommandValue",
                                                       "FormulaTo",
                                                       "FormulaFrom",
                                                       "Formula",
                                                       "Min",
                                                       "pMin",
                                                       "Max",
                                                       "pMax",
                                                       "Inc",
                                                       "pInc",
                                                       "Unit",
                                                       "Representation",
                                                       "DisplayNotation",
                                                       "pSelected"};
    const auto* found = std::find(kOrder.begin(), kOrder.end(), element);
    return static_cast<size_t>(found - kOrder.begin());
}

void Line(std::string& to, int depth, const std::string& text) {
    to.append(static_cast<size_t>(depth) * 2, ' ');
    to += text;
    to += '\n';
}

} // namespace

std::string EscapeXml(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string Hex(uint32_t value) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%X", value);
    return text.data();
}

std::string Decimal(double value) {
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

XmlNode& XmlNode::Add(const std::string& element, const std::string& text) {
    m_elements.push_back({element, "", text});
    return *this;
}

XmlNode& XmlNode::Add(const std::string& element, int64_t number) {
    return Add(element, std::to_string(number));
}

XmlNode& XmlNode::AddFloat(const std::string& element, double number) {
    return Add(element, Decimal(number));
}

XmlNode& XmlNode::Replace(const std::string& element, const std::string& text) {
    for (Element& each : m_elements) {
        if (each.name == element)
            each.text = text;
    }
    return *this;
}

XmlNode& XmlNode::Variable(const std::string& variable, const std::string& node) {
    m_elements.push_back({"pVariable", " Name=\"" + EscapeXml(variable) + "\"", node});
    return *this;
}

XmlNode& XmlNode::Index(const std::string& node, uint32_t stride) {
    m_elements.push_back({"pIndex", " Offset=\"" + Hex(stride) + "\"", node});
    return *this;
}

XmlNode& XmlNode::Entry(const std::string& name, int64_t value) {
    if (m_entries.empty())
        m_elements.push_back({"EnumEntry", "", ""}); // holds the place of all
    return m_entries.emplace_back("EnumEntry", name).Add("Value", value);
}

void XmlNode::RenameEntries(const std::function<std::string(const std::string& name)>& rename) {
    for (XmlNode& entry : m_entries) {
        for (Element& element : entry.m_elements) {
            if (element.name == "DisplayName")
                element.text = rename(entry.Name());
        }
    }
}

void XmlNode::Write(std::string& to, int depth) const {
    std::vector<Element> sorted = m_elements;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Element& a, const Element& b) { return Rank(a.name) < Rank(b.name); });
    Line(to, depth, "<" + m_kind + " Name=\"" + EscapeXml(m_name) + "\" NameSpace=\"Standard\">");
    for (const Element& element : sorted) {
        if (element.name == "EnumEntry") {
            for (const XmlNode& entry : m_entries)
                entry.Write(to, depth + 1);
            continue;
        }
        Line(to, depth + 1,
             "<" + element.name + element.attribute + ">" + EscapeXml(element.text) + "</" + element.name +
                 ">");
    }
    Line(to, depth, "</" + m_kind + ">");
}

XmlNode& XmlDocument::Node(const std::string& kind, const std::string& name) {
    return m_nodes.emplace_back(kind, name);
}

XmlNode* XmlDocument::Find(const std::string& name) {
    for (XmlNode& node : m_nodes) {
        if (node.Name() == name)
            return &node;
    }
    return nullptr;
}

void XmlDocument::List(const std::string& category, const std::string& feature) {
    if (m_categories.empty())
        m_categories.emplace_back("Category", "Root");
    for (XmlNode& node : m_categories) {
        if (node.Name() == category) {
            node.Add("pFeature", feature);
            return;
        }
    }
    m_categories.front().Add("pFeature", category);
    m_categories.emplace_back("Category", category).Add("pFeature", feature);
}

std::string XmlDocument::Text(const std::string& vendor, const std::string& model,
                              const std::string& toolTip) const {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<RegisterDescription ModelName=\"" +
        EscapeXml(model) + "\" VendorName=\"" + EscapeXml(vendor) + "\" ToolTip=\"" + EscapeXml(toolTip) +
        "\" StandardNameSpace=\"GEV\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\""
        " SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\""
        " ProductGuid=\"7A1C5F20-3D0B-4C57-9E0B-1F6B52C1D001\""
        " VersionGuid=\"7A1C5F20-3D0B-4C57-9E0B-1F6B52C1D002\""
        " xmlns=\"http://www.genicam.org/GenApi/Version_1_1\""
        " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
        " xsi:schemaLocation=\"http://www.genicam.org/GenApi/Version_1_1"
        " http://www.genicam.org/GenApi/GenApiSchema_Version_1_1.xsd\">\n";
    for (const XmlNode& category : m_categories)
        category.Write(text, 1);
    for (const XmlNode& node : m_nodes)
        node.Write(text, 1);
    Line(text, 1, "<Port Name=\"Device\" NameSpace=\"Standard\">");
    Line(text, 1, "</Port>");
    return text + "</RegisterDescription>\n";
}

} // namespace vcam
