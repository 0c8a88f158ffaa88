// The virtual camera over the network, through our node map and through Aravis' own.
#include <arv.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Base/GCException.h"
#include "GenApi/GenApi.h"
#include "VirtualCamera.h"
#include "support/LoopbackAddress.h"
#include "support/NodeMapWalk.h"

namespace {

using namespace GenApi_3_0;

// The camera's registers through Aravis' GVCP client.
class DevicePort : public IPort {
public:
    explicit DevicePort(ArvDevice* device) : m_device(device) {}
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void* buffer, std::int64_t address, std::int64_t length) override {
        GError* error = nullptr;
        if (arv_device_read_memory(m_device, static_cast<guint64>(address), static_cast<guint32>(length),
                                   buffer, &error) == FALSE) {
            Throw(error);
        }
    }
    void Write(const void* buffer, std::int64_t address, std::int64_t length) override {
        GError* error = nullptr;
        if (arv_device_write_memory(m_device, static_cast<guint64>(address), static_cast<guint32>(length),
                                    const_cast<void*>(buffer), &error) == FALSE) {
            Throw(error);
        }
    }

private:
    [[noreturn]] static void Throw(GError* error) {
        const std::string text = error != nullptr ? error->message : "unknown";
        g_clear_error(&error);
        throw RUNTIME_EXCEPTION(text);
    }

    ArvDevice* m_device;
};

class VirtualCameraAgreement : public testing::TestWithParam<vcam::Model> {
protected:
    void SetUp() override {
        vcam::Config config;
        config.address = kolt::test::LoopbackAddress(40);
        config.model = GetParam();
        m_camera = std::make_unique<vcam::VirtualCamera>(config);
        m_camera->Start();
        GInetAddress* const host = g_inet_address_new_from_string("127.0.0.1");
        GInetAddress* const camera = g_inet_address_new_from_string(m_camera->Address().c_str());
        GError* error = nullptr;
        m_device = arv_gv_device_new(host, camera, &error);
        g_object_unref(host);
        g_object_unref(camera);
        ASSERT_NE(m_device, nullptr) << error->message;
        m_port = std::make_unique<DevicePort>(m_device);
        m_map._LoadXMLFromString(m_camera->Xml().c_str());
        ASSERT_TRUE(m_map._Connect(m_port.get(), "Device"));
    }
    void TearDown() override {
        m_map._Destroy();
        g_clear_object(&m_device);
    }

    std::unique_ptr<vcam::VirtualCamera> m_camera;
    ArvDevice* m_device = nullptr;
    std::unique_ptr<DevicePort> m_port;
    CNodeMapRef m_map{"Device"};
};

TEST_P(VirtualCameraAgreement, OnTheValuesOfAllFeatures) {
    NodeList_t nodes;
    m_map._GetNodes(nodes);
    int compared = 0;
    for (INode* node : nodes) {
        const std::string name = node->GetName().c_str();
        ArvGcNode* const theirs = arv_gc_get_node(arv_device_get_genicam(m_device), name.c_str());
        // Clocks, temperatures and counters of commands differ between two reads.
        if (!node->IsFeature() || theirs == nullptr || !IsReadable(node->GetAccessMode()) ||
            name.find("Timestamp") != std::string::npos || name.find("Temperature") != std::string::npos ||
            name.find("Vcam") == 0) {
            continue;
        }
        SCOPED_TRACE(name);
        GError* error = nullptr;
        bool same = true;
        switch (node->GetPrincipalInterfaceType()) {
        case intfIInteger:
            same = CIntegerPtr(node)->GetValue() == arv_gc_integer_get_value(ARV_GC_INTEGER(theirs), &error);
            break;
        case intfIFloat:
            EXPECT_DOUBLE_EQ(CFloatPtr(node)->GetValue(),
                             arv_gc_float_get_value(ARV_GC_FLOAT(theirs), &error));
            break;
        case intfIBoolean:
            same = CBooleanPtr(node)->GetValue() ==
                   (arv_gc_boolean_get_value(ARV_GC_BOOLEAN(theirs), &error) != FALSE);
            break;
        case intfIEnumeration: {
            const char* const symbol =
                arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(theirs), &error);
            EXPECT_STREQ(CEnumerationPtr(node)->ToString().c_str(), symbol);
            break;
        }
        case intfIString: {
            const char* const text = arv_gc_string_get_value(ARV_GC_STRING(theirs), &error);
            EXPECT_STREQ(CStringPtr(node)->GetValue().c_str(), text);
            break;
        }
        default:
            continue;
        }
        EXPECT_TRUE(same);
        EXPECT_EQ(error, nullptr) << error->message;
        g_clear_error(&error);
        ++compared;
    }
    EXPECT_GT(compared, 15);
}

TEST_P(VirtualCameraAgreement, OnAWrittenWidth) {
    const CIntegerPtr width = m_map._GetNode("Width");
    const std::int64_t value = width->GetMin() + width->GetInc();
    width->SetValue(value);
    EXPECT_EQ(arv_device_get_integer_feature_value(m_device, "Width", nullptr), value);
    EXPECT_THROW(width->SetValue(value + 1), GenICam_3_0::OutOfRangeException);
    gint64 minimum = 0;
    gint64 maximum = 0;
    arv_device_get_integer_feature_bounds(m_device, "Width", &minimum, &maximum, nullptr);
    EXPECT_EQ(width->GetMin(), minimum);
    EXPECT_EQ(width->GetMax(), maximum);
}

TEST_P(VirtualCameraAgreement, AWalkOverTheNetworkEndsWithoutASurprise) {
    const support::WalkReport report = support::WalkNodeMap(*m_map._Ptr);
    for (const std::string& surprise : report.surprises) {
        ADD_FAILURE() << surprise;
    }
    EXPECT_GT(report.nodes, 30U);
}

std::string NameOf(vcam::Model model) {
    static const char* const names[] = {"Colour", "Mono", "LineScan", "Small"};
    return names[static_cast<std::size_t>(model)];
}

INSTANTIATE_TEST_SUITE_P(Models, VirtualCameraAgreement,
                         testing::Values(vcam::Model::Colour, vcam::Model::Mono, vcam::Model::LineScan,
                                         vcam::Model::Small),
                         [](const auto& tested) { return NameOf(tested.param); });

} // namespace
