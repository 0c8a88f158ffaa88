// The main window as people will see it: at the sizes of usual screens and at twice the scale, in both
// languages, without a camera, with one that is live, and with very many that have long names. The pictures
// are kept to be looked at.
#include "program/Desk.h"

#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "support/ChildProcess.h"
#include "support/Places.h"

#include <QAction>
#include <QDir>
#include <QImage>
#include <QScreen>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QtTest>
#include <cstdlib>
#include <memory>

namespace program {
namespace {

using kolt::test::NamespaceScope;
using kolt::test::NetworkNamespace;

constexpr int kMany = 40;

bool AtTwiceTheScale() {
    return qEnvironmentVariable("QT_SCALE_FACTOR") == "2";
}

class Pictures : public Desk {
protected:
    void SetUp() override {
        Desk::SetUp();
        NetworkNamespace::cable(network, "eth1", "10.1.0.1/24", m_far, "cam0", "10.1.0.2/24");
    }

    void TearDown() override {
        Desk::TearDown();
        m_devices.clear();
    }

    void Start(int number, const std::string& name) {
        vcam::Config config;
        config.interface = "cam0";
        config.address = "10.1.0." + std::to_string(10 + number);
        config.userName = name;
        config.serial = "KV2000-0048" + std::to_string(1000 + number); // 15 bytes are the most
        config.pixelFormat = 0x01080009;                               // BayerRG8
        const NamespaceScope there(m_far);
        m_devices.push_back(std::make_unique<vcam::VirtualCamera>(config));
        m_devices.back()->Start();
    }

    int CameraItems() const {
        int count = 0;
        for (QTreeWidgetItemIterator item(Tree()); *item; ++item)
            count += (*item)->data(0, Qt::UserRole).toSize().width() == QDevListWidget::ITEM_GIGE_CAMERA;
        return count;
    }

    void OpenWith(int count) {
        ASSERT_NO_FATAL_FAILURE(Open());
        ASSERT_TRUE(LookUntil([&] { return CameraItems() == count; }));
        ASSERT_TRUE(WaitFor([&] { return !Central().DeviceList()->IsDetecting(); }));
    }

    // A live picture of the first camera, which is selected.
    void Live() {
        const long id = CCameraRef::ByIndex(0)->GetCameraID();
        Tree()->setCurrentItem(Central().DeviceList()->GetCameraItem(id));
        Central().OnOpenCamera(id);
        Click(22);
        const CCameraRef camera = CCameraRef::ById(id);
        ASSERT_TRUE(WaitFor([&] { return camera->GetCounters().displayed > 30; }));
    }

    // In both languages and at each size. `what` names the files.
    void Keep(const std::string& what) {
        static const char* const kLanguages[] = {"en", "zh"};
        for (const int language : {0, 1}) {
            window->GetAction(language == 0 ? ACTION_LANG_ENG : ACTION_LANG_CH)->trigger();
            for (const QSize size : {QSize(1280, 800), QSize(1920, 1080)}) {
                window->setGeometry(QRect(QPoint(0, 0), size));
                KeepPicture(size, what + "-" + std::to_string(size.width()) + "-" + kLanguages[language]);
            }
        }
        window->GetAction(ACTION_LANG_ENG)->trigger();
    }

    void KeepPicture(QSize size, const std::string& name) {
        ASSERT_TRUE(WaitFor([&] { return window->size() == size; }));
        // The picture follows the window on threads of its own: until two looks are alike but for what moves.
        ASSERT_TRUE(WaitFor([shown = QImage(), this]() mutable {
            const QImage now = Look();
            const bool same = !shown.isNull() && shown.copy(0, 0, 1200, 100) == now.copy(0, 0, 1200, 100);
            shown = now;
            QTest::qWait(300); // a turn of the figures in the status bar
            return same;
        }));
        const QImage picture = Look();
        const QString kept = QString::fromLocal8Bit(qgetenv("KOLT_TEST_OUT")) + "/workspace";
        ASSERT_TRUE(QDir().mkpath(kept));
        ASSERT_TRUE(picture.save(kept + "/" + (AtTwiceTheScale() ? "200-" : "") + name.c_str() + ".png"));
        EXPECT_EQ(picture.size(), size * (AtTwiceTheScale() ? 2 : 1));
    }

    // With the picture, which is drawn into a window of its own.
    QImage Look() const {
        const QRect place = window->geometry();
        return QGuiApplication::primaryScreen()
            ->grabWindow(0, place.x(), place.y(), place.width(), place.height())
            .toImage()
            .convertToFormat(QImage::Format_RGB32);
    }

private:
    NetworkNamespace m_far;
    std::vector<std::unique_ptr<vcam::VirtualCamera>> m_devices;
};

TEST_F(Pictures, WithoutACamera) {
    ASSERT_NO_FATAL_FAILURE(OpenWith(0));
    Keep("none");
}

TEST_F(Pictures, WithOneLiveCamera) {
    Start(0, "Line 1 top");
    ASSERT_NO_FATAL_FAILURE(OpenWith(1));
    ASSERT_NO_FATAL_FAILURE(Live());
    Keep("one");
}

TEST_F(Pictures, WithManyCamerasOfLongNames) {
    for (int i = 0; i < kMany; ++i)
        Start(i, (i % 2 == 0 ? "Hall 3 cell " : "L") + std::to_string(10 + i));
    ASSERT_NO_FATAL_FAILURE(OpenWith(kMany));
    ASSERT_NO_FATAL_FAILURE(Live());
    Keep("many");
}

TEST(PicturesOfAFineScreen, AtTwiceTheScale) {
    if (AtTwiceTheScale())
        return; // in the child
    kolt::test::ChildProcess child({KOLT_SOURCE_DIR "/scripts/with-xvfb",
                                    KOLT_BIN_DIR "/workspace_pictures_test", "--gtest_filter=Pictures.*"},
                                   {{"QT_SCALE_FACTOR", "2"}, {"KOLT_XVFB_SCREEN", "3840x2160x24"}});
    const auto code = child.waitForExit(std::chrono::seconds(200));
    EXPECT_EQ(code.value_or(-1), 0) << child.output();
}

} // namespace
} // namespace program
