#include "StatusText.h"

#include "Camera/Boundary/OvStatus.h"

#include <gmock/gmock.h>

#include <set>

using testing::HasSubstr;
using testing::Not;

namespace {

constexpr uint32_t all[] = {OV_STATUS_INVALID_HANDLE,
                            OV_STATUS_NOT_SUPPORTED,
                            OV_STATUS_BUFFER_FULL,
                            OV_STATUS_CALL_ORDER,
                            OV_STATUS_INVALID_PARAMETER,
                            OV_STATUS_RESOURCE,
                            OV_STATUS_NO_DATA,
                            OV_STATUS_PRECONDITION,
                            OV_STATUS_VERSION,
                            OV_STATUS_UNKNOWN,
                            OV_STATUS_GENICAM_GENERIC,
                            OV_STATUS_GENICAM_ARGUMENT,
                            OV_STATUS_GENICAM_RANGE,
                            OV_STATUS_GENICAM_PROPERTY,
                            OV_STATUS_GENICAM_RUNTIME,
                            OV_STATUS_GENICAM_LOGICAL,
                            OV_STATUS_GENICAM_ACCESS,
                            OV_STATUS_GENICAM_TIMEOUT,
                            OV_STATUS_GENICAM_DYNAMIC_CAST,
                            OV_STATUS_GVCP_NOT_IMPLEMENTED,
                            OV_STATUS_INVALID_ADDRESS,
                            OV_STATUS_WRITE_PROTECTED,
                            OV_STATUS_ACCESS_DENIED,
                            OV_STATUS_BUSY,
                            OV_STATUS_PACKET,
                            OV_STATUS_NETWORK,
                            OV_STATUS_IP_CONFLICT};

TEST(StatusText, EveryStatusHasAMeaningOfItsOwn) {
    std::set<std::string> meanings;
    for (const uint32_t status : all) {
        EXPECT_THAT(live::MeaningOf(status), Not(HasSubstr("does not name"))) << std::hex << status;
        EXPECT_TRUE(meanings.insert(live::MeaningOf(status)).second) << std::hex << status;
    }
}

TEST(StatusText, AnUnknownStatusIsShownAsItIs) {
    const std::string text = live::Describe({"OV_CC_OpenDevice", 0x80000005});
    EXPECT_THAT(text, HasSubstr("does not name"));
    EXPECT_THAT(text, HasSubstr("0x80000005"));
    EXPECT_THAT(text, HasSubstr("--version"));
}

TEST(StatusText, AccessDeniedTellsWhoMayHoldIt) {
    const std::string text = live::Describe({"OV_CC_OpenDevice", OV_STATUS_ACCESS_DENIED});
    EXPECT_THAT(text,
                testing::StartsWith("OV_CC_OpenDevice: access denied: another program or host has control"));
    EXPECT_THAT(text, HasSubstr("0x80000203"));
    EXPECT_THAT(text, HasSubstr("hint: end the other KOLT CAPTURE or kolt_live"));
    EXPECT_THAT(text, HasSubstr("heartbeat"));
}

TEST(StatusText, HintsOfTheCommonFaults) {
    EXPECT_THAT(live::HintFor(OV_STATUS_NETWORK), HasSubstr("subnet"));
    EXPECT_THAT(live::HintFor(OV_STATUS_NO_DATA), HasSubstr("trigger"));
    EXPECT_THAT(live::HintFor(OV_STATUS_IP_CONFLICT), HasSubstr("another address"));
    EXPECT_THAT(live::HintFor(OV_STATUS_RESOURCE), HasSubstr("ulimit"));
}

TEST(StatusText, WithoutAHintThereIsNoHintLine) {
    EXPECT_THAT(live::Describe({"X", OV_STATUS_UNKNOWN}), Not(HasSubstr("hint")));
}

TEST(StatusText, ANullPointerIsNoStatus) {
    EXPECT_EQ(live::Describe({"VR_CreateHandle", 0}),
              "VR_CreateHandle: failed, and the library gives no reason");
}

TEST(Failure, IsFalseForSuccess) {
    EXPECT_FALSE(static_cast<bool>(live::Failure{}));
    EXPECT_TRUE(static_cast<bool>(live::Failure{"X", 0}));
}

} // namespace
