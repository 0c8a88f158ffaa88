// A working day with each model of the virtual camera: what the core makes of cameras with many and with few
// features.
#include "core/CoreFixture.h"

#include "Common/QLocalCfg.h"

#include <QFile>
#include <QImage>
#include <ostream>

namespace core {
namespace {

struct ModelRow {
    const char* name;
    vcam::Model model;
    uint32_t scanType; // all ones: the camera does not tell
    bool triggers;
    bool lines; // tells a line rate
};

void PrintTo(const ModelRow& row, std::ostream* out) {
    *out << row.name;
}

class Models : public Fixture, public testing::WithParamInterface<ModelRow> {
protected:
    void ExpectWhatTheModelTells() {
        EXPECT_EQ(camera->GetCamScanType(), GetParam().scanType);
        int mode = 7;
        EXPECT_EQ(camera->GetTriggerMode(mode), GetParam().triggers ? 1 : 0);
        EXPECT_EQ(mode, GetParam().triggers ? 0 : 7) << "a missing node leaves the value alone";
        int rate = 0;
        EXPECT_EQ(camera->GetActualLineRate(rate), GetParam().lines ? 1 : 0);
        EXPECT_EQ(rate > 0, GetParam().lines);
        EXPECT_GE(camera->GetCameraPacketSize(), 576);
        EXPECT_FALSE(camera->GetCameraModelName().isEmpty());
        EXPECT_EQ(camera->OnTimerSoftwareTrig(), GetParam().triggers ? 1 : 0);
    }
};

TEST_P(Models, AWholeRound) {
    StartDevice([](vcam::Config& c) { c.model = GetParam().model; });
    QLocalCfg::Instance()->SetDataOutputFolder(folder.path());
    ASSERT_NO_FATAL_FAILURE(Connect());
    ExpectWhatTheModelTells();
    const Window window(640, 480);
    ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
    camera->SetPlayWnd(window.Id());
    ASSERT_TRUE(WaitForDrawn(2));
    long long height = 0;
    ASSERT_EQ(camera->GetIntegerNodePropertyValue("Height", &height), 1);
    EXPECT_EQ(camera->GetWidth(), 640u);
    EXPECT_EQ(camera->GetHeight(), static_cast<uint32_t>(height));
    EXPECT_EQ(camera->GetFrameSize(), 640u * camera->GetHeight());
    EXPECT_TRUE(WaitUntil([&] { return camera->GetActualFrameRate() > 0; }));
    ASSERT_TRUE(WaitUntil([&] { return camera->SaveCurrentFrame() == 0; }));
    const QByteArray picture = folder.filePath("a.bmp").toUtf8();
    ASSERT_EQ(camera->SnapPicture(picture.constData(), 0), 0);
    EXPECT_EQ(QImage(QString::fromUtf8(picture)).size(), QSize(640, static_cast<int>(height)));
    const QByteArray file = folder.filePath("a.raw").toUtf8();
    ASSERT_EQ(camera->StartRecordRawData(file.constData(), folder.path().toUtf8().constData()), 0);
    ASSERT_TRUE(WaitUntil([&] { return camera->GetCounters().recorded >= 10; }));
    ASSERT_EQ(camera->StopRecord(), 0);
    EXPECT_EQ(QFile(file).size(), camera->GetCounters().recorded * 640 * height);
    ASSERT_EQ(camera->StopGettingFrame(), 0);
    ASSERT_EQ(camera->CloseCamera(), 0);
    ASSERT_EQ(camera->OpenCamera(), 0) << "and once more";
    ExpectWhatTheModelTells();
    ASSERT_EQ(camera->CloseCamera(), 0);
}

INSTANTIATE_TEST_SUITE_P(All, Models,
                         testing::Values(ModelRow{"Colour", vcam::Model::Colour, 0, true, false},
                                         ModelRow{"Mono", vcam::Model::Mono, 0, true, false},
                                         ModelRow{"LineScan", vcam::Model::LineScan, 1, true, true},
                                         ModelRow{"Small", vcam::Model::Small, 0, false, false}),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace core
