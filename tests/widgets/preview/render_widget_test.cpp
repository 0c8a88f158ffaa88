#include "Camera/QCameraContainer.h"
#include "UI/Controls/Look.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QStaticLabel.h"
#include "UI/Controls/QStatusLabel.h"
#include "UI/Controls/SystemKind.h"
#include "UI/MainWindow/QPrevStatusBar.h"
#include "UI/MainWindow/QPrevTitleBar.h"
#include "UI/MainWindow/QPreviewWidget.h"
#include "UI/MainWindow/QRenderWidget.h"
#include "UI/MainWindow/QStatusItemSelectWidget.h"
#include "UI/MainWindow/QSubPrevWidget.h"
#include "support/TextFit.h"
#include "unit/qcamera/QCameraFixture.h"

#include <QLabel>
#include <QMainWindow>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>
#include <gmock/gmock.h>
#include <memory>

namespace {

// The render widget in a window, with a camera of the doubles in the registry.
class Rendering : public QCameraFixture {
protected:
    static void SetUpTestSuite() {
        if (qApp->styleSheet().isEmpty())
            Look::Apply(*qApp);
    }
    void SetUp() override {
        QCameraFixture::SetUp();
        QLocalCfg::Instance()->SetStatusShowFlage(0x1FFF);
        QCameraContainer::Instance()->AddCamera(camera);
        m_window = std::make_unique<QMainWindow>();
        m_render = new QRenderWidget(m_window.get());
        m_window->setCentralWidget(m_render);
        m_window->resize(800, 655); // a picture area of 800 x 600
        m_window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
        ASSERT_EQ(m_render->Preview()->size(), QSize(800, 600));
    }
    void TearDown() override {
        m_window.reset();
        QCameraContainer::ReleaseInstance();
        QCameraFixture::TearDown();
    }

