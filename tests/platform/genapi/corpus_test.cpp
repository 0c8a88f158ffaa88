// Descriptions of real cameras. They lie beside the source tree, or where KOLT_XML_CORPUS says; where there
// are none, this program has no tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <pugixml.hpp>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "GenApi/GenApi.h"
#include "support/MemoryPort.h"
#include "support/NodeMapWalk.h"
#include "support/Places.h"

namespace {

using namespace GenApi_3_0;

std::vector<std::string> Files() {
    const char* const given = std::getenv("KOLT_XML_CORPUS");
    const std::string folder = given != nullptr ? given : KOLT_SOURCE_DIR "/../shared/xml-corpus";
    std::vector<std::string> files;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator it(folder, error), end; !error && it != end;
         it.increment(error)) {
        if (it->path().extension() == ".xml" && it->is_regular_file()) {
            files.push_back(it->path().string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string TestName(const testing::TestParamInfo<std::string>& info) {
    std::string name = std::filesystem::path(info.param).stem().string();
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name + "_" + std::to_string(info.index);
}

class RealCamera : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        std::ifstream stream(GetParam(), std::ios::binary);
        m_xml.assign(std::istreambuf_iterator<char>(stream), {});
        ASSERT_GT(m_xml.size(), 100U);
        m_map._LoadXMLFromString(m_xml.c_str());
        NodeList_t nodes;
        m_map._GetNodes(nodes);
        for (INode* node : nodes) {
            if (node->GetPrincipalInterfaceType() == intfIPort) {
                m_map._Connect(&m_port, node->GetName());
            }
        }
    }

    // Every element with a name that makes a node, wherever it stands in groups.
    void ForEachNode(const std::function<void(pugi::xml_node)>& visit) {
        ASSERT_TRUE(m_document.load_buffer(m_xml.data(), m_xml.size()));
        const std::function<void(pugi::xml_node)> children = [&](pugi::xml_node parent) {
            for (const pugi::xml_node child : parent.children()) {
                const std::string kind = child.name();
                if (kind == "Group") {
                    children(child);
                } else if (kind == "StructReg") {
                    for (const pugi::xml_node entry : child.children("StructEntry")) {
                        visit(entry);
                    }
                } else if (child.attribute("Name")) {
                    visit(child);
                }
            }
        };
        children(m_document.child("RegisterDescription"));
    }

    void ExpectNoSurprise(const support::WalkOptions& options) {
        const support::WalkReport report = support::WalkNodeMap(*m_map._Ptr, options);
        for (const std::string& surprise : report.surprises) {
            ADD_FAILURE() << surprise;
        }
        EXPECT_GT(report.nodes, 100U);
        std::string text;
        for (const auto& [name, count] : report.refusals) {
            text += ", " + std::to_string(count) + " " + name;
        }
        std::printf("    %zu nodes, %zu readable, %zu with a value%s\n", report.nodes, report.readable,
                    report.values, text.c_str());
    }

    std::string m_xml;
    pugi::xml_document m_document;
    support::MemoryPort m_port;
    CNodeMapRef m_map{"Device"};
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RealCamera);

TEST_P(RealCamera, FormulasCompile) {
    GenICam_3_0::gcstring_vector errors;
    EXPECT_TRUE(m_map._ParseSwissKnifes(&errors));
    for (std::size_t i = 0; i < errors.size(); ++i) {
        ADD_FAILURE() << errors[i].c_str();
    }
}

TEST_P(RealCamera, EveryNodeOfTheXmlIsThereAsItsKind) {
    static const std::map<std::string, EInterfaceType> kTypes = {
        {"Category", intfICategory},    {"Integer", intfIInteger},
        {"IntReg", intfIInteger},       {"MaskedIntReg", intfIInteger},
        {"StructEntry", intfIInteger},  {"IntSwissKnife", intfIInteger},
        {"IntConverter", intfIInteger}, {"Float", intfIFloat},
        {"FloatReg", intfIFloat},       {"SwissKnife", intfIFloat},
        {"Converter", intfIFloat},      {"Boolean", intfIBoolean},
        {"Command", intfICommand},      {"Enumeration", intfIEnumeration},
        {"StringReg", intfIString},     {"String", intfIString},
        {"Register", intfIRegister},    {"Port", intfIPort}};
    std::size_t count = 0;
    ForEachNode([&](pugi::xml_node element) {
        const auto type = kTypes.find(element.name());
        if (type == kTypes.end()) {
            return;
        }
        ++count;
        INode* const node = m_map._GetNode(element.attribute("Name").value());
        ASSERT_NE(node, nullptr) << element.attribute("Name").value();
        EXPECT_EQ(node->GetPrincipalInterfaceType(), type->second) << element.attribute("Name").value();
    });
    EXPECT_GT(count, 100U);
}

// Texts as the second parser reads them, with blanks at both ends cut.
std::string Trimmed(const char* text) {
    std::string all = text;
    const std::size_t begin = all.find_first_not_of(" \t\r\n");
    const std::size_t end = all.find_last_not_of(" \t\r\n");
    return begin == std::string::npos ? "" : all.substr(begin, end - begin + 1);
}

TEST_P(RealCamera, NodesTellWhatTheXmlSays) {
    static const std::map<std::string, EVisibility> kVisibilities = {
        {"Beginner", Beginner}, {"Expert", Expert}, {"Guru", Guru}, {"Invisible", Invisible}};
    ForEachNode([&](pugi::xml_node element) {
        INode* const node = m_map._GetNode(element.attribute("Name").value());
        if (node == nullptr || std::string(element.name()) == "StructEntry") {
            return;
        }
        SCOPED_TRACE(node->GetName().c_str());
        EXPECT_EQ(Trimmed(node->GetToolTip().c_str()), Trimmed(element.child_value("ToolTip")));
        EXPECT_EQ(Trimmed(node->GetDescription().c_str()), Trimmed(element.child_value("Description")));
        if (element.child("DisplayName")) {
            EXPECT_EQ(Trimmed(node->GetDisplayName().c_str()), Trimmed(element.child_value("DisplayName")));
        }
        const std::string visibility = Trimmed(element.child_value("Visibility"));
        EXPECT_EQ(node->GetVisibility(), visibility.empty() ? Beginner : kVisibilities.at(visibility));
        EXPECT_EQ(node->GetNameSpace(),
                  std::string(element.attribute("NameSpace").value()) == "Standard" ? Standard : Custom);
        EXPECT_EQ(node->IsStreamable(), Trimmed(element.child_value("Streamable")) == "Yes");
        if (element.child("PollingTime")) {
            EXPECT_EQ(std::to_string(node->GetPollingTime()), Trimmed(element.child_value("PollingTime")));
        }
    });
}

TEST_P(RealCamera, EnumerationsCategoriesSelectorsAndInvalidatorsAreComplete) {
    std::map<std::string, std::set<std::string>> selecting;
    const auto texts = [](pugi::xml_node element, const char* property) {
        std::vector<std::string> all;
        for (const pugi::xml_node child : element.children(property)) {
            all.push_back(Trimmed(child.child_value()));
        }
        return all;
    };
    ForEachNode([&](pugi::xml_node element) {
        const std::string kind = element.name();
        const std::string name = element.attribute("Name").value();
        SCOPED_TRACE(name);
        INode* const node = m_map._GetNode(name.c_str());
        if (node == nullptr) {
            return;
        }
        if (kind == "Enumeration") {
            NodeList_t entries;
            const CEnumerationPtr enumeration(node);
            enumeration->GetEntries(entries);
            std::size_t count = 0;
            for (const pugi::xml_node entry : element.children("EnumEntry")) {
                ++count;
                IEnumEntry* const found = enumeration->GetEntryByName(entry.attribute("Name").value());
                ASSERT_NE(found, nullptr) << entry.attribute("Name").value();
                EXPECT_EQ(found->GetValue(), std::stoll(Trimmed(entry.child_value("Value")), nullptr, 0));
            }
            EXPECT_EQ(entries.size(), count);
        }
        if (kind == "Category") {
            FeatureList_t features;
            CCategoryPtr(node)->GetFeatures(features);
            EXPECT_LE(features.size(), texts(element, "pFeature").size());
            for (const std::string& feature : texts(element, "pFeature")) {
                INode* const listed = m_map._GetNode(feature.c_str());
                EXPECT_EQ(listed != nullptr, std::any_of(features.begin(), features.end(),
                                                         [&](IValue* v) { return v->GetNode() == listed; }))
                    << feature;
            }
        }
        std::set<INode*> invalidators;
        std::vector<std::string> named = texts(element, "pInvalidator");
        if (kind == "StructEntry") {
            const std::vector<std::string> shared = texts(element.parent(), "pInvalidator");
            named.insert(named.end(), shared.begin(), shared.end());
        }
        for (const std::string& invalidator : named) {
            if (INode* const found = m_map._GetNode(invalidator.c_str())) {
                invalidators.insert(found);
            }
        }
        NodeList_t children;
        node->GetChildren(children, ctInvalidatingChildren);
        EXPECT_EQ(std::set<INode*>(children.begin(), children.end()), invalidators);
        const CSelectorPtr selector(node);
        if (selector) {
            FeatureList_t selected;
            selector->GetSelectedFeatures(selected);
            std::set<std::string> expected;
            for (const std::string& feature : texts(element, "pSelected")) {
                if (m_map._GetNode(feature.c_str()) != nullptr) {
                    expected.insert(feature);
                }
            }
            std::set<std::string> found;
            for (IValue* value : selected) {
                found.insert(value->GetNode()->GetName().c_str());
            }
            EXPECT_EQ(found, expected);
        }
    });
}

TEST_P(RealCamera, AWalkOnEmptyMemoryEndsWithoutASurprise) {
    ExpectNoSurprise({});
}

TEST_P(RealCamera, AWalkOnRandomMemoryEndsWithoutASurprise) {
    // Each byte is a function of its address.
    m_port.OnAccess([&](bool write, std::int64_t address, std::int64_t length) {
        for (std::int64_t i = address; !write && i < address + std::min<std::int64_t>(length, 4096); ++i) {
            m_port.StoreInteger(i, 1, std::mt19937(static_cast<std::uint32_t>(i))() & 0xFF);
        }
    });
    ExpectNoSurprise({});
}

TEST_P(RealCamera, AWalkThatWritesEndsWithoutASurprise) {
    support::WalkOptions options;
    options.write = true;
    ExpectNoSurprise(options);
}

TEST_P(RealCamera, AWalkWithoutAPortEndsWithoutASurprise) {
    NodeList_t nodes;
    m_map._GetNodes(nodes);
    for (INode* node : nodes) {
        if (node->GetPrincipalInterfaceType() == intfIPort) {
            m_map._Connect(nullptr, node->GetName());
        }
    }
    ExpectNoSurprise({});
    EXPECT_EQ(m_port.Reads() + m_port.Writes(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Corpus, RealCamera, testing::ValuesIn(Files()), TestName);

} // namespace
