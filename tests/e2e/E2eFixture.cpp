#include "e2e/E2eFixture.h"

#include "Common/ApplicationStart.h"
#include "Common/QLocalCfg.h"
#include "UI/Controls/QDialogEx.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMenuBarEx.h"
#include "UI/Controls/QSaveDoneHintDlg.h"
#include "UI/Controls/QStatusLabel.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QMessageLogMngWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvMainWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QPrevStatusBar.h"
#include "UI/MainWindow/QPreviewWidget.h"
#include "UI/MainWindow/QRenderWidget.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextEdit>
#include <QThread>
#include <QTreeWidget>
#include <chrono>
#include <cmath>
#include <thread>
#include <utility>

namespace e2e {

using kolt::test::Desktop;
using kolt::test::NamespaceScope;
using kolt::test::NetworkNamespace;

namespace {

constexpr auto kPatience = std::chrono::seconds(30);
constexpr int kTolerance = 12;

// At its end the program looks for its tools among all processes of the machine, to end them. Here it sees
// none, so that whatever else runs is safe from it.
void HideProcesses(const QString& folder) {
    QFile ps(folder + "/ps");
    if (!ps.open(QFile::WriteOnly) || ps.write("#!/bin/sh\nexit 0\n") < 0)
        throw std::runtime_error("no script for ps");
    ps.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    ps.close();
    qputenv("PATH", folder.toLocal8Bit() + ':' + qgetenv("PATH"));
}

bool IsNear(QRgb pixel, const vcam::Patch& patch, bool colour) {
    if (colour) {
        return std::abs(qRed(pixel) - patch.red) <= kTolerance &&
               std::abs(qGreen(pixel) - patch.green) <= kTolerance &&
               std::abs(qBlue(pixel) - patch.blue) <= kTolerance;
    }
    const double luma = 0.299 * patch.red + 0.587 * patch.green + 0.114 * patch.blue;
    return std::abs(qRed(pixel) - luma) <= kTolerance && qRed(pixel) == qGreen(pixel) &&
           qGreen(pixel) == qBlue(pixel);
}

} // namespace

World* World::instance = nullptr;

World::World() : inside(host) {
    NetworkNamespace::cable(host, "nic0", "10.1.0.1/24", site, "sw0", "10.1.0.2/24");
    host.ip("link set nic0 mtu 9000");
    site.ip("link set sw0 mtu 9000");
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    HideProcesses(home.path());
    desktop.StartWindowManager();
    instance = this;
}

bool Eventually(const std::function<bool()>& isSo) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

bool EventuallyGui(const std::function<bool()>& isSo) {
    return Eventually([&isSo] { return Gui([&isSo] { return isSo(); }); });
}

// --- program and cameras

// A notice stays for two seconds, which a person's thread on a busy machine may sleep through. And what a
// click does to a text field can't be seen.
class E2e::NoticeWatch : public QObject {
public:
    QStringList titles;
    int releases = 0; // of a button of the mouse, as they reach a window

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Show) {
            if (const auto* const notice = qobject_cast<QSaveDoneHintDlg*>(object))
                titles << notice->windowTitle();
        }
        releases += event->type() == QEvent::MouseButtonRelease && object->isWindowType() ? 1 : 0;
        return false;
    }
};

E2e::E2e() : desktop(World::instance->desktop) {}

E2e::~E2e() = default;

void E2e::SetUp() {
    ASSERT_TRUE(folder.isValid());
    Gui([this] {
        QLocalCfg::SetDirectory(folder.path());
        notices = std::make_unique<NoticeWatch>();
        qApp->installEventFilter(notices.get());
    });
    desktop.Move(QPoint(2, 2));
}

void E2e::TearDown() {
    if (HasFailure() && window)
        Screenshot(std::string("failed-") + testing::UnitTest::GetInstance()->current_test_info()->name());
    EndProgram();
    Gui([this] {
        QLocalCfg::SetDirectory({});
        notices.reset();
    });
    cameras.clear();
}

vcam::VirtualCamera& E2e::AddCamera(const std::string& name,
                                    const std::function<void(vcam::Config&)>& change) {
    vcam::Config config;
    const std::string number = std::to_string(cameras.size() + 1);
    config.interface = "sw0";
    config.address = "10.1.0." + std::to_string(cameras.size() + 5);
    config.serial = "E-" + number;
    config.userName = name;
    config.model = vcam::Model::Mono;
    config.sensorWidth = 640;
    config.sensorHeight = 480;
    config.frameRate = 30;
    if (change)
        change(config);
    const NamespaceScope there(World::instance->site);
    configs.push_back(config);
    cameras.push_back(std::make_unique<vcam::VirtualCamera>(config));
    cameras.back()->Start();
    return *cameras.back();
}