    void StartView() {
        Open();
        m_render->OnCameraOpen(7);
        m_render->OnStartRender(true, 7);
        ASSERT_EQ(camera->OnStartGettingFrame(true), 0);
        m_render->OnStartRender(false, 7);
    }
    // A stream whose first picture has come.
    void ShowPicture() {
        StartView();
        PushAndWait(Frame(0x40));
        ASSERT_TRUE(QTest::qWaitFor([this] { return m_render->Preview()->Zoom().HasRaw(); }, 5000));
    }
    QString Item(int item) const { return m_render->StatusBar()->Item(item)->text(); }
    void Wheel(QPoint at, int delta) const {
        QPreviewWidget* const preview = m_render->Preview();
        QWheelEvent event(at, preview->mapToGlobal(at), {}, {0, delta}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(preview, &event);
    }
    void Counters(int64_t bytes, int64_t lost, uint32_t errors) {
        _OV_MATCH_INFO_NET_DETECT_ record{};
        record.receivedBytes = bytes;
        record.lostPackets = lost;
        record.errorCount = errors;
        doubles.SetMatchInfo(record);
    }

    std::unique_ptr<QMainWindow> m_window;
    QRenderWidget* m_render = nullptr;
};

TEST_F(Rendering, HeightsOfTheStrips) {
    EXPECT_EQ(m_render->TitleBar()->height(), 30);
    EXPECT_EQ(m_render->StatusBar()->height(), 25);
    EXPECT_TRUE(m_render->ItemSelect()->isHidden());
}

TEST_F(Rendering, AStartShowsTheNameAndGivesTheCameraTheWindow) {
    ShowPicture();
    EXPECT_EQ(m_render->TitleBar()->TitleLabel()->text(), "east");
    EXPECT_EQ(camera->GetPlayWnd(), m_render->Preview()->GetDisplayWnd()->winId());
    EXPECT_TRUE(m_render->Preview()->IsRendering());
    EXPECT_EQ(Item(kStatusResolution), "Resolution: 64 * 48");
    EXPECT_TRUE(m_render->Preview()->Zoom().IsFit());
    EXPECT_EQ(m_render->Preview()->GetDisplayWnd()->size(), QSize(800, 600));
    EXPECT_EQ(Item(kStatusZoom), "Zoom: 1250%");
    ASSERT_TRUE(doubles.WaitForCount("VR_SetDisplayRect", 1));
    EXPECT_FALSE(m_render->Preview()->GetDisplayWnd()->updatesEnabled());
}

TEST_F(Rendering, AStopLeavesNothing) {
    ShowPicture();
    m_render->OnItemSelectBtnPressed(0);
    EXPECT_FALSE(m_render->ItemSelect()->isHidden());
    camera->StopGettingFrame();
    m_render->OnStopRender();
    EXPECT_EQ(m_render->TitleBar()->TitleLabel()->text(), "");
    EXPECT_FALSE(m_render->Preview()->IsRendering());
    EXPECT_FALSE(m_render->Preview()->Zoom().HasRaw());
    EXPECT_EQ(m_render->Preview()->GetCameraID(), -1);
    EXPECT_TRUE(m_render->ItemSelect()->isHidden());
    EXPECT_TRUE(m_render->StatusBar()->Item(kStatusImageNumber)->isHidden());
    EXPECT_EQ(Item(kStatusImageNumber), "Image: --");
    EXPECT_TRUE(m_render->Preview()->GetDisplayWnd()->updatesEnabled());
}

TEST_F(Rendering, TheTickWithoutACameraDoesNothing) {
    m_render->OnTimerUpdateFrameInfo();
    m_render->OnPreviewWidgetMouseMove({1, 1});
    m_render->OnUpdateDisplayRect();
    m_render->OnDispalyModeChanged(10);
    m_render->RotateLeft();
    m_render->DisplayZoomIn();
    m_render->DisplayZoomOut();
    m_render->DisplayZoomToFit();
    m_render->DisplayResume();
    Wheel({10, 10}, 120);
    EXPECT_EQ(Item(kStatusErrors), "Error: --");
    EXPECT_EQ(Item(kStatusLocation), "Location: --,--");
}

TEST_F(Rendering, LossesAreShownFromAHundredUpward) {
    StartView();
    Counters(1 << 20, 99, 99);
    m_render->OnTimerUpdateFrameInfo();
    EXPECT_EQ(Item(kStatusErrors), "Error: 0");
    EXPECT_EQ(Item(kStatusPacketsLost), "LostPacket: 0");
    Counters(2 << 20, 100, 100);
    m_render->OnTimerUpdateFrameInfo();
    EXPECT_EQ(Item(kStatusErrors), "Error: 100");
    EXPECT_EQ(Item(kStatusPacketsLost), "LostPacket: 100");
    doubles.SetResult("OV_CC_GetAllMatchInfo", 0x80000000U);
    m_render->OnTimerUpdateFrameInfo();
    EXPECT_EQ(Item(kStatusErrors), "Error: --");
    EXPECT_EQ(Item(kStatusPacketsLost), "LostPacket: --");
}

TEST_F(Rendering, SeriousLossIsTold) {
    StartView();
    QSignalSpy serious(m_render, &QRenderWidget::SigLostPacketSerious);
    Counters(1496 * 1000, 100, 0);
    m_render->OnTimerUpdateFrameInfo();
    EXPECT_EQ(serious.count(), 0);
    Counters(1496 * 2000, 300, 0);
    m_render->OnTimerUpdateFrameInfo();
    EXPECT_EQ(serious.count(), 1);
    m_render->OnTimerUpdateFrameInfo();
    EXPECT_EQ(serious.count(), 1) << "nothing new";
}

TEST_F(Rendering, RatesAndTemperature) {
    StartView();
    m_render->OnTimerUpdateFrameInfo();
    EXPECT_EQ(Item(kStatusTemperature), "Temperature: --") << "this camera has none";
    EXPECT_TRUE(Item(kStatusAcquisitionRate).startsWith("AcquisitionRate:"));
    EXPECT_TRUE(Item(kStatusAcquisitionRate).endsWith("fps"));
    EXPECT_TRUE(Item(kStatusBandwidth).startsWith("BW:"));
    EXPECT_TRUE(Item(kStatusBandwidth).endsWith("Mbps"));
    camera->SetDisplayMode(10);
    m_render->OnTimerUpdateFrameInfo();
    EXPECT_EQ(Item(kStatusDisplayRate), "DisplayRate: --fps");
}

TEST_F(Rendering, DisabledDisplayLetsTheWindowPaint) {
    ShowPicture();
    m_render->OnDispalyModeChanged(10);
    EXPECT_TRUE(m_render->Preview()->GetDisplayWnd()->updatesEnabled());
    m_render->OnTimerUpdateFrameInfo();
    EXPECT_TRUE(m_render->Preview()->GetDisplayWnd()->updatesEnabled());
    m_render->OnDispalyModeChanged(8);
    EXPECT_FALSE(m_render->Preview()->GetDisplayWnd()->updatesEnabled());
}

TEST_F(Rendering, WheelAndButtonsZoomAndTellWhatIsPossible) {
    ShowPicture();
    QSignalSpy state(m_render, &QRenderWidget::SigZoomState);
    const int fitted = m_render->Preview()->Zoom().Index();
    Wheel({400, 300}, 120);
    EXPECT_EQ(m_render->Preview()->Zoom().Index(), fitted + 1);
    EXPECT_EQ(state.last(), (QVariantList{true, true}));
    EXPECT_EQ(doubles.LastRects().second.right, 1.0F);
    EXPECT_LT(doubles.LastRects().first.right - doubles.LastRects().first.left, 1.0F);
    m_render->DisplayZoomIn();
    EXPECT_EQ(m_render->Preview()->Zoom().Index(), fitted + 2);
    for (int i = 0; i < 40; ++i)
        m_render->DisplayZoomIn();
    EXPECT_EQ(m_render->Preview()->Zoom().Index(), 47);
    EXPECT_EQ(state.last(), (QVariantList{false, true}));
    EXPECT_EQ(Item(kStatusZoom), "Zoom: 1600%");
    Wheel({400, 300}, -120);
    EXPECT_EQ(m_render->Preview()->Zoom().Index(), 46);
    m_render->DisplayZoomToFit();
    EXPECT_EQ(state.last(), (QVariantList{true, false}));
    m_render->DisplayZoomOut();
    EXPECT_EQ(state.last(), (QVariantList{true, false}));
    m_render->DisplayResume();
    EXPECT_EQ(state.last(), (QVariantList{true, true}));
}

TEST_F(Rendering, ADragMovesThePictureInStepsOfTwentyPixels) {
    ShowPicture();
    for (int i = 0; i < 4; ++i)
        m_render->DisplayZoomIn();
    QPreviewWidget* const preview = m_render->Preview();
    const float before = preview->Zoom().Source().left;
    QTest::mousePress(preview, Qt::LeftButton, Qt::NoModifier, {400, 300});
    const auto move = [preview](QPoint to, Qt::MouseButtons buttons) {
        QMouseEvent event(QEvent::MouseMove, to, preview->mapToGlobal(to), Qt::NoButton, buttons,
                          Qt::NoModifier);
        QApplication::sendEvent(preview, &event);
    };
    move({419, 300}, Qt::LeftButton);
    EXPECT_EQ(preview->Zoom().Source().left, before);
    move({420, 300}, Qt::LeftButton);
    const float moved = preview->Zoom().Source().left;
    EXPECT_LT(moved, before);
    QTest::mouseRelease(preview, Qt::LeftButton, Qt::NoModifier, {420, 300});
    move({500, 300}, Qt::NoButton);
    EXPECT_EQ(preview->Zoom().Source().left, moved);
}

TEST_F(Rendering, ARubberBandWithCtrlIsARegionOfThePicture) {
    ShowPicture();
    QPreviewWidget* const preview = m_render->Preview();
    QSignalSpy region(preview, &QPreviewWidget::SigAutoFunctionAOI);
    QTest::mousePress(preview, Qt::LeftButton, Qt::NoModifier, {100, 125});
    QTest::keyPress(preview, Qt::Key_Control);
    QMouseEvent event(QEvent::MouseMove, QPoint(9000, 500), Qt::NoButton, Qt::LeftButton,
                      Qt::ControlModifier);
    QApplication::sendEvent(preview, &event);
    preview->SaveRegion();
    ASSERT_EQ(region.count(), 1);
    EXPECT_EQ(region.last(), (QVariantList{55, 30, 8, 10}))
        << "12.5 screen pixels each, cut at the picture's edge";
    QTest::keyRelease(preview, Qt::Key_Control);
    QTest::mouseRelease(preview, Qt::LeftButton);
}

TEST_F(Rendering, ThePixelUnderThePointerIsTold) {
    ShowPicture();
    m_render->OnPreviewWidgetMouseMove({125, 250});
    EXPECT_EQ(Item(kStatusLocation), "Locate: 10, 20");
    EXPECT_TRUE(Item(kStatusRgb).startsWith("RGB: "));
    m_window->resize(1000, 655);
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_render->Preview()->width() == 1000; }));
    m_render->OnPreviewWidgetMouseMove({10, 250});
    EXPECT_EQ(Item(kStatusLocation), "Locate: --, --") << "beside the picture";
}

