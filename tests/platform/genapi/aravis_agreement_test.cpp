// Our node map and Aravis' over the same registers: same values, ranges, entries and bytes on the wire, for
// what Aravis gets right. It does not know: "not implemented", "not available" and "locked" through pValue;
// the increment; polling; its register cache is off, since with it fields of one register spoil one another.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "GenApi/GenApi.h"
#include "support/AravisMemoryDevice.h"
#include "support/GenICamXmlGenerator.h"
#include "support/MemoryPort.h"

namespace {

using namespace GenApi_3_0;
using support::AravisMemoryDevice;
using support::FeatureKind;
using support::GeneratedCamera;
using support::GeneratedFeature;
using support::MemoryPort;

class AravisAgreement : public testing::TestWithParam<bool> {
protected:
    AravisAgreement()
        : m_camera(support::GenerateGenICamXml({600, 11, GetParam()}))
        , m_port(m_camera.memory)
        , m_aravis(m_camera.xml, m_port) {
        m_map._LoadXMLFromString(m_camera.xml.c_str());
        m_map._Connect(&m_port, "Device");
    }

    void CompareAll() {
        m_map._InvalidateNodes();
        for (const GeneratedFeature& feature : m_camera.features) {
            SCOPED_TRACE(feature.name);
            INode* const node = m_map._GetNode(feature.name.c_str());
            ASSERT_NE(node, nullptr);
            ASSERT_NE(m_aravis.Node(feature.name), nullptr);
            CompareState(feature, node);
            if (feature.implemented && feature.available) {
                CompareValue(feature, node);
            }
        }
    }

    void CompareState(const GeneratedFeature& feature, INode* node) {
        auto* const theirs = ARV_GC_FEATURE_NODE(m_aravis.Node(feature.name));
        const EAccessMode mode = node->GetAccessMode();
        EXPECT_EQ(mode == NI, !feature.implemented);
        EXPECT_EQ(mode == NI || mode == NA, !feature.implemented || !feature.available);
        EXPECT_EQ(arv_gc_feature_node_is_implemented(theirs, nullptr) != FALSE, mode != NI);
        if (mode != NI) {
            EXPECT_EQ(arv_gc_feature_node_is_available(theirs, nullptr) != FALSE, mode != NA);
        }
        EXPECT_STREQ(node->GetToolTip().c_str(), arv_gc_feature_node_get_tooltip(theirs));
        EXPECT_STREQ(node->GetDescription().c_str(), arv_gc_feature_node_get_description(theirs));
    }

    void CompareValue(const GeneratedFeature& feature, INode* node) {
        ArvGcNode* const theirs = m_aravis.Node(feature.name);
        GError* error = nullptr;
        switch (feature.kind) {
        case FeatureKind::Integer:
            EXPECT_EQ(CIntegerPtr(node)->GetValue(),
                      arv_gc_integer_get_value(ARV_GC_INTEGER(theirs), &error));
            if (CRegisterPtr(node) == nullptr && CIntegerPtr(node)->GetMax() < 1000000) {
                EXPECT_EQ(CIntegerPtr(node)->GetMin(),
                          arv_gc_integer_get_min(ARV_GC_INTEGER(theirs), &error));
                EXPECT_EQ(CIntegerPtr(node)->GetMax(),
                          arv_gc_integer_get_max(ARV_GC_INTEGER(theirs), &error));
            }
            break;
        case FeatureKind::Float:
            EXPECT_DOUBLE_EQ(CFloatPtr(node)->GetValue(),
                             arv_gc_float_get_value(ARV_GC_FLOAT(theirs), &error));
            break;
        case FeatureKind::Enumeration:
            EXPECT_STREQ(CEnumerationPtr(node)->ToString().c_str(),
                         arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(theirs), &error));
            EXPECT_EQ(CEnumerationPtr(node)->GetIntValue(),
                      arv_gc_enumeration_get_int_value(ARV_GC_ENUMERATION(theirs), &error));
            CompareEntries(CEnumerationPtr(node), ARV_GC_ENUMERATION(theirs));
            break;
        case FeatureKind::Boolean:
            EXPECT_EQ(CBooleanPtr(node)->GetValue(),
                      arv_gc_boolean_get_value(ARV_GC_BOOLEAN(theirs), &error) != FALSE);
            break;
        case FeatureKind::String:
            EXPECT_STREQ(CStringPtr(node)->GetValue().c_str(),
                         arv_gc_string_get_value(ARV_GC_STRING(theirs), &error));
            break;
        case FeatureKind::Register: {
            EXPECT_EQ(CRegisterPtr(node)->GetLength(),
                      static_cast<std::int64_t>(arv_gc_register_get_length(ARV_GC_REGISTER(theirs), &error)));
            EXPECT_EQ(CRegisterPtr(node)->GetAddress(), static_cast<std::int64_t>(arv_gc_register_get_address(
                                                            ARV_GC_REGISTER(theirs), &error)));
            break;
        }
        case FeatureKind::Command:
            break;
        }
        EXPECT_EQ(error, nullptr) << error->message;
        g_clear_error(&error);
    }

