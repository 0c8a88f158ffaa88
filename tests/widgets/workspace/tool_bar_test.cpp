#include "UI/MainWindow/QOrvToolBar.h"

#include "Common/CLanguageSwitch.h"
#include "UI/Controls/Look.h"
#include "UI/Controls/QImageButton.h"
#include "WorkspaceFixture.h"
#include "support/Places.h"
#include "support/TextFit.h"

#include <QImage>
#include <QMainWindow>
#include <QPainter>
#include <QSignalSpy>
#include <algorithm>
#include <functional>
#include <ostream>
#include <set>

using testing::ElementsAre;
using testing::IsEmpty;
using workspace::CameraStage;

namespace {

using Numbers = std::set<int>;

constexpr int kButtons[] = {21, 22, 0, 23, 2, 3, 4, 5}; // in their order on the bar

class ToolBar : public workspace::WorkspaceFixture {
protected:
    void SetUp() override {
        WorkspaceFixture::SetUp();
        window = std::make_unique<QMainWindow>();
        bar = new QOrvToolBar(window.get());
        window->addToolBar(Qt::TopToolBarArea, bar);
        window->resize(800, 200);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
    void TearDown() override {
        window.reset();
        WorkspaceFixture::TearDown();
    }

    Numbers Enabled() const {
        Numbers numbers;
        for (const int number : kButtons)
            if (bar->button(number)->isEnabled())
                numbers.insert(number);
        return numbers;
    }
    std::string Tip(int number) const { return bar->button(number)->toolTip().toStdString(); }
    bool IsLit(int number) const { return bar->button(number)->property("lit").toBool(); }
    // With the bar behind it.
    QImage Picture(int number) const {
        const QImageButton* const button = bar->button(number);
        return bar->grab({button->mapTo(bar, QPoint(0, 0)), button->size()}).toImage();
    }
    // Whether the button shows this picture of btn2, over whatever ground it has.
    bool Shows(int number, const QString& picture) const {
        const QImage shown = Picture(number);
        const QImage wanted(":/ORV/Resources/btn2/" + picture + ".png");
        const QPoint corner((shown.width() - wanted.width()) / 2, (shown.height() - wanted.height()) / 2);
        QImage expected(wanted.size(), QImage::Format_RGB32);
        expected.fill(shown.pixelColor(shown.width() / 2, 3));
        QPainter(&expected).drawImage(0, 0, wanted);
        int worst = 0;
        for (int y = 0; y < wanted.height(); ++y)
            for (int x = 0; x < wanted.width(); ++x) {
                const QColor a = shown.pixelColor(corner + QPoint(x, y));
                const QColor b = expected.pixelColor(x, y);
                worst = std::max({worst, std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                                  std::abs(a.blue() - b.blue())});
            }
        return !wanted.isNull() && worst <= 4;
    }

    std::unique_ptr<QMainWindow> window;
    QOrvToolBar* bar = nullptr;
};

TEST_F(ToolBar, StandsInItsOrderAndSize) {
    EXPECT_EQ(bar->height(), 44);
    EXPECT_FALSE(bar->isMovable());
    EXPECT_EQ(bar->windowTitle(), "Control Toolbar");
    int right = 0;
    for (const int number : kButtons) {
        QImageButton* const button = bar->button(number);
        ASSERT_NE(button, nullptr) << number;
        EXPECT_EQ(button->size(), QSize(44, 32)) << number;
        EXPECT_EQ(button->focusPolicy(), Qt::NoFocus) << number;
        const int left = button->mapTo(bar, QPoint(0, 0)).x();
        EXPECT_GT(left, right) << number;
        right = left + button->width();
    }
    EXPECT_LT(right, bar->width()) << "all in sight";
    for (const int none : {-1, 1, 6, 7, 8, 20, 24, 36, 37})
        EXPECT_EQ(bar->button(none), nullptr) << none;
}

TEST_F(ToolBar, LinesPartTheGroups) {
    std::vector<int> lines;
    for (const QWidget* line : bar->findChildren<QWidget*>("toolLine")) {
        EXPECT_EQ(line->size(), QSize(1, 20));
        EXPECT_TRUE(line->isVisible());
        lines.push_back(line->mapTo(bar, QPoint(0, 0)).x());
    }
    ASSERT_EQ(lines.size(), 2U);
    const auto leftOf = [this](int number) { return bar->button(number)->mapTo(bar, QPoint(0, 0)).x(); };
    EXPECT_GT(lines[0], leftOf(21));
    EXPECT_LT(lines[0], leftOf(22));
    EXPECT_GT(lines[1], leftOf(23));
    EXPECT_LT(lines[1], leftOf(2));
}

TEST_F(ToolBar, AClickTellsTheNumberOfTheAction) {
    QSignalSpy clicked(bar, &QOrvToolBar::SigToolBarBtnClicked);
    bar->SetToolbarBtnEnable(true);
    for (const int number : kButtons)
        QTest::mouseClick(bar->button(number), Qt::LeftButton);
    std::vector<int> told;
    for (const QList<QVariant>& arguments : clicked)
        told.push_back(arguments[0].toInt());
    EXPECT_THAT(told, ElementsAre(21, 22, 0, 23, 2, 3, 4, 5));
}

TEST_F(ToolBar, AClickChangesNoFaceByItself) {
    bar->SetToolbarBtnEnable(true);
    for (const int number : kButtons) {
        const std::string tip = Tip(number);
        QTest::mouseClick(bar->button(number), Qt::LeftButton);
        EXPECT_EQ(Tip(number), tip);
        EXPECT_FALSE(IsLit(number)) << number;
        EXPECT_FALSE(bar->button(number)->IsChecked()) << number;
    }
}

TEST_F(ToolBar, AGuardedButtonLetsASecondClickGo) {
    QSignalSpy clicked(bar, &QOrvToolBar::SigToolBarBtnClicked);
    bar->SetToolbarBtnEnable(true);
    bar->button(21)->ControlClickEvent();
    QTest::mouseClick(bar->button(21), Qt::LeftButton);
    EXPECT_EQ(clicked.count(), 0);
    ASSERT_TRUE(devices::WaitFor([&] {
        QTest::mouseClick(bar->button(21), Qt::LeftButton);
        return clicked.count() == 1;
    }));
}

TEST_F(ToolBar, AllIsOffAtFirst) {
    EXPECT_THAT(Enabled(), IsEmpty());
}

struct EnableRow {
    const char* name;
    int type;
    CameraStage stage;
    Numbers enabled;
    bool connected;
    bool live;
};

std::ostream& operator<<(std::ostream& out, const EnableRow& row) {
    return out << row.name;
}

const EnableRow kEnableRows[] = {
    {"GigEClosed", 5, workspace::kClosed, {21}, false, false},
    {"GigEConnected", 5, workspace::kConnected, {21, 22}, true, false},
    {"GigEConnectedWithFrame", 5, workspace::kConnectedWithFrame, {21, 22, 0, 2, 3, 4, 5}, true, false},
    {"GigEGrabbing", 5, workspace::kGrabbing, {21, 22, 0, 23, 2, 3, 4, 5}, true, true},
    {"UsbClosed", 6, workspace::kClosed, {21}, false, false},
    {"UsbConnected", 6, workspace::kConnected, {21, 22}, true, false},
    {"UsbConnectedWithFrame", 6, workspace::kConnectedWithFrame, {21, 22, 0, 2, 3, 4, 5}, true, false},
    {"UsbGrabbing", 6, workspace::kGrabbing, {21, 22, 0, 23, 2, 3, 4, 5}, true, true},
};

class ToolBarRule : public ToolBar, public testing::WithParamInterface<EnableRow> {};

TEST_P(ToolBarRule, EnablesAndShowsItsFaces) {
    const EnableRow& row = GetParam();
    const long id = AddCamera();
    Bring(id, row.stage);
    // Whatever was before makes no difference.
    for (const bool before : {false, true}) {
        bar->SetToolbarBtnEnable(before);
        bar->UpdateConnectBtnImg(before);
        bar->UpdateContinousShotBtn(before);
        bar->UpdateToolBarBtn(row.type, static_cast<int>(id));
        EXPECT_EQ(Enabled(), row.enabled);
        EXPECT_EQ(Tip(21), row.connected ? "Disconnect Camera" : "Connect Camera");
        EXPECT_EQ(Tip(22), row.live ? "Stop Live View" : "Start Acquisition");
        EXPECT_EQ(IsLit(21), row.connected);
        EXPECT_EQ(IsLit(22), row.live);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, ToolBarRule, testing::ValuesIn(kEnableRows),
                         [](const auto& row) { return row.param.name; });

TEST_F(ToolBar, WithoutACameraNothingIsEnabledAndNoFaceChanges) {
    const long id = AddCamera();
    Bring(id, workspace::kGrabbing);
    for (const int type : {-1, 0, 1, 2, 3, 4, 7}) {
        bar->UpdateToolBarBtn(5, static_cast<int>(id));
        bar->UpdateToolBarBtn(type, static_cast<int>(id));
        EXPECT_THAT(Enabled(), IsEmpty()) << type;
        EXPECT_EQ(Tip(21), "Disconnect Camera");
        EXPECT_EQ(Tip(22), "Stop Live View");
    }
}

TEST_F(ToolBar, ACameraThatHasGoneChangesNothing) {
    const long id = AddCamera();
    Bring(id, workspace::kConnected);
    bar->UpdateToolBarBtn(5, static_cast<int>(id));
    bar->UpdateToolBarBtn(5, static_cast<int>(id) + 1000);
    bar->UpdateToolBarBtn(6, -1);
    EXPECT_EQ(Enabled(), (Numbers{21, 22}));
    EXPECT_EQ(Tip(21), "Disconnect Camera");
}

TEST_F(ToolBar, ZoomButtonsTogetherAndAlone) {
    bar->SetToolbarZoomBtnEnable(true);
    EXPECT_EQ(Enabled(), (Numbers{2, 3, 4, 5}));
    bar->SetToolBarZoomInAndOut(false, true);
    EXPECT_EQ(Enabled(), (Numbers{3, 4, 5}));
    bar->SetToolBarZoomInAndOut(true, false);
    EXPECT_EQ(Enabled(), (Numbers{2, 4, 5}));
    bar->SetToolbarZoomBtnEnable(false);
    EXPECT_THAT(Enabled(), IsEmpty());
}

TEST_F(ToolBar, RotationHasNoButtonToEnable) {
    bar->SetRotateBtnEnable(true);
    EXPECT_THAT(Enabled(), IsEmpty());
    bar->SetToolbarBtnEnable(true);
    bar->SetRotateBtnEnable(false);
    EXPECT_EQ(Enabled().size(), 8U);
}

TEST_F(ToolBar, EveryButtonShowsThePicturesOfItsSet) {
    const std::pair<int, const char*> sets[] = {{21, "connect"}, {22, "play"},   {0, "capture"},
                                                {23, "record"},  {2, "enlarge"}, {3, "narrow"},
                                                {4, "fit"},      {5, "actual"}};
    for (const auto& [number, set] : sets) {
        bar->button(number)->setEnabled(true);
        EXPECT_TRUE(Shows(number, set)) << set;
        bar->button(number)->setEnabled(false);
        EXPECT_TRUE(Shows(number, QString(set) + "_dis")) << set;
        EXPECT_FALSE(Shows(number, set)) << set;
    }
}

TEST_F(ToolBar, OnAndOffOfTheFourFaces) {
    struct Face {
        int number;
        void (QOrvToolBar::*show)(bool);
        const char* off;
        const char* on;
        const char* tipOff;
        const char* tipOn;
    };
    const Face faces[] = {
        {21, &QOrvToolBar::UpdateConnectBtnImg, "connect", "connect_sel", "Connect Camera",
         "Disconnect Camera"},
        {22, &QOrvToolBar::UpdateContinousShotBtn, "play", "stop_sel", "Start Acquisition", "Stop Live View"},
        {0, &QOrvToolBar::UpdateCapturingBtnImg, "capture", "capture_sel", "Capture and Save",
         "Stop Capturing"},
        {23, &QOrvToolBar::UpdateRecordBtnImg, "record", "record_sel", "Start Recording", "Stop Recording"},
    };
    bar->SetToolbarBtnEnable(true);
    for (const Face& face : faces) {
        for (int round = 0; round < 2; ++round) {
            std::invoke(face.show, bar, true);
            EXPECT_EQ(Tip(face.number), face.tipOn);
            EXPECT_TRUE(Shows(face.number, face.on)) << face.on;
            EXPECT_TRUE(IsLit(face.number));
            const QImage lit = Picture(face.number);
            EXPECT_EQ(lit.pixelColor(22, 3), Look::Colour("accentTint")) << face.on;
            std::invoke(face.show, bar, false);
            EXPECT_EQ(Tip(face.number), face.tipOff);
            EXPECT_TRUE(Shows(face.number, face.off)) << face.off;
            EXPECT_FALSE(IsLit(face.number));
        }
    }
}

TEST_F(ToolBar, AToolTipIsTheNameForAssistiveTechnology) {
    for (const int number : kButtons)
        EXPECT_EQ(bar->button(number)->accessibleName(), bar->button(number)->toolTip()) << number;
}

TEST_F(ToolBar, TextsFollowTheLanguageAndKeepTheirState) {
    bar->UpdateConnectBtnImg(true);
    bar->UpdateRecordBtnImg(true);
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(*bar), IsEmpty());
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(*bar), IsEmpty());
    CLanguageSwitch language(KOLT_BIN_DIR);
    language.SwitchToChinese();
    // At once, without waiting for the event that the change posts.
    bar->RefreshWidgetInfo();
    EXPECT_EQ(Tip(21), "断开相机");
    EXPECT_EQ(Tip(22), "开始采集");
    EXPECT_EQ(Tip(23), "停止录像");
    EXPECT_EQ(Tip(0), "抓图并保存");
    EXPECT_EQ(bar->windowTitle(), "工具栏");
    language.SwitchToEnglish();
    QCoreApplication::processEvents();
    EXPECT_EQ(Tip(21), "Disconnect Camera");
    EXPECT_EQ(bar->windowTitle(), "Control Toolbar");
}

} // namespace