TEST_F(Rendering, AResizeKeepsAFittedPictureFitted) {
    ShowPicture();
    m_window->resize(400, 355);
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_render->Preview()->size() == QSize(400, 300); }));
    EXPECT_TRUE(m_render->Preview()->Zoom().IsFit());
    EXPECT_EQ(m_render->Preview()->GetDisplayWnd()->size(), QSize(400, 300));
    m_window->resize(1200, 955);
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_render->Preview()->GetDisplayWnd()->width() == 1200; }))
        << "the window also shrinks and grows again";
}

TEST_F(Rendering, AQuarterTurnExchangesTheSides) {
    ShowPicture();
    m_render->RotateRight();
    EXPECT_EQ(m_render->Preview()->Zoom().Raw().x, 48);
    EXPECT_EQ(m_render->Preview()->Zoom().Raw().y, 64);
    EXPECT_TRUE(m_render->Preview()->Zoom().IsFit());
    m_render->RotateLeft();
    EXPECT_EQ(m_render->Preview()->Zoom().Raw().x, 64);
}

TEST_F(Rendering, FullScreenAndBack) {
    ShowPicture();
    QPreviewWidget* const preview = m_render->Preview();
    QTest::mouseDClick(preview, Qt::LeftButton);
    EXPECT_TRUE(m_render->isWindow());
    EXPECT_TRUE(m_render->windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(camera->GetPlayWnd(), preview->GetDisplayWnd()->winId());
    QTest::keyClick(preview, Qt::Key_Escape);
    EXPECT_FALSE(m_render->isWindow());
    EXPECT_TRUE(m_render->isVisible());
    EXPECT_EQ(m_window->centralWidget(), m_render);
    EXPECT_EQ(camera->GetPlayWnd(), preview->GetDisplayWnd()->winId());
    QTest::mouseDClick(preview, Qt::LeftButton);
    EXPECT_TRUE(m_render->isWindow());
    QTest::mouseDClick(preview, Qt::LeftButton);
    EXPECT_FALSE(m_render->isWindow());
    QTest::mouseDClick(preview, Qt::LeftButton);
    QTest::keyClick(m_render, Qt::Key_Escape);
    EXPECT_FALSE(m_render->isWindow());
}

TEST_F(Rendering, ADoubleClickWithoutAPictureDoesNothing) {
    QTest::mouseDClick(m_render->Preview(), Qt::LeftButton);
    EXPECT_FALSE(m_render->isWindow());
}

TEST_F(Rendering, TheButtonOpensAndClosesThePanelOverTheLowerLeftCorner) {
    ShowPicture();
    QTest::mouseClick(m_render->StatusBar()->ExpandButton(), Qt::LeftButton);
    ASSERT_TRUE(m_render->ItemSelect()->isVisible());
    EXPECT_EQ(m_render->ItemSelect()->geometry().bottomLeft(), QPoint(0, m_render->StatusBar()->y() - 1));
    QTest::mouseClick(m_render->StatusBar()->ExpandButton(), Qt::LeftButton);
    EXPECT_FALSE(m_render->ItemSelect()->isVisible());
}

TEST_F(Rendering, ThePictureGoesOnWithoutItsScreenPixelOnceThePointerRests) {
    ShowPicture();
    m_render->OnPreviewWidgetMouseMove({125, 250});
    for (int i = 0; i < 5; ++i)
        m_render->OnTimerVision();
    m_render->OnPreviewWidgetMouseMove({125, 250});
    EXPECT_EQ(Item(kStatusLocation), "Locate: 10, 20");
}

TEST_F(Rendering, TextsFitInBothLanguages) {
    StartView();
    m_render->OnSetRecord(true, true);
    m_render->OnItemSelectBtnPressed(0);
    m_window->resize(1900, 700);
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(*m_window), testing::IsEmpty());
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(*m_render->ItemSelect(), {"RGB", "YUV"}),
                testing::IsEmpty());
    const QString pictures = qEnvironmentVariable("KOLT_TEST_OUT");
    ASSERT_TRUE(QDir().mkpath(pictures));
    QTest::qWait(50); // the screen's turn
    EXPECT_TRUE(m_window->screen()
                    ->grabWindow(0, m_window->x(), m_window->y(), m_window->width(), m_window->height())
                    .save(pictures + "/preview_status.png"));
}

