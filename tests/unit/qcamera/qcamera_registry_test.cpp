#include "QCameraFixture.h"

#include "Camera/QCameraContainer.h"

#include <thread>

namespace {

class Registry : public testing::Test {
protected:
    void TearDown() override { QCameraContainer::ReleaseInstance(); }

    QCamera* Add(long id, uint32_t ip = 0) {
        QCamera* camera = QCamera::NewInstance();
        camera->SetCameraID(id);
        _OV_CC_DEVICE_INFO_ info{};
        info.nTLayerType = OV_TLAYER_GIGE;
        info.transport.gige.currentIp = ip;
        camera->SetOVCCDevInfo(info);
        container->AddCamera(camera);
        return camera;
    }

    QCameraContainer* container = QCameraContainer::Instance();
};

TEST_F(Registry, FindsById) {
    QCamera* first = Add(1);
    QCamera* second = Add(2);
    EXPECT_EQ(container->GetTotalCameraNum(), 2);
    EXPECT_EQ(container->GetCamera(1), first);
    EXPECT_EQ(container->GetCamera(2), second);
    EXPECT_EQ(container->GetCamera(3), nullptr);
    EXPECT_EQ(container->GetCamera(-1), nullptr);
    container->AddCamera(nullptr);
    EXPECT_EQ(container->GetTotalCameraNum(), 2);
}

TEST_F(Registry, ANegativeIdIsNeverFound) {
    Add(-1);
    EXPECT_EQ(container->GetCamera(-1), nullptr);
}

TEST_F(Registry, FindsByIndexInTheOrderOfAddition) {
    QCamera* first = Add(5);
    QCamera* second = Add(4);
    EXPECT_EQ(container->GetCameraByIndex(0), first);
    EXPECT_EQ(container->GetCameraByIndex(1), second);
    EXPECT_EQ(container->GetCameraByIndex(2), nullptr);
    EXPECT_EQ(container->GetCameraByIndex(-1), nullptr);
}

TEST_F(Registry, FindsByAddress) {
    QCamera* camera = Add(1, 0x0A000001);
    Add(2, 0);
    EXPECT_EQ(container->GetCameraByIP(0x0A000001), camera);
    EXPECT_EQ(container->GetCameraByIP(0x0A000002), nullptr);
    EXPECT_EQ(container->GetCameraByIP(0), nullptr) << "0 is no address";
}

TEST_F(Registry, Deletes) {
    QCamera* first = Add(1);
    Add(2);
    Add(3);
    container->DelCamera(first);
    EXPECT_EQ(container->GetCamera(1), nullptr);
    container->DelCameraByID(2);
    EXPECT_EQ(container->GetTotalCameraNum(), 1);
    container->DelCameraByID(77);
    container->DelCameraByIndex(5);
    container->DelCameraByIndex(-1);
    EXPECT_EQ(container->GetTotalCameraNum(), 1);
    container->DelCameraByIndex(0);
    EXPECT_EQ(container->GetTotalCameraNum(), 0);
    container->DelCamera(nullptr);
}

TEST_F(Registry, ACallersReferenceKeepsADeletedCamera) {
    QCamera* camera = Add(1);
    camera->AddRef();
    container->DelCameraByID(1);
    EXPECT_EQ(camera->GetCameraID(), 1) << "still there";
    camera->ReleaseRef();
}

TEST_F(Registry, CurrentCamera) {
    EXPECT_EQ(container->GetCurrentCameraID(), -1);
    container->SetCurrentCameraID(12);
    EXPECT_EQ(container->GetCurrentCameraID(), 12);
    QCameraContainer::ReleaseInstance();
    QCameraContainer::ReleaseInstance();
    container = QCameraContainer::Instance();
    EXPECT_EQ(container->GetCurrentCameraID(), -1);
}

TEST_F(Registry, UseFromTwoThreads) {
    std::thread detection([this] {
        for (long id = 1; id <= 200; ++id) {
            Add(id);
            if (id > 20)
                container->DelCameraByID(id - 20);
        }
    });
    for (int i = 0; i < 2000; ++i)
        container->GetCamera(i % 200);
    detection.join();
    EXPECT_EQ(container->GetTotalCameraNum(), 20);
}

} // namespace
