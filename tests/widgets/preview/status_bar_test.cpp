#include "Common/QLocalCfg.h"
#include "UI/Controls/Look.h"
#include "UI/Controls/QCheckBoxEx.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QStatusLabel.h"
#include "UI/MainWindow/QPrevStatusBar.h"
#include "UI/MainWindow/QStatusItemSelectWidget.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>
#include <set>

namespace {

// The panel and the bar, put together as in the window.
class StatusItems : public testing::Test {
protected:
    void SetUp() override {
        QLocalCfg::ReleaseInstance();
        QLocalCfg::SetDirectory(m_folder.path());
    }
    void TearDown() override {
        m_bar.reset();
        m_panel.reset();
        QLocalCfg::ReleaseInstance();
        QLocalCfg::SetDirectory({});
    }

    void Build(int flags) {
        QLocalCfg::Instance()->SetStatusShowFlage(flags);
        m_panel = std::make_unique<QStatusItemSelectWidget>();
        m_bar = std::make_unique<QPrevStatusBar>([this](int item) { return m_panel->IsItemChecked(item); });
        QObject::connect(m_panel.get(), &QStatusItemSelectWidget::SigItemToggled, m_bar.get(),
                         &QPrevStatusBar::OnItemSelectWidgetToggled);
    }
    std::set<int> Shown() const {
        std::set<int> shown;
        for (int item = 0; item < kStatusItems; ++item) {
            if (!m_bar->Item(item)->isHidden())
                shown.insert(item);
        }
        return shown;
    }
    std::set<int> Checked() const {
        std::set<int> checked;
        for (int item = 0; item <= kAllStatusItems; ++item) {
            if (m_panel->Box(item)->isChecked())
                checked.insert(item);
        }
        return checked;
    }
    void Click(int item) { m_panel->Box(item)->click(); }
    static int Flags() { return QLocalCfg::Instance()->GetStatusShowFlage(); }