TEST_F(Rendering, WithoutACameraABackgroundShows) {
    const QString pictures = qEnvironmentVariable("KOLT_TEST_OUT");
    ASSERT_TRUE(QDir().mkpath(pictures));
    const QPixmap shown = m_window->grab();
    EXPECT_TRUE(shown.save(pictures + "/preview_idle.png"));
    EXPECT_FALSE(m_render->Preview()->GetDisplayWnd()->isVisible());
}

TEST(SubPreview, IsAShell) {
    QSubPrevWidget sub;
    sub.StartPreview(1);
    sub.StopPreview();
    EXPECT_EQ(QSubPrevWidget::SubDisplayThread(nullptr), nullptr);
}

struct RecordRow {
    bool record, on;
    bool shown;
    const char* text;
};

TEST(PreviewTitle, FollowsTheTable) {
    QPrevTitleBar bar;
    bar.SetTitle("Line 3 east");
    EXPECT_EQ(bar.TitleLabel()->text(), "Line 3 east");
    EXPECT_TRUE(bar.TimeLabel()->isHidden());
    const RecordRow rows[] = {{false, true, true, "Capturing..."},
                              {false, false, false, "Capturing..."},
                              {true, true, true, "00:00:00"},
                              {true, false, false, "00:00:00"}};
    for (const RecordRow& row : rows) {
        bar.SetRecordState(row.record, row.on);
        EXPECT_EQ(!bar.TimeLabel()->isHidden(), row.shown);
        EXPECT_EQ(!bar.IconLabel()->isHidden(), row.shown);
        EXPECT_EQ(bar.TimeLabel()->text(), row.text);
    }
}