    void CompareEntries(const CEnumerationPtr& ours, ArvGcEnumeration* theirs) {
        StringList_t symbols;
        ours->GetSymbolics(symbols);
        guint count = 0;
        const char** const names = arv_gc_enumeration_dup_available_string_values(theirs, &count, nullptr);
        ASSERT_EQ(symbols.size(), count);
        for (guint i = 0; i < count; ++i) {
            EXPECT_STREQ(symbols[i].c_str(), names[i]);
        }
        g_free(names);
    }

    GeneratedCamera m_camera;
    MemoryPort m_port;
    AravisMemoryDevice m_aravis;
    CNodeMapRef m_map{"Device"};
};

TEST_P(AravisAgreement, OnEveryValueOfAGeneratedCamera) {
    CompareAll();
}

TEST_P(AravisAgreement, OnWhatOthersWriteAndOnTheBytesOfEachWrite) {
    MemoryPort theirPort(m_camera.memory);
    const AravisMemoryDevice other(m_camera.xml, theirPort);
    std::mt19937 random(5);
    int written = 0;
    for (const GeneratedFeature& feature : m_camera.features) {
        SCOPED_TRACE(feature.name);
        INode* const node = m_map._GetNode(feature.name.c_str());
        if (!IsWritable(node->GetAccessMode()) || !feature.implemented || !feature.available) {
            continue;
        }
        GError* error = nullptr;
        ArvGcNode* const theirs = other.Node(feature.name);
        if (feature.kind == FeatureKind::Integer) {
            const CIntegerPtr integer(node);
            const std::int64_t step = integer->GetInc();
            const std::int64_t value = integer->GetMin() + step * static_cast<std::int64_t>(random() % 50);
            if (value > integer->GetMax()) {
                continue;
            }
            integer->SetValue(value);
            arv_gc_integer_set_value(ARV_GC_INTEGER(theirs), value, &error);
        } else if (feature.kind == FeatureKind::Float) {
            const double value = static_cast<double>(random() % 40) + 0.5;
            CFloatPtr(node)->SetValue(value);
            arv_gc_float_set_value(ARV_GC_FLOAT(theirs), value, &error);
        } else if (feature.kind == FeatureKind::Enumeration) {
            StringList_t symbols;
            CEnumerationPtr(node)->GetSymbolics(symbols);
            const std::string symbol = symbols[random() % symbols.size()].c_str();
            CEnumerationPtr(node)->FromString(symbol.c_str());
            arv_gc_enumeration_set_string_value(ARV_GC_ENUMERATION(theirs), symbol.c_str(), &error);
        } else if (feature.kind == FeatureKind::Boolean) {
            const bool value = random() % 2 == 0;
            CBooleanPtr(node)->SetValue(value);
            arv_gc_boolean_set_value(ARV_GC_BOOLEAN(theirs), value ? TRUE : FALSE, &error);
        } else if (feature.kind == FeatureKind::String) {
            CStringPtr(node)->SetValue("another text");
            arv_gc_string_set_value(ARV_GC_STRING(theirs), "another text", &error);
        } else if (feature.kind == FeatureKind::Command) {
            CCommandPtr(node)->Execute();
            arv_gc_command_execute(ARV_GC_COMMAND(theirs), &error);
        } else {
            continue;
        }
        EXPECT_EQ(error, nullptr) << error->message;
        g_clear_error(&error);
        ++written;
    }
    EXPECT_GT(written, 300);
    EXPECT_EQ(m_port.Load(0, m_camera.memory.size()), theirPort.Load(0, m_camera.memory.size()));
    CompareAll();
}

INSTANTIATE_TEST_SUITE_P(Order, AravisAgreement, testing::Bool(), [](const auto& tested) {
    return std::string(tested.param ? "BigEndian" : "LittleEndian");
});

} // namespace