    QTemporaryDir m_folder;
    std::unique_ptr<QStatusItemSelectWidget> m_panel;
    std::unique_ptr<QPrevStatusBar> m_bar;
};

using Items = std::set<int>;
const Items kAllItems{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};

TEST_F(StatusItems, TheFirstStartShowsFourItemsOfAFrameCamera) {
    Build(79);
    m_bar->UpdateStatsBar(true);
    m_bar->SetLineCamera(false);
    EXPECT_EQ(Shown(),
              (Items{kStatusAcquisitionRate, kStatusImageNumber, kStatusResolution, kStatusPacketsLost}));
    EXPECT_EQ(Checked(), (Items{0, 1, 2, 4, 6}));
    EXPECT_FALSE(m_bar->ExpandButton()->isHidden());
}

TEST_F(StatusItems, ALineCameraHasALineRate) {
    Build(79);
    m_panel->SetLineCamera(true);
    m_bar->SetLineCamera(true);
    m_bar->UpdateStatsBar(true);
    EXPECT_EQ(Shown(), (Items{0, 1, 2, 4, 6}));
    EXPECT_FALSE(m_panel->Box(kStatusLineRate)->isHidden());
    m_panel->SetLineCamera(false);
    m_bar->SetLineCamera(false);
    EXPECT_EQ(Shown(), (Items{1, 2, 4, 6}));
    EXPECT_TRUE(m_panel->Box(kStatusLineRate)->isHidden());
}

TEST_F(StatusItems, EveryItemHasItsBit) {
    const int bits[kStatusItems] = {0, 1, 2, 4, 3, 5, 6, 7, 8, 9, 10, 11, 12};
    for (int item = 0; item < kStatusItems; ++item) {
        Build(1 << bits[item]);
        EXPECT_EQ(Checked(), Items{item});
        Build(0);
        Click(item);
        EXPECT_EQ(Flags(), 1 << bits[item]) << item;
    }
}

TEST_F(StatusItems, AllNeedsEveryBit) {
    Build(0x1FFF);
    EXPECT_TRUE(m_panel->Box(kAllStatusItems)->isChecked());
    for (int bit = 0; bit < kStatusItems; ++bit) {
        Build(0x1FFF & ~(1 << bit));
        EXPECT_FALSE(m_panel->Box(kAllStatusItems)->isChecked()) << bit;
    }
}

TEST_F(StatusItems, UncheckingABoxUnchecksAllAndTheLastOneChecksItAgain) {
    Build(0x1FFF);
    m_bar->UpdateStatsBar(true);
    m_bar->SetLineCamera(false);
    Click(kStatusZoom);
    EXPECT_FALSE(m_panel->Box(kAllStatusItems)->isChecked());
    EXPECT_EQ(Shown().count(kStatusZoom), 0U);
    EXPECT_EQ(Flags(), 0x1FFF & ~(1 << 11));
    Click(kStatusZoom);
    EXPECT_TRUE(m_panel->Box(kAllStatusItems)->isChecked());
    EXPECT_EQ(Shown().count(kStatusZoom), 1U);
}

TEST_F(StatusItems, AHiddenLineRateBoxDoesNotCount) {
    Build(0x1FFE & ~(1 << 12));
    Click(kStatusTemperature);
    EXPECT_TRUE(m_panel->Box(kAllStatusItems)->isChecked());
    Build(0x1FFE & ~(1 << 12));
    m_panel->SetLineCamera(true);
    Click(kStatusTemperature);
    EXPECT_FALSE(m_panel->Box(kAllStatusItems)->isChecked());
}

TEST_F(StatusItems, UncheckingAllUnchecksEverything) {
    Build(0x1FFF);
    m_bar->UpdateStatsBar(false);
    m_bar->UpdateStatsBar(true);
    Click(kAllStatusItems);
    EXPECT_TRUE(Checked().empty());
    EXPECT_TRUE(Shown().empty());
    EXPECT_EQ(Flags(), 0);
    Click(kAllStatusItems);
    EXPECT_EQ(Flags(), 0x1FFF);
    EXPECT_EQ(Shown().size(), 12U) << "no line rate on a frame camera";
}

TEST_F(StatusItems, OpeningThePanelWorksAllOut) {
    Build(0x1FFE);
    m_panel->UpdateCheckState();
    EXPECT_TRUE(m_panel->Box(kAllStatusItems)->isChecked()) << "the line rate doesn't count";
    Build(0x1FFE);
    m_panel->SetLineCamera(true);
    m_panel->UpdateCheckState();
    EXPECT_FALSE(m_panel->Box(kAllStatusItems)->isChecked());
    Build(0x1FFF);
    Click(kAllStatusItems);
    m_panel->UpdateCheckState(); // deliberate: "All" is remembered whichever way it was turned
    EXPECT_EQ(Checked().size(), 14U);
}

TEST_F(StatusItems, AskedForNumbersOutside) {
    Build(0x1FFF);
    EXPECT_FALSE(m_panel->IsItemChecked(-1));
    EXPECT_FALSE(m_panel->IsItemChecked(14));
    EXPECT_FALSE(m_panel->IsItemChecked(kStatusLineRate));
    EXPECT_TRUE(m_panel->IsItemChecked(kAllStatusItems));
    m_panel->SetItemVisible(99, true);
    m_bar->OnItemSelectWidgetToggled(14, false);
    m_bar->OnItemSelectWidgetToggled(-1, false);
    EXPECT_EQ(Shown(), kAllItems) << "all show until the first update";
}

TEST_F(StatusItems, IdleTexts) {
    Build(79);
    const char* texts[kStatusItems] = {"LineRate: --Hz",    "AcquisitionRate: --fps",
                                       "Image: --",         "BW: --",
                                       "Resolution: --x--", "Error: --",
                                       "LostPacket: --",    "DisplayRate: --",
                                       "Location: --,--",   "RGB: --",
                                       "YUV: --",           "Zoom: --%",
                                       "Temperature: --"};
    for (int item = 0; item < kStatusItems; ++item)
        EXPECT_EQ(m_bar->Item(item)->text(), texts[item]);
    m_bar->SetRecvFrameNum(2517);
    m_bar->SetRGBInfo(1, 2, 3);
    m_bar->SetYUVInfo(4, 5, 6);
    EXPECT_EQ(m_bar->Item(kStatusImageNumber)->text(), "Image:2517");
    EXPECT_EQ(m_bar->Item(kStatusRgb)->text(), "RGB: 1 2 3");
    EXPECT_EQ(m_bar->Item(kStatusYuv)->text(), "YUV: 4 5 6");
    m_bar->ResetStatusBarInfo();
    EXPECT_EQ(m_bar->Item(kStatusImageNumber)->text(), "Image: --");
}

TEST_F(StatusItems, AStoppedStreamLeavesTheRowEmpty) {
    Build(0x1FFF);
    m_bar->UpdateStatsBar(true);
    m_bar->UpdateStatsBar(false);
    EXPECT_TRUE(Shown().empty());
    EXPECT_TRUE(m_bar->ExpandButton()->isHidden());
    for (int item = 0; item < kStatusItems; ++item)
        EXPECT_EQ(m_bar->Item(item)->isEnabled(), item == kStatusAcquisitionRate) << item;
}

TEST_F(StatusItems, TheHiddenFlagIsAskedFromTheRight) {
    Build(0x1FFF);
    const int order[kStatusItems] = {12, 11, 10, 9, 8, 7, 6, 5, 2, 3, 4, 1, 0};
    for (int i = 0; i < kStatusItems; ++i) {
        m_bar->SetLineCamera(true);
        m_bar->SetAllStatusItemVisible(true);
        m_bar->Item(order[i])->hide();
        for (int j = 0; j < kStatusItems; ++j)
            EXPECT_EQ(m_bar->IsStatusLabelVisiable(j), j == i);
    }
    EXPECT_FALSE(m_bar->IsStatusLabelVisiable(13));
}

TEST_F(StatusItems, TheButtonTellsItsPress) {
    Build(79);
    m_bar->UpdateStatsBar(true);
    m_bar->show();
    QSignalSpy pressed(m_bar.get(), &QPrevStatusBar::SigItemSelectBtnPressed);
    QTest::mouseClick(m_bar->ExpandButton(), Qt::LeftButton);
    EXPECT_EQ(pressed.count(), 1);
    QSignalSpy sub(m_bar.get(), &QPrevStatusBar::SigSubViewBtnPressed);
    m_bar->OnBtnSubView();
    EXPECT_EQ(sub.count(), 1);
}

// All items, in a window of usual size with the docks at the left: no value is cut.
TEST_F(StatusItems, AllValuesAreSeenInAWindowOfUsualSize) {
    static const bool look = (Look::Apply(*qApp), true); // the widths are those of its face
    Q_UNUSED(look)
    Look::Apply(*qApp);
    Build(0x1FFF);
    m_bar->UpdateStatsBar(true);
    m_bar->SetLineCamera(false);
    const std::pair<int, QString> texts[] = {
        {kStatusAcquisitionRate, "AcquisitionRate:30.00fps"},
        {kStatusImageNumber, "Image:2517"},
        {kStatusBandwidth, "BW:997.1Mbps"},
        {kStatusResolution, "Resolution: 1920 * 1080"},
        {kStatusErrors, "Error: 0"},
        {kStatusPacketsLost, "LostPacket: 0"},
        {kStatusDisplayRate, "DisplayRate:30.00fps"},
        {kStatusLocation, "Locate: 909, 531"},
        {kStatusRgb, "RGB: 20 180 235"},
        {kStatusYuv, "YUV: 120 90 235"},
        {kStatusZoom, "Zoom: 100%"},
        {kStatusTemperature, "Temperature: 41.5"},
    };
    for (const auto& [item, text] : texts)
        m_bar->Item(item)->setText(text);
    m_bar->resize(1303 - 272, 25);
    m_bar->show();
    QCoreApplication::processEvents();
    for (const auto& [number, text] : texts) {
        const QStatusLabel& item = *m_bar->Item(number);
        EXPECT_TRUE(item.GetShownText().endsWith(text.mid(text.indexOf(':')))) << text.toStdString();
        EXPECT_LE(item.geometry().right(), m_bar->width());
        EXPECT_GE(item.width(), item.minimumSizeHint().width()) << text.toStdString();
    }
}

TEST_F(StatusItems, HeightsAsInTheDrawing) {
    Build(79);
    EXPECT_EQ(m_bar->height(), 25);
    EXPECT_EQ(m_bar->Item(1)->height(), 20);
    EXPECT_EQ(m_bar->ExpandButton()->size(), QSize(16, 16));
    EXPECT_EQ(m_panel->size(), QSize(172, 500));
    EXPECT_EQ(m_bar->palette().color(QPalette::Window), QColor(236, 244, 244));
}

} // namespace