TEST(PreviewTitle, TheClockCarriesAndWraps) {
    QPrevTitleBar bar;
    bar.SetRecordState(true, true);
    const auto run = [&bar](int seconds) {
        for (int i = 0; i < seconds; ++i)
            bar.OnTimerOut();
        return bar.TimeLabel()->text();
    };
    EXPECT_EQ(run(59), "00:00:59");
    EXPECT_EQ(run(1), "00:01:00");
    EXPECT_EQ(run(59 * 60), "01:00:00");
    EXPECT_EQ(run(23 * 3600 - 1), "23:59:59");
    EXPECT_EQ(run(1), "00:00:00");
    run(5);
    bar.SetRecordState(true, false);
    bar.SetRecordState(true, true);
    EXPECT_EQ(run(1), "00:00:01") << "a new recording begins at zero";
}

TEST(PreviewTitle, TheDotBlinks) {
    QPrevTitleBar bar;
    bar.SetRecordState(true, true);
    EXPECT_FALSE(bar.IconLabel()->pixmap(Qt::ReturnByValue).isNull());
    bar.OnImgTimerOut();
    EXPECT_TRUE(bar.IconLabel()->pixmap(Qt::ReturnByValue).isNull());
    bar.SetRecordState(true, false);
    EXPECT_FALSE(bar.IconLabel()->pixmap(Qt::ReturnByValue).isNull());
}

} // namespace
