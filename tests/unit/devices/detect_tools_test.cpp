// The access probe, which no round calls.
#include "DetectFixture.h"

namespace devices {
namespace {

class AccessProbe : public DetectFixture {
protected:
    void SetUp() override {
        DetectFixture::SetUp();
        SetHostInterfaceSource([] { return QVector<_HOST_INTERFACE_>{Interface("eth0", "A", {0})}; });
        thread.InitHostVector();
        SetHostInterfaceSource({});
    }
    bool Probe(uint32_t ip) {
        const auto info = GigeRecord();
        return thread.OpenForCamState(&info, ip);
    }
};

TEST_F(AccessProbe, Rows) {
    struct Row {
        const char* what;
        uint32_t ip;
        uint32_t accessible; // a boolean in the low byte
        uint32_t open;
        bool answer;
        int opens;
    };
    const Row rows[] = {
        {"accessible, able", Ip(20), 1, 0, true, 0},
        {"accessible, not able", Ip(256), 1, 0, false, 0},
        {"neither", Ip(256), 0, 0, false, 0},
        {"held by somebody else", Ip(20), 0, OV_STATUS_ACCESS_DENIED, true, 1},
        {"opens all the same", Ip(20), 0, 0, false, 1},
        {"fails otherwise", Ip(20), 0, OV_STATUS_BUSY, false, 1},
        {"only the low byte of the boolean counts", Ip(20), 0xFF00, OV_STATUS_BUSY, false, 1},
    };
    for (const Row& row : rows) {
        doubles.ForgetCalls();
        doubles.SetResult("OV_CC_IsDeviceAccessible", row.accessible);
        doubles.SetResult("OV_CC_OpenDevice", row.open);
        EXPECT_EQ(Probe(row.ip), row.answer) << row.what;
        EXPECT_EQ(doubles.CountOf("OV_CC_OpenDevice"), row.opens) << row.what;
        EXPECT_EQ(doubles.OpenHandles('c'), 0) << row.what;
    }
}

TEST_F(AccessProbe, NoRecordOrNoHandle) {
    EXPECT_FALSE(thread.OpenForCamState(nullptr, Ip(20)));
    doubles.SetResult("OV_CC_CreateHandle", OV_STATUS_RESOURCE);
    EXPECT_FALSE(Probe(Ip(20)));
    EXPECT_EQ(doubles.CountOf("OV_CC_IsDeviceAccessible"), 0);
}

} // namespace
} // namespace devices