QString E2e::ItemOf(size_t number) const {
    return QString("%1(%2)").arg(configs.at(number).userName.c_str(), configs.at(number).serial.c_str());
}

void E2e::StartProgram() {
    ASSERT_TRUE(Gui([this] {
        if (!InitORV())
            return false;
        window = std::make_unique<QOrvMainWindow>();
        if (!window->InitWidget())
            return false;
        window->setVisible(true);
        window->show();
        return true;
    }));
    ASSERT_TRUE(EventuallyGui([this] { return window->isActiveWindow(); }))
        << "the manager gives it the focus";
    ASSERT_TRUE(EventuallyGui([this] { return !Central()->DeviceList()->IsDetecting(); }));
}

void E2e::EndProgram() {
    if (!window)
        return;
    // What a failed test left open.
    EXPECT_TRUE(EventuallyGui([] {
        if (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
        if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
            dialog->done(1);
        // And what showed them has come to its end.
        return !QApplication::activeModalWidget() && !QApplication::activePopupWidget() &&
               QThread::currentThread()->loopLevel() == 1;
    }));
    Gui([this] {
        Central()->close();
        ClearORV();
        window.reset();
    });
}

QOrvCentralWindow* E2e::Central() const {
    return window->CentralWindow();
}

QRenderWidget* E2e::Render() const {
    return Central()->RenderArea();
}

// --- places

QPoint E2e::OnScreen(const QWidget& widget, QPoint at) const {
    const QWidget& top = *widget.window();
    // Not by mapToGlobal(): until a manager's last word has come, Qt may believe a wrong place.
    return desktop.PositionOf(static_cast<uint32_t>(top.winId())) + widget.mapTo(&top, at);
}

E2e::Place E2e::PlaceOn(const QWidget& widget, QPoint at) const {
    return {widget.window(), OnScreen(widget, at)};
}

QPoint E2e::SteadyPoint(const std::function<bool(Place&)>& look) const {
    constexpr auto kPause = std::chrono::milliseconds(30);
    Place place;
    QPoint last(-2, -2);
    EXPECT_TRUE(Eventually([&] {
        const bool isThere = Gui([&] {
            // Shown is what the server has mapped and what nothing stands over, not what Qt has asked for.
            return look(place) && desktop.IsOpenAt(static_cast<uint32_t>(place.top->winId()), place.at);
        });
        if (!isThere)
            return false;
        // What was just shown may still be moved to its place.
        const bool rests = place.at == std::exchange(last, place.at);
        if (!rests)
            std::this_thread::sleep_for(kPause);
        return rests;
    })) << "not there, disabled, covered, or never at rest";
    return place.at;
}

QPoint E2e::PointOf(const std::function<QWidget*()>& widget, std::optional<QPoint> at) const {
    return SteadyPoint([&](Place& place) {
        const QWidget* const found = widget();
        if (!found || !found->isVisible() || !found->isEnabled())
            return false;
        place = PlaceOn(*found, at.value_or(found->rect().center()));
        return true;
    });
}

QPoint E2e::ToolPoint(int action) const {
    return PointOf([this, action]() -> QWidget* { return Central()->ToolBar()->button(action); });
}

QTreeWidgetItem* E2e::Item(const QString& item) const {
    const auto* tree = Central()->DeviceList()->findChild<QTreeWidget*>("deviceTree");
    const auto found = tree->findItems(item, Qt::MatchExactly | Qt::MatchRecursive);
    return found.isEmpty() ? nullptr : found.first();
}

bool E2e::HasItem(const QString& item) const {
    return Gui([&] { return Item(item) != nullptr; });
}

QPoint E2e::ItemPoint(const QString& item) const {
    SCOPED_TRACE(item.toStdString());
    return SteadyPoint([&](Place& place) {
        const QTreeWidgetItem* const found = Item(item);
        // A search that is under way may put other items in front.
        if (!found || Central()->DeviceList()->IsDetecting())
            return false;
        const QTreeWidget* const tree = found->treeWidget();
        place = PlaceOn(*tree->viewport(), tree->visualItemRect(found).center());
        return true;
    });
}

QPoint E2e::PreviewCentre() const {
    return PointOf([this]() -> QWidget* { return Render()->Preview(); });
}

QPoint E2e::PicturePoint(double x, double y) const {
    return Gui([&] {
        const QPreviewWidget& preview = *Render()->Preview();
        tagVRRectF source{};
        tagVRRectF shown{};
        preview.GetDisplayRect(source, shown);
        const CPreviewZoom::Pixel raw = preview.Zoom().Raw();
        const auto place = [](double part, float from, float to, float start, float end, int size) {
            return size * (start + (part - from) / (to - from) * (end - start));
        };
        return OnScreen(preview, QPoint(static_cast<int>(place(x / raw.x, source.left, source.right,
                                                               shown.left, shown.right, preview.width())),
                                        static_cast<int>(place(y / raw.y, source.top, source.bottom,
                                                               shown.top, shown.bottom, preview.height()))));
    });
}

// --- acts

void E2e::ClickOn(const std::function<QWidget*()>& widget) {
    desktop.Click(PointOf(widget));
}

void E2e::ClickInto(const std::function<QWidget*()>& field) {
    const QPoint at = PointOf(field);
    const int before = Gui([this] { return notices->releases; });
    desktop.Click(at);
    ASSERT_TRUE(EventuallyGui([&] { return notices->releases > before && field()->hasFocus(); }));
}

void E2e::ClickTool(int action) {
    desktop.Click(ToolPoint(action));
}

void E2e::ClickItem(const QString& item) {
    desktop.Click(ItemPoint(item));
    EXPECT_TRUE(EventuallyGui([&] { return Item(item) && Item(item)->isSelected(); }));
}

void E2e::DoubleClickItem(const QString& item) {
    desktop.DoubleClick(ItemPoint(item));
}

void E2e::ChooseMenu(_MAIN_MENU_ menu, int action, std::vector<QPoint>* way) {
    const auto click = [&](QPoint at) {
        desktop.Click(at);
        if (way)
            way->push_back(at);
    };
    // The title, and for an entry of a submenu the entry that leads there.
    std::vector<QMenu*> menus;
    SCOPED_TRACE("menu entry " + std::to_string(action));
    click(SteadyPoint([&](Place& place) {
        QAction* const entry = window->GetAction(action);
        if (!entry || !entry->isEnabled())
            return false;
        QMenuBarEx* const bar = window->MenuBar();
        QAction* const title = bar->actions().at(menu);
        place = PlaceOn(*bar, bar->actionGeometry(title).center());
        menus = {title->menu()};
        if (!title->menu()->actions().contains(entry)) {
            for (QAction* const other : title->menu()->actions()) {
                if (other->menu() && other->menu()->actions().contains(entry))
                    menus.push_back(other->menu());
            }
        }
        return true;
    }));
    for (size_t i = 0; i < menus.size(); ++i) {
        click(SteadyPoint([&](Place& place) {
            const QMenu& open = *menus[i];
            if (!open.isVisible())
                return false;
            QAction* const next =
                i + 1 < menus.size() ? menus[i + 1]->menuAction() : window->GetAction(action);
            place = PlaceOn(open, open.actionGeometry(next).center());
            return true;
        }));
    }
}

void E2e::Connect(size_t number) {
    // Whose answer came too late for a search on a busy machine is found by the next one.
    ASSERT_TRUE(Eventually([&] {
        if (HasItem(ItemOf(number)))
            return true;
        Refresh();
        return EventuallyGui([this] { return !Central()->DeviceList()->IsDetecting(); }) &&
               HasItem(ItemOf(number));
    }));
    DoubleClickItem(ItemOf(number));
    ASSERT_TRUE(EventuallyGui([&] { return Central()->CurrentCameraID() >= 0; })) << "connects";
    ASSERT_TRUE(cameras.at(number)->IsControlled());
}

void E2e::Refresh() {
    ClickOn([this]() -> QWidget* { return window->findChild<QWidget*>("devices_refresh"); });
}

void E2e::StartLive() {
    ClickTool(QOrvToolBar::kStart);
    ASSERT_TRUE(EventuallyGui([this] { return Render()->Preview()->Zoom().HasRaw(); })) << "a first picture";
}

void E2e::AnswerFileDialog(const QString& title, const QString& path) {
    const QFileDialog* const dialog = WaitForDialog<QFileDialog>();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(Gui([&] { return dialog->windowTitle(); }).toStdString(), title.toStdString());
    const auto* const name = Gui([dialog] { return dialog->findChild<QLineEdit*>("fileNameEdit"); });
    ASSERT_TRUE(name);
    ASSERT_TRUE(EventuallyGui([name] { return name->hasFocus(); }));
    desktop.Tap(Desktop::kControl, 'a');
    desktop.Type(path);
    ASSERT_TRUE(EventuallyGui([&] { return name->text() == path; }));
    desktop.Tap(Desktop::kReturn);
}

void E2e::ExpectNotice(const std::string& text, const std::string& picture) {
    ASSERT_TRUE(EventuallyGui([this] { return notices->titles.size() > static_cast<int>(noticesSeen); }))
        << "no notice";
    EXPECT_EQ(Gui([this] { return notices->titles.at(static_cast<int>(noticesSeen)); }).toStdString(), text);
    ++noticesSeen;
    if (!picture.empty())
        Screenshot(picture);
    ASSERT_TRUE(NoDialog()) << "it doesn't go";
}

std::string E2e::WaitForMessage() {
    const QDialogEx* const dialog = WaitForDialog<QDialogEx>();
    if (!dialog)
        return {};
    return Gui([&] {
        QStringList texts;
        for (const QLabel* label : dialog->findChildren<QLabel*>()) {
            if (!label->text().isEmpty())
                texts << label->text();
        }
        // Details that the operator may unfold.
        for (const QTextEdit* details : dialog->findChildren<QTextEdit*>())
            texts << details->toPlainText();
        for (const QPlainTextEdit* details : dialog->findChildren<QPlainTextEdit*>())
            texts << details->toPlainText();
        return texts.join('|').toStdString();
    });
}

void E2e::AnswerQuestion(bool yes) {
    const auto* const question = WaitForDialog<QDialogEx>();
    ASSERT_TRUE(question);
    ClickOn([question, yes]() -> QWidget* { return yes ? question->GetOKBtn() : question->GetCancelBtn(); });
    ASSERT_TRUE(EventuallyGui([question] { return QApplication::activeModalWidget() != question; }));
}

bool E2e::NoDialog() const {
    return EventuallyGui([] { return !QApplication::activeModalWidget(); });
}

// --- looks

bool E2e::ToolEnabled(int action) const {
    return Gui([&] { return Central()->ToolBar()->button(action)->isEnabled(); });
}

std::vector<std::string> E2e::Log() const {
    return Gui([this] {
        std::vector<std::string> lines;
        for (const _STRU_MSG_LOG_& record : Central()->LogView()->GetRecords())
            lines.push_back(record.text.toStdString());
        return lines;
    });
}

bool E2e::LogHas(const std::string& line) const {
    return Eventually([&] {
        const auto lines = Log();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    });
}

QString E2e::StatusText(int item) const {
    return Gui([&] {
        const QStatusLabel* const label = Render()->StatusBar()->Item(item);
        return label->isVisible() ? label->text() : QString();
    });
}

void E2e::ExpectPatches(const vcam::VirtualCamera& camera) {
    const auto patches = camera.Patches();
    ASSERT_GE(patches.size(), 3u);
    ASSERT_TRUE(EventuallyGui([this] { return Render()->Preview()->Zoom().HasRaw(); }));
    QRect area;
    size_t number = 0;
    while (cameras.at(number).get() != &camera)
        ++number;
    const bool colour = configs[number].model == vcam::Model::Colour;
    int seen = 0;
    for (const vcam::Patch& patch : patches) {
        QPoint at;
        const auto isThere = [&] {
            // A layout may still be on its way.
            area = Gui([this] {
                const QWidget* const preview = Render()->Preview();
                return QRect(OnScreen(*preview, QPoint()), preview->size());
            });
            at = PicturePoint(patch.x + patch.width / 2.0, patch.y + patch.height / 2.0);
            return !area.contains(at) || IsNear(desktop.Pixel(at), patch, colour);
        };
        EXPECT_TRUE(Eventually(isThere))
            << patch.name << " at " << at.x() << "," << at.y() << " is " << std::hex << desktop.Pixel(at)
            << " and not " << int{patch.red} << " " << int{patch.green} << " " << int{patch.blue};
        seen += area.contains(at) ? 1 : 0;
    }
    EXPECT_GE(seen, 1) << "something is in sight";
}

void E2e::Screenshot(const std::string& name) {
    QRect area;
    // The second turn comes after what the first one had painted has been sent.
    for (int i = 0; i < 2; ++i) {
        area = Gui([] {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest);
            QRect all;
            for (const QWidget* top : QApplication::topLevelWidgets()) {
                if (top->isVisible())
                    all |= top->frameGeometry();
            }
            return all;
        });
    }
    const QString out = qEnvironmentVariable("KOLT_TEST_OUT", QDir::tempPath()) + "/e2e";
    QDir().mkpath(out);
    EXPECT_TRUE(desktop.Grab(area).save(out + '/' + QString::fromStdString(name) + ".png"));
}

} // namespace e2e
