#include "program/Desk.h"

#include "Camera/QFrameBufManager.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "UI/Controls/Look.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/Controls/QSaveDoneHintDlg.h"
#include "UI/Controls/QShowMessageDlg.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"

#include <QFileDialog>
#include <QLabel>
#include <QSettings>
#include <QTreeWidget>
#include <QtTest>

namespace program {

bool WaitFor(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, kPatienceMs);
}

// --- dialogs

Answers::Answers() {
    m_timer.callOnTimeout([this] { Look(); });
    m_timer.start(5);
}

void Answers::Look() {
    QWidget* const modal = QApplication::activeModalWidget();
    if (!modal || !modal->isVisible())
        return;
    if (auto* files = qobject_cast<QFileDialog*>(modal)) {
        if (file.isEmpty()) {
            files->reject();
            return;
        }
        files->selectFile(file);
        static_cast<QDialog*>(files)->accept();
    } else if (auto* saved = qobject_cast<QSaveDoneHintDlg*>(modal)) {
        saved->done(1);
    } else if (auto* dialog = qobject_cast<QDialog*>(modal)) {
        const bool question = qobject_cast<QMessageBoxDlg*>(modal) != nullptr;
        const bool message = qobject_cast<QShowMessageDlg*>(modal) != nullptr;
        if (const auto* text = dialog->findChild<QLabel*>("messageText"); text && message)
            m_messages.push_back(text->text().toStdString());
        if (question || message)
            dialog->accept();
        else
            dialog->reject();
    }
}

std::vector<std::string> Answers::TakeMessages() {
    return std::exchange(m_messages, {});
}

// --- the desk

void Desk::SetUp() {
    ASSERT_TRUE(folder.isValid());
    // Settings and layout in a folder of the test's own; devices and program in its own network.
    QLocalCfg::SetDirectory(folder.path());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    m_inside = std::make_unique<kolt::test::NamespaceScope>(network);
    static const bool look = (Look::Apply(*qApp), true);
    Q_UNUSED(look)
    ASSERT_TRUE(QFunction::Instance());
    answers = std::make_unique<Answers>();
}

void Desk::TearDown() {
    if (window) {
        EXPECT_TRUE(window->close());
        window.reset();
    }
    QFunction::Release();
    QLocalCfg::ReleaseInstance();
    QCameraContainer::ReleaseInstance();
    QFrameBufManager::ReleaseInstance();
    QLocalCfg::SetDirectory({});
    answers.reset();
    cameras.clear();
    m_inside.reset();
}

vcam::Config& Desk::Add(const std::string& name) {
    Camera& camera = cameras.emplace_back();
    camera.config.address = "127.0.0." + std::to_string(cameras.size());
    camera.config.userName = name;
    camera.config.serial = "DESK" + std::to_string(cameras.size());
    return camera.config;
}

void Desk::Plug(Camera& camera) {
    if (!camera.device)
        camera.device = std::make_unique<vcam::VirtualCamera>(camera.config);
    camera.device->Start();
    camera.plugged = true;
}

void Desk::Unplug(Camera& camera) {
    camera.device->Stop();
    camera.plugged = false;
}

void Desk::Open() {
    for (Camera& camera : cameras)
        Plug(camera);
    window = std::make_unique<QOrvMainWindow>();
    ASSERT_TRUE(window->InitWidget());
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    for (const Camera& camera : cameras)
        ASSERT_TRUE(LookUntil([&] { return ItemOf(camera) != nullptr; })) << camera.config.userName;
}

long Desk::IdOf(const Camera& camera) {
    for (int i = 0;; ++i) {
        const CCameraRef known = CCameraRef::ByIndex(i);
        if (!known)
            return -1;
        if (camera.config.serial == known->GetOVCCDevInfo().transport.gige.serialNumber)
            return known->GetCameraID();
    }
}

QTreeWidget* Desk::Tree() const {
    return Central().DeviceList()->findChild<QTreeWidget*>("deviceTree");
}

QTreeWidgetItem* Desk::ItemOf(const Camera& camera) const {
    const long id = IdOf(camera);
    return id < 0 ? nullptr : Central().DeviceList()->GetCameraItem(id);
}

void Desk::Select(const Camera& camera) {
    QTreeWidget* const tree = Tree();
    QTreeWidgetItem* const item = ItemOf(camera);
    ASSERT_NE(item, nullptr) << camera.config.userName;
    tree->scrollToItem(item);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(item).center());
    ASSERT_EQ(tree->currentItem(), item);
}

void Desk::DoubleClick(const Camera& camera) {
    ASSERT_NO_FATAL_FAILURE(Select(camera));
    QTreeWidget* const tree = Tree();
    QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(ItemOf(camera)).center());
}

void Desk::Click(int action) {
    QTest::mouseClick(Central().ToolBar()->button(action), Qt::LeftButton);
}

bool Desk::Enabled(int action) const {
    return Central().ToolBar()->button(action)->isEnabled();
}

bool Desk::LookUntil(const std::function<bool()>& condition) {
    QDevListWidget& devices = *Central().DeviceList();
    return WaitFor([&] {
        if (condition())
            return true;
        if (!devices.IsDetecting())
            QTest::mouseClick(devices.findChild<QImageButton*>("devices_refresh"), Qt::LeftButton);
        return false;
    });
}

void Desk::Refresh() {
    QDevListWidget& devices = *Central().DeviceList();
    ASSERT_TRUE(WaitFor([&] { return !devices.IsDetecting(); }));
    QTest::mouseClick(devices.findChild<QImageButton*>("devices_refresh"), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return !devices.IsDetecting(); }));
    QCoreApplication::processEvents(); // what the round has said at its end
}

} // namespace program
