// Detection rounds: what is told, and what the registry holds afterwards.
#include "DetectFixture.h"

#include "Camera/WalkByIndex.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <pthread.h>

namespace devices {
namespace {

using Detect = DetectFixture;

TEST_F(Detect, NewCamerasInTheOrderOfTheLibrary) {
    EXPECT_EQ(Round({GigeRecord(), UsbRecord()}), (Events{"new 1", "new 2", "finished"}));
    ASSERT_EQ(Total(), 2);
    EXPECT_EQ(Camera(1)->GetTLayerType(), 1u);
    EXPECT_EQ(Camera(1)->GetIP(), Ip(20));
    EXPECT_FALSE(Camera(1)->GetRemoteCamera());
    EXPECT_EQ(Camera(2)->GetTLayerType(), 4u);
    EXPECT_EQ(doubles.LastTransportMask(), 5u);
}

TEST_F(Detect, TheSameCamerasAgainAreUpdated) {
    Round({GigeRecord(), UsbRecord()});
    EXPECT_EQ(Round({UsbRecord(), GigeRecord()}), (Events{"update 1", "update 2", "finished"}));
    EXPECT_EQ(Total(), 2);
}

TEST_F(Detect, AChangedAddressIsAnUpdateOfTheSameCamera) {
    Round({GigeRecord()});
    Gige moved;
    moved.ip = Ip(99);
    EXPECT_EQ(Round({GigeRecord(moved)}), (Events{"update 1", "finished"}));
    EXPECT_EQ(Camera(1)->GetIP(), Ip(99)) << "the new record is stored";
}

TEST_F(Detect, ACameraOnAnotherHostInterfaceIsANewOne) {
    Round({GigeRecord()});
    Gige moved;
    moved.host = Ip(2);
    EXPECT_EQ(Round({GigeRecord(moved)}), (Events{"delete 1", "new 2", "finished"}));
}

TEST_F(Detect, OneCameraSeenByTwoInterfacesIsTwoCameras) {
    Gige second;
    second.host = Ip(2);
    EXPECT_EQ(Round({GigeRecord(), GigeRecord(second)}), (Events{"new 1", "new 2", "finished"}));
    EXPECT_EQ(Round({GigeRecord(), GigeRecord(second)}), (Events{"update 1", "update 2", "finished"}));
}

TEST_F(Detect, NoCameraAtAll) {
    EXPECT_EQ(Round({}), (Events{"finished"}));
    Round({GigeRecord(), UsbRecord()});
    EXPECT_EQ(Round({}), (Events{"delete 1", "delete 2", "finished"}));
    EXPECT_EQ(Total(), 0);
}

TEST_F(Detect, AVanishedCameraThatComesBackHasANewId) {
    Round({GigeRecord()});
    Round({});
    EXPECT_EQ(Round({GigeRecord()}), (Events{"new 2", "finished"}));
}

TEST_F(Detect, TheCurrentCameraSurvivesItsVanishing) {
    Round({GigeRecord(), UsbRecord()});
    QCameraContainer::Instance()->SetCurrentCameraID(Id(1));
    EXPECT_EQ(Round({}), (Events{"delete 2", "finished"}));
    ASSERT_EQ(Total(), 1);
    EXPECT_EQ(Round({}), (Events{"finished"})) << "and is looked at again";
    EXPECT_EQ(Round({GigeRecord()}), (Events{"update 1", "finished"}));
    QCameraContainer::Instance()->SetCurrentCameraID(-1);
    EXPECT_EQ(Round({}), (Events{"delete 1", "finished"})) << "once it is closed it goes";
}

TEST_F(Detect, ABootLoaderIsNoCamera) {
    Usb boot;
    boot.endpoint = 0;
    EXPECT_EQ(Round({UsbRecord(boot)}), (Events{"finished"}));
    EXPECT_EQ(Round({UsbRecord()}), (Events{"new 1", "finished"})) << "now it is up";
    EXPECT_EQ(Round({UsbRecord(boot)}), (Events{"delete 1", "finished"}));
}

TEST_F(Detect, UsbCamerasWithoutASerialNumberAreOne) {
    Usb one, other;
    one.serial = other.serial = "";
    other.model = "U3-2";
    EXPECT_EQ(Round({UsbRecord(one), UsbRecord(other)}), (Events{"new 1", "finished"}));
    EXPECT_EQ(Round({UsbRecord(other)}), (Events{"update 1", "finished"}));
}

TEST_F(Detect, AFailedEnumerationLeavesAllAsItWas) {
    Round({GigeRecord()});
    doubles.QueueResult("OV_CC_EnumDevices", OV_STATUS_RESOURCE);
    EXPECT_EQ(Round({UsbRecord()}), (Events{"error 2"}));
    EXPECT_EQ(Total(), 1);
    EXPECT_EQ(Round({GigeRecord()}), (Events{"update 1", "finished"}));
}

TEST_F(Detect, NoRegistry) {
    const FailAllocationsOf failing(sizeof(QCameraContainer));
    EXPECT_EQ(Round({GigeRecord()}), (Events{"error 1"}));
}

TEST_F(Detect, NoMemoryForACamera) {
    {
        const FailAllocationsOf failing(sizeof(QCamera));
        EXPECT_EQ(Round({GigeRecord()}), (Events{"new none", "finished"}));
    }
    EXPECT_EQ(Total(), 0);
    EXPECT_EQ(Round({GigeRecord()}), (Events{"new 2", "finished"})) << "the next round picks it up";
}

TEST_F(Detect, TheListIsClearedBeforeEachRound) {
    Round({GigeRecord(), UsbRecord()});
    // A library that answers with success and touches nothing.
    doubles.OnCall("OV_CC_EnumDevices", [] {});
    EXPECT_EQ(Round({}), (Events{"delete 1", "delete 2", "finished"}));
}

TEST_F(Detect, AFullList) {
    std::vector<_OV_CC_DEVICE_INFO_> all;
    for (uint32_t i = 0; i < 300; ++i) {
        Gige camera;
        camera.mac = i;
        all.push_back(GigeRecord(camera));
    }
    EXPECT_EQ(Round(all).size(), 257u) << "the library lists 256 at most";
    EXPECT_EQ(Total(), 256);
}

TEST_F(Detect, AListThatClaimsTooMuch) {
    _OV_CC_DEVICE_INFO_LIST_ list{};
    auto info = GigeRecord();
    list.deviceCount = 0xFFFFFFFF;
    list.devices[3] = &info; // null pointers around it
    thread.FliterDevices(list);
    EXPECT_EQ(thread.GetDeviceVector().size(), 1);
    list.deviceCount = 3;
    thread.FliterDevices(list);
    EXPECT_TRUE(thread.GetDeviceVector().isEmpty());
}

TEST_F(Detect, DevicesKeepTheLibrarysOrder) {
    auto a = UsbRecord();
    auto b = GigeRecord();
    Usb boot;
    boot.endpoint = 0;
    auto c = UsbRecord(boot);
    _OV_CC_DEVICE_INFO_LIST_ list{3, 0, {&a, &c, &b}};
    thread.FliterDevices(list);
    ASSERT_EQ(thread.GetDeviceVector().size(), 2);
    EXPECT_EQ(thread.GetDeviceVector()[0].nTLayerType, 4u);
    EXPECT_EQ(thread.GetDeviceVector()[1].nTLayerType, 1u);
}

// --- remote cameras

class DetectRemote : public DetectFixture {
protected:
    void SetUp() override {
        DetectFixture::SetUp();
        Round({GigeRecord()});
        Camera(1)->SetRemoteCamera(true);
        Gige named;
        named.user = "far east";
        named.ip = Ip(200);
        doubles.SetDeviceInfo(GigeRecord(named));
        doubles.ForgetCalls();
    }
};

TEST_F(DetectRemote, IsAskedForItsNameAndStays) {
    EXPECT_EQ(Round({}), (Events{"name 1 far east (G001)", "finished"}));
    EXPECT_EQ(doubles.Calls(), (Events{"OV_CC_EnumDevices", "OV_CC_CreateHandleWithoutLog",
                                       "OV_CC_GetDeviceInfo", "OV_CC_DestroyHandle"}));
    EXPECT_EQ(doubles.LastHandleRecord().transport.gige.currentIp, Ip(20));
    EXPECT_EQ(Camera(1)->GetIP(), Ip(20)) << "the answer is used for the name only";
}

TEST_F(DetectRemote, ThatIsListedIsMatchedLikeAnyOther) {
    EXPECT_EQ(Round({GigeRecord()}), (Events{"update 1", "finished"}));
    EXPECT_EQ(doubles.CountOf("OV_CC_CreateHandleWithoutLog"), 0);
    EXPECT_TRUE(Camera(1)->GetRemoteCamera());
    EXPECT_EQ(Round({}), (Events{"name 1 far east (G001)", "finished"})) << "and still is a remote one";
}

TEST_F(DetectRemote, ThatGetsNoHandleEndsTheRound) {
    Round({GigeRecord(), UsbRecord()});
    doubles.QueueResult("OV_CC_CreateHandleWithoutLog", OV_STATUS_RESOURCE);
    Gige added;
    added.mac = 9;
    EXPECT_EQ(Round({GigeRecord(added)}), Events{}) << "nothing is deleted, nothing added, nobody is told";
    EXPECT_EQ(Total(), 2);
}

TEST_F(DetectRemote, ThatDoesNotAnswerEndsTheRound) {
    Round({GigeRecord(), UsbRecord()});
    doubles.QueueResult("OV_CC_GetDeviceInfo", OV_STATUS_NETWORK);
    EXPECT_EQ(Round({UsbRecord()}), Events{}) << "the camera behind it isn't looked at";
    EXPECT_EQ(doubles.OpenHandles('c'), 0);
    EXPECT_EQ(Round({UsbRecord()}), (Events{"name 1 far east (G001)", "update 2", "finished"}))
        << "the next round tries again";
}

TEST_F(DetectRemote, BehindAnotherThatWasUpdated) {
    Round({GigeRecord(), UsbRecord()});
    Camera(2)->SetRemoteCamera(true);
    Camera(1)->SetRemoteCamera(false);
    doubles.QueueResult("OV_CC_GetDeviceInfo", OV_STATUS_NETWORK);
    EXPECT_EQ(Round({GigeRecord()}), (Events{"update 1"})) << "what was told before stands";
}

// --- threads

TEST_F(Detect, AStartDuringARoundIsDropped) {
    std::mutex mutex;
    std::condition_variable changed;
    bool inside = false, goOn = false;
    doubles.OnCall("OV_CC_EnumDevices", [&] {
        std::unique_lock<std::mutex> lock(mutex);
        inside = true;
        changed.notify_all();
        changed.wait(lock, [&] { return goOn; });
    });
    doubles.SetDevices({GigeRecord()});
    thread.start(QThread::InheritPriority);
    std::unique_lock<std::mutex> lock(mutex);
    ASSERT_TRUE(changed.wait_for(lock, std::chrono::seconds(20), [&] { return inside; }));
    thread.start(QThread::InheritPriority);
    EXPECT_TRUE(thread.isRunning());
    thread.ExitThread(); // looked at by nobody
    goOn = true;
    changed.notify_all();
    lock.unlock();
    ASSERT_TRUE(thread.wait(20000));
    EXPECT_EQ(Take(), (Events{"new 1", "finished"}));
    EXPECT_EQ(doubles.CountOf("OV_CC_EnumDevices"), 1);
}

TEST_F(Detect, DestructionWaitsForTheRound) {
    auto* own = new QDeviceDetectThread;
    std::mutex mutex;
    std::condition_variable changed;
    bool inside = false;
    std::atomic<bool> left{false};
    doubles.OnCall("OV_CC_EnumDevices", [&] {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            inside = true;
        }
        changed.notify_all();
    });
    QObject::connect(
        own, &QDeviceDetectThread::SigDetectDevFinished, own, [&left] { left = true; }, Qt::DirectConnection);
    own->start();
    {
        std::unique_lock<std::mutex> lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, std::chrono::seconds(20), [&] { return inside; }));
    }
    delete own;
    EXPECT_TRUE(left);
}

