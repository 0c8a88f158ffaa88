// The program from end to end: its window on the real libraries and real networks, before a window manager,
// used with pointer and keys.
//
//   host: nic0 10.1.0.1/24 ---- site: sw0 10.1.0.2/24, the cameras
//
// The program runs on the main thread in an event loop of its own, as it does for a person. The test is the
// person: it runs on another thread, acts through the X server (`desktop`), and looks at widgets by Gui().
#pragma once

#include "UI/MainWindow/MainMenu.h"
#include "VirtualCamera.h"
#include "support/Desktop.h"
#include "support/NetworkNamespace.h"

#include <QApplication>
#include <QPoint>
#include <QString>
#include <QTemporaryDir>
#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

class QOrvCentralWindow;
class QOrvMainWindow;
class QRenderWidget;
class QTreeWidgetItem;

namespace e2e {

// What all tests of the process share; made by the main function before the application, on the main thread.
struct World {
    World();
    kolt::test::NetworkNamespace host, site;
    kolt::test::NamespaceScope inside; // the whole process lives on the host
    QTemporaryDir home;
    kolt::test::Desktop desktop;
    static World* instance;
};

// Runs `work` on the main thread, also while a dialog is open there, and waits for it.
template<typename Work>
auto Gui(Work work) {
    using Result = decltype(work());
    if constexpr (std::is_void_v<Result>) {
        QMetaObject::invokeMethod(qApp, std::move(work), Qt::BlockingQueuedConnection);
    } else {
        Result result{};
        QMetaObject::invokeMethod(
            qApp, [&] { result = work(); }, Qt::BlockingQueuedConnection);
        return result;
    }
}

// Looks every few milliseconds, on the test's thread; false after half a minute.
bool Eventually(const std::function<bool()>& isSo);
// The same with a look on the main thread.
bool EventuallyGui(const std::function<bool()>& isSo);

class E2e : public testing::Test {
protected:
    E2e();
    ~E2e() override;
    void SetUp() override;
    void TearDown() override;

    // A camera of 640 x 480 grey pixels at 30 frames per second, on the site's network. The n-th one has the
    // address 10.1.0.(4 + n) and the serial number "E-n".
    vcam::VirtualCamera& AddCamera(const std::string& name,
                                   const std::function<void(vcam::Config&)>& change = {});
    // What the tree says of it.
    QString ItemOf(size_t number) const;

    // The program comes up and has looked for cameras once.
    void StartProgram();
    // What remains of the program goes as at the end of its main function.
    void EndProgram();

    // --- where things are on the screen
    // As the X server has it; main thread.
    QPoint OnScreen(const QWidget& widget, QPoint at) const;
    // A place that something can be clicked at: `top` is the window it belongs to.
    struct Place {
        const QWidget* top = nullptr;
        QPoint at;
    };
    Place PlaceOn(const QWidget& widget, QPoint at) const;
    // Waits until `look`, called on the main thread, finds the same point twice, and a click there would
    // reach the window.
    QPoint SteadyPoint(const std::function<bool(Place&)>& look) const;
    // The centre, or `at` within the widget.
    QPoint PointOf(const std::function<QWidget*()>& widget, std::optional<QPoint> at = {}) const;
    QPoint ToolPoint(int action) const;
    QPoint ItemPoint(const QString& item) const;
    QPoint PreviewCentre() const;
    // Of a pixel of the picture, as it should stand on the screen.
    QPoint PicturePoint(double x, double y) const;

    // --- what a person does; each waits until it can be done
    void ClickTool(int action);
    void ClickItem(const QString& item);
    void DoubleClickItem(const QString& item);
    // By the pointer, through the title bar. Adds the places that were clicked to `way`.
    void ChooseMenu(_MAIN_MENU_ menu, int action, std::vector<QPoint>* way = nullptr);
    void ClickOn(const std::function<QWidget*()>& widget);
    // The same where keys follow: a window manager may look at a click before it hands it on, and they would
    // overtake it.
    void ClickInto(const std::function<QWidget*()>& field);
    // The first camera connected by a double click.
    void Connect(size_t number = 0);
    void StartLive();
    // Looks for cameras again.
    void Refresh();
    // Types a path into the file dialog that is open, and accepts.
    void AnswerFileDialog(const QString& title, const QString& path);
    // Waits for the open message box and gives its texts.
    std::string WaitForMessage();
    // By the buttons of the open message box.
    void AnswerQuestion(bool yes);
    // A notice of something saved with this text came, and has gone by itself. Nobody needs to be quick
    // enough to see it: the program's events tell of it. `picture`: what is on the screen as soon as it came.
    void ExpectNotice(const std::string& text, const std::string& picture = {});
    // The modal dialog of this class in front, once it has the keyboard.
    template<typename Dialog>
    Dialog* WaitForDialog() {
        Dialog* dialog = nullptr;
        EXPECT_TRUE(EventuallyGui([&dialog] {
            dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            return dialog && dialog->isVisible() && dialog->isActiveWindow();
        })) << "no dialog";
        return dialog;
    }
    bool NoDialog() const;

    // --- what a person sees
    bool HasItem(const QString& item) const;
    QTreeWidgetItem* Item(const QString& item) const; // main thread
    bool ToolEnabled(int action) const;
    std::vector<std::string> Log() const;
    bool LogHas(const std::string& line) const;
    QString StatusText(int item) const;
    // Every patch of known colour that is in sight stands on the screen where it belongs.
    void ExpectPatches(const vcam::VirtualCamera& camera);
    // The window and what stands over it.
    void Screenshot(const std::string& name);

    QOrvCentralWindow* Central() const;
    QRenderWidget* Render() const;

    // Titles of the notices that came up; belongs to the main thread.
    class NoticeWatch;
    std::unique_ptr<NoticeWatch> notices;
    size_t noticesSeen = 0;

    kolt::test::Desktop& desktop;
    QTemporaryDir folder; // of the settings and of all files
    std::vector<std::unique_ptr<vcam::VirtualCamera>> cameras;
    std::vector<vcam::Config> configs;
    std::unique_ptr<QOrvMainWindow> window;
};

} // namespace e2e
