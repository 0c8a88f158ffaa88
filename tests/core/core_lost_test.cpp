// Cameras that vanish, in every state.
#include "core/CoreFixture.h"

#include "Common/QLocalCfg.h"
#include "support/HeldUp.h"

#include <QDirIterator>
#include <QImage>
#include <thread>

namespace core {
namespace {

struct Lost {
    std::atomic<int> calls{0};
};

class LostCamera : public Fixture {
protected:
    void Watch() {
        camera->SetCameraDisconnectCallBackInfo([](void* user, long) { ++static_cast<Lost*>(user)->calls; },
                                                &lost);
    }
    void Kill() {
        vcam::Faults dead;
        dead.silent = true;
        device->SetFaults(dead);
    }
    void ExpectToldOnceAndClosedAtOnce() {
        EXPECT_TRUE(WaitUntil([&] { return lost.calls == 1; }));
        const auto start = heldUp.mark();
        camera->CloseCamera();
        EXPECT_LT(heldUp.tookSince(start), 3000);
        EXPECT_EQ(lost.calls, 1);
        EXPECT_EQ(camera->GetCameraState(), 0);
    }
    Lost lost;
    kolt::test::HeldUp heldUp;
};

TEST_F(LostCamera, WhileConnected) {
    ASSERT_NO_FATAL_FAILURE(Connect());
    Watch();
    Kill();
    ExpectToldOnceAndClosedAtOnce();
}

TEST_F(LostCamera, WhileStreaming) {
    ASSERT_NO_FATAL_FAILURE(Stream());
    const Window window(320, 240);
    camera->SetPlayWnd(window.Id());
    Watch();
    ASSERT_TRUE(WaitForDrawn(2));
    Kill();
    EXPECT_TRUE(WaitUntil([&] { return lost.calls == 1; }));
    EXPECT_EQ(camera->GetCameraState(), 2) << "until the owner closes";
    ExpectToldOnceAndClosedAtOnce();
}

TEST_F(LostCamera, WhileRecording) {
    ASSERT_NO_FATAL_FAILURE(Stream());
    Watch();
    const QByteArray file = folder.filePath("lost.raw").toUtf8();
    ASSERT_EQ(camera->StartRecordRawData(file.constData(), folder.path().toUtf8().constData()), 0);
    ASSERT_TRUE(WaitUntil([&] { return camera->GetCounters().recorded >= 5; }));
    Kill();
    EXPECT_TRUE(WaitUntil([&] { return lost.calls == 1; }));
    EXPECT_EQ(camera->StopRecord(), 0);
    QFile written(file);
    EXPECT_EQ(written.size(), camera->GetCounters().recorded * 640 * 480) << "whole frames";
    ExpectToldOnceAndClosedAtOnce();
}

TEST_F(LostCamera, WhilePicturesAreTaken) {
    QLocalCfg::Instance()->SetDataOutputFolder(folder.path());
    QLocalCfg::Instance()->SetImgSaveFormat(0);
    QLocalCfg::Instance()->SetImgSaveFileNameIndexType(1);
    ASSERT_NO_FATAL_FAILURE(Stream());
    Watch();
    camera->SetImgSave();
    ASSERT_TRUE(WaitUntil([&] { return camera->GetCounters().imagesSaved >= 3; }));
    Kill();
    ExpectToldOnceAndClosedAtOnce();
    EXPECT_FALSE(camera->IsCapturing());
    EXPECT_EQ(owner.messages, 0) << owner.last;
    QDirIterator pictures(folder.filePath("core"), QDir::Files);
    int64_t count = 0;
    for (; pictures.hasNext(); ++count)
        EXPECT_EQ(QImage(pictures.next()).size(), QSize(640, 480)) << pictures.fileName().toStdString();
    EXPECT_EQ(count, camera->GetCounters().imagesSaved) << "whole pictures";
}

TEST_F(LostCamera, WhileARegisterIsRead) {
    ASSERT_NO_FATAL_FAILURE(Connect());
    Watch();
    std::atomic<bool> stop{false};
    std::thread reader([&] {
        long long value = 0;
        while (!stop)
            camera->GetIntegerNodePropertyValue("PayloadSize", &value);
    });
    Kill();
    EXPECT_TRUE(WaitUntil([&] { return lost.calls == 1; }));
    stop = true;
    reader.join();
    ExpectToldOnceAndClosedAtOnce();
}

TEST_F(LostCamera, AndBackAgain) {
    ASSERT_NO_FATAL_FAILURE(Stream());
    Watch();
    Kill();
    ExpectToldOnceAndClosedAtOnce();
    device->SetFaults({});
    EXPECT_TRUE(WaitUntil([&] { return camera->OpenCamera() == 0; }));
    EXPECT_EQ(camera->OnStartGettingFrame(true), 0);
    EXPECT_TRUE(WaitForFrames(3));
}

TEST_F(LostCamera, DeniedAccess) {
    StartDevice([](vcam::Config& c) { c.faults.denyControl = true; });
    SetRecord();
    EXPECT_EQ(camera->OpenCamera(), -103);
    EXPECT_EQ(camera->GetCameraState(), 0);
    device->SetFaults({});
    EXPECT_EQ(camera->OpenCamera(), 0) << "once the other host has let go";
}

} // namespace
} // namespace core