TEST_F(Detect, TheThreadHasAName) {
    char name[32] = {};
    doubles.OnCall("OV_CC_EnumDevices", [&name] { pthread_getname_np(pthread_self(), name, sizeof name); });
    Round({});
    EXPECT_STREQ(name, "kolt-detect");
}

// The main thread deletes cameras while rounds find them again: a round may end early (error 1), and nothing
// is used after its end (the sanitizers look).
TEST_F(Detect, CamerasAreDeletedDuringRounds) {
    std::vector<_OV_CC_DEVICE_INFO_> all;
    for (uint32_t i = 0; i < 30; ++i) {
        Gige camera;
        camera.mac = i;
        all.push_back(GigeRecord(camera));
    }
    doubles.SetDevices(all);
    QCameraContainer* registry = QCameraContainer::Instance();
    for (int round = 0; round < 30; ++round) {
        thread.start();
        while (thread.isRunning()) {
            registry->DelCameraByIndex(round % 7);
            const CCameraRef camera = CCameraRef::ByIndex(3);
            if (camera)
                camera->GetOVCCDevInfo();
        }
        thread.wait();
        for (const std::string& event : Take())
            EXPECT_TRUE(event == "error 1" || event.rfind("error", 0) != 0) << event;
    }
    Round(all);
    EXPECT_EQ(Total(), 30);
}

