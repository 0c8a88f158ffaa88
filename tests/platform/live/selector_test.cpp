#include "CameraSelector.h"

#include "Records.h"

#include <gmock/gmock.h>

using live::DeviceRecord;
using live::SelectCamera;
using live_test::Gige;
using live_test::Usb;
using testing::HasSubstr;

namespace {

bool AllFree(const DeviceRecord&) {
    return true;
}
bool NoneFree(const DeviceRecord&) {
    return false;
}

const std::vector<DeviceRecord>& Cameras() {
    static const std::vector<DeviceRecord> cameras = {
        Gige("10.0.0.11", "S1", "left", "10.0.0.1", 1),
        Gige("10.0.0.12", "S2", "right", "10.0.0.1", 2),
        Usb("U3", "top"),
        Gige("10.0.0.14", "2", "twin", "10.0.0.1", 4),
        Gige("10.0.0.15", "S5", "twin", "10.0.0.1", 5),
    };
    return cameras;
}

struct Named {
    const char* selector;
    size_t index;
};

class SelectorNames : public testing::TestWithParam<Named> {};

TEST_P(SelectorNames, OneCamera) {
    const live::Selection selection = SelectCamera(Cameras(), GetParam().selector, NoneFree);
    EXPECT_EQ(selection.error, "");
    EXPECT_FALSE(selection.remote);
    EXPECT_EQ(live::TitleOf(selection.device), live::TitleOf(Cameras()[GetParam().index]));
}

INSTANTIATE_TEST_SUITE_P(Table, SelectorNames,
                         testing::Values(Named{"10.0.0.12", 1}, Named{"0C:1D:AA:BB:00:02", 1},
                                         Named{"0c-1d-aa-bb-00-01", 0}, Named{"S5", 4}, Named{"U3", 2},
                                         Named{"left", 0}, Named{"top", 2}, Named{"1", 0}, Named{"3", 2},
                                         Named{"5", 4},
                                         // A serial number that is also a place in the list: the camera's own
                                         // name wins.
                                         Named{"2", 3}));

TEST(Selector, WithoutANameTheFirstFreeOne) {
    const auto free = [](const DeviceRecord& device) { return live::SerialOf(device) == "U3"; };
    EXPECT_EQ(live::SerialOf(SelectCamera(Cameras(), "", free).device), "U3");
    EXPECT_EQ(live::SerialOf(SelectCamera(Cameras(), "", AllFree).device), "S1");
}

TEST(Selector, WithoutANameAndAllInUseTheFirstSoThatOpeningItTellsWhy) {
    EXPECT_EQ(live::SerialOf(SelectCamera(Cameras(), "", NoneFree).device), "S1");
}

TEST(Selector, NothingInSight) {
    EXPECT_THAT(SelectCamera({}, "", AllFree).error, HasSubstr("no camera found"));
    EXPECT_THAT(SelectCamera({}, "", AllFree).error, HasSubstr("hint"));
}

TEST(Selector, UnknownNamesAndNumbersOutsideTheList) {
    for (const char* selector : {"nobody", "0", "6", "-1", "1x", "s1"})
        EXPECT_THAT(SelectCamera(Cameras(), selector, AllFree).error, HasSubstr("(5 in sight)")) << selector;
}

TEST(Selector, AnAddressThatIsNotListedIsARemoteCamera) {
    const live::Selection selection = SelectCamera(Cameras(), "172.16.0.9", AllFree);
    EXPECT_EQ(selection.error, "");
    EXPECT_TRUE(selection.remote);
    EXPECT_EQ(selection.device.nTLayerType, static_cast<uint32_t>(OV_TLAYER_GIGE));
    EXPECT_EQ(selection.device.transport.gige.currentIp, live_test::Ip("172.16.0.9"));
    EXPECT_EQ(live::ModelOf(selection.device), "");
}

TEST(Selector, TwoCamerasByOneNameAreNamed) {
    const std::string error = SelectCamera(Cameras(), "twin", AllFree).error;
    EXPECT_THAT(error, HasSubstr("several"));
    EXPECT_THAT(error, HasSubstr("10.0.0.14"));
    EXPECT_THAT(error, HasSubstr("0C:1D:AA:BB:00:05"));
}

TEST(Selector, OneCameraOnTwoInterfacesIsTakenWhereItsSubnetFits) {
    const std::vector<DeviceRecord> cameras = {Gige("10.0.0.11", "S1", "", "192.168.7.1"),
                                               Gige("10.0.0.11", "S1", "", "10.0.0.1")};
    const live::Selection selection = SelectCamera(cameras, "S1", AllFree);
    EXPECT_EQ(selection.error, "");
    EXPECT_EQ(selection.device.transport.gige.hostInterface, live_test::Ip("10.0.0.1"));
    EXPECT_THAT(selection.note, HasSubstr("several interfaces"));
}

TEST(Selector, AForeignSubnetIsSaid) {
    const live::Selection selection = SelectCamera({Gige("10.0.9.11", "S1")}, "S1", AllFree);
    EXPECT_EQ(selection.error, "");
    EXPECT_THAT(selection.note, HasSubstr("not in the subnet of the interface 10.0.0.1"));
}

} // namespace