TEST_F(Detect, TheNumberOfCamerasIsReadAnewAtEachStep) {
    Round({GigeRecord(), UsbRecord()});
    Camera(1)->SetRemoteCamera(true);
    // While the remote camera is asked all cameras go, so that the walk ends behind it.
    doubles.OnCall("OV_CC_GetDeviceInfo", [] {
        QCameraContainer::Instance()->DelCameraByIndex(1);
        QCameraContainer::Instance()->DelCameraByIndex(0);
    });
    doubles.SetDeviceInfo(GigeRecord());
    EXPECT_EQ(Round({}), (Events{"name 1 Maker GE-1 (G001)", "finished"}));
}

// --- the walk itself, over a list that changes under it

struct WalkRow {
    const char* what;
    std::vector<int> counts;  // what the list claims to hold, one step after the other
    std::vector<int> entries; // 0: gone
    int stopAt;               // the entry at which the visitor has enough
    WalkEnd end;
    std::vector<int> visited;
};

TEST(WalkByIndex, Rows) {
    const WalkRow rows[] = {
        {"an empty list", {0}, {}, 0, WalkEnd::All, {}},
        {"all", {3}, {5, 6, 7}, 0, WalkEnd::All, {5, 6, 7}},
        {"the visitor has enough", {3}, {5, 6, 7}, 6, WalkEnd::Stopped, {5, 6}},
        {"one goes after the count was read", {3}, {5, 0, 7}, 0, WalkEnd::Missing, {5}},
        {"the first goes", {1}, {0}, 0, WalkEnd::Missing, {}},
        {"the list shrinks", {3, 3, 1}, {5, 6, 7}, 0, WalkEnd::All, {5, 6}},
        {"the list grows", {1, 2}, {5, 6, 7}, 0, WalkEnd::All, {5, 6}},
    };
    for (const WalkRow& row : rows) {
        size_t step = 0;
        std::vector<int> visited;
        const WalkEnd end = WalkByIndex([&] { return row.counts[std::min(step++, row.counts.size() - 1)]; },
                                        [&](int index) { return row.entries[static_cast<size_t>(index)]; },
                                        [&](int entry) {
                                            visited.push_back(entry);
                                            return entry != row.stopAt;
                                        });
        EXPECT_EQ(end, row.end) << row.what;
        EXPECT_EQ(visited, row.visited) << row.what;
    }
}

} // namespace
} // namespace devices
