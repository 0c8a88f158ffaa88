#include "CentralFixture.h"

#include "UI/Controls/QStaticLabel.h"

#include "UI/MainWindow/QPreviewWidget.h"

#include <QDir>
#include <QSettings>
#include <QVBoxLayout>
#include <array>

namespace central {
namespace {

class ScriptedEditor : public CFeatureEditor {
public:
    ScriptedEditor(ScriptedParts& script, QWidget* parent)
        : m_script(script), m_widget(new QWidget(parent)) {}
    QWidget* Widget() override { return m_widget; }
    void OnCameraOpen(long id) override { m_script.Tell("editor open " + std::to_string(id)); }
    void OnCameraClose(long id) override { m_script.Tell("editor close " + std::to_string(id)); }
    void OnCameraStartShot() override { m_script.Tell("editor start"); }
    void OnCameraStopShot() override { m_script.Tell("editor stop"); }
    void UpdateFeatures(int type, const QString& name) override {
        m_script.Tell("editor update " + std::to_string(type) + "[" + name.toStdString() + "]");
    }
    void LoadCamFeatures() override { m_script.Tell("editor load"); }
    void SaveCamFeatures() override { m_script.Tell("editor save"); }
    void OnOptionsChanged() override { m_script.Tell("editor options"); }

private:
    ScriptedParts& m_script;
    QWidget* m_widget;
};

class ScriptedEmbedded : public CCameraView {
public:
    ScriptedEmbedded(ScriptedParts& script, QWidget* parent)
        : m_script(script), m_widget(new QWidget(parent)) {}
    QWidget* Widget() override { return m_widget; }
    void OnCameraOpen(long id) override { m_script.Tell("embedded open " + std::to_string(id)); }
    void OnCameraClose(long id) override { m_script.Tell("embedded close " + std::to_string(id)); }

private:
    ScriptedParts& m_script;
    QWidget* m_widget;
};

class ScriptedPanel : public CToolPanel {
public:
    ScriptedPanel(ScriptedParts& script, QWidget* parent, std::function<void()> closed)
        : m_script(script), m_dialog(std::make_unique<QDialog>(parent)) {
        m_script.panel = m_dialog.get();
        QObject::connect(m_dialog.get(), &QDialog::finished, std::move(closed));
        m_script.Tell("panel made");
    }
    ~ScriptedPanel() override {
        m_script.panel = nullptr;
        m_script.Tell("panel deleted");
    }
    QDialog* Window() override { return m_dialog.get(); }
    void SetCurCamera(long id) override { m_script.Tell("panel camera " + std::to_string(id)); }
    void UpdateCurrentPage() override {
        m_script.Tell("panel page");
        if (m_script.onPanelExec)
            QTimer::singleShot(0, m_dialog.get(), m_script.onPanelExec);
    }

private:
    ScriptedParts& m_script;
    std::unique_ptr<QDialog> m_dialog;
};

} // namespace

_WORKSPACE_PARTS_ ScriptedParts::Make() {
    _WORKSPACE_PARTS_ parts;
    // Leaked on purpose by the window's rules (its widget is the dock's): kept here instead.
    static std::vector<std::unique_ptr<CCameraView>> views;
    views.clear();
    parts.featureEditor = [this](QWidget* parent) {
        auto editor = std::make_unique<ScriptedEditor>(*this, parent);
        ScriptedEditor* const made = editor.get();
        views.push_back(std::move(editor));
        return made;
    };
    parts.embeddedView = [this](QWidget* parent) {
        auto view = std::make_unique<ScriptedEmbedded>(*this, parent);
        ScriptedEmbedded* const made = view.get();
        views.push_back(std::move(view));
        return made;
    };
    parts.toolPanel = [this](QWidget* parent, std::function<void()> closed) {
        return new ScriptedPanel(*this, parent, std::move(closed));
    };
    parts.options = [this](QWidget*, const _OPTIONS_CALL_& call, bool& accepted) {
        lastOptions = call;
        accepted = optionsAccepted;
        Tell("options");
        if (onOptions)
            onOptions();
        return optionsBuilt;
    };
    parts.fileAccess = [this](QWidget*, long id) { Tell("files " + std::to_string(id)); };
    return parts;
}

std::vector<std::string> ScriptedParts::Told() {
    std::vector<std::string> taken;
    taken.swap(m_told);
    return taken;
}

void Central::SetUp() {
    WorkspaceFixture::SetUp();
    ASSERT_TRUE(files.isValid());
    ASSERT_TRUE(m_home.isValid());
    // The window's layout goes to the user's settings: to a folder of the test's own.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_home.path());
    QLocalCfg::Instance()->SetDataOutputFolder(files.path());
    QObject::connect(QFunction::Instance(), &QFunction::SigShowMessage, qApp,
                     [this](int level, const QString&, const QString& text) {
                         m_log.push_back(std::to_string(level) + " " + text.toStdString());
                     });
}

void Central::TearDown() {
    frame.reset();
    QFunction::Instance()->disconnect(qApp);
    WorkspaceFixture::TearDown();
}

void Central::Make(int cameras, _WORKSPACE_PARTS_ parts) {
    static const char* const kNames[] = {"east", "west", "north"};
    std::vector<_OV_CC_DEVICE_INFO_> records;
    for (int i = 0; i < cameras; ++i) {
        devices::Gige gige;
        gige.mac = static_cast<uint32_t>(i + 1);
        gige.ip = devices::Ip(static_cast<uint32_t>(20 + i));
        gige.user = kNames[i];
        gige.serial = "G00" + std::to_string(i);
        records.push_back(devices::GigeRecord(gige));
    }
    doubles.SetDevices(records);
    frame = std::make_unique<QMainWindow>();
    window = new QOrvCentralWindow(frame.get(), std::move(parts));
    frame->setCentralWidget(window);
    frame->resize(1200, 780);
    frame->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(frame.get()));
    ASSERT_TRUE(devices::WaitFor([&] {
        return !window->DeviceList()->IsDetecting() &&
               QCameraContainer::Instance()->GetTotalCameraNum() == cameras &&
               (cameras == 0 || window->DeviceList()->GetCameraItem(Id(cameras)));
    }));
    Log();
    doubles.ForgetCalls();
}

std::string Central::Name(int number) const {
    std::array<char, 129> name{};
    const QCamera* const camera = QCameraContainer::Instance()->GetCamera(Id(number));
    return camera && camera->GetCameraName(name.data(), 129) ? name.data() : "";
}

void Central::Select(int number) {
    auto* const tree = window->DeviceList()->findChild<QTreeWidget*>("deviceTree");
    tree->setCurrentItem(window->DeviceList()->GetCameraItem(Id(number)));
}

std::vector<std::string> Central::Log() {
    QCoreApplication::processEvents();
    std::vector<std::string> taken;
    taken.swap(m_log);
    return taken;
}

void Central::Live() {
    window->OnOpenCamera(Id(1));
    ASSERT_EQ(window->CurrentCameraID(), Id(1));
    Do(22);
    ASSERT_TRUE(Camera(Id(1)).IsShotting());
    doubles.PushFrame(Frame(0x40));
    ASSERT_TRUE(devices::WaitFor(
        [&] { return Camera(Id(1)).IsHaveFrameData() && window->RenderArea()->Preview()->Zoom().HasRaw(); }));
    Log();
}

QString Central::Title() const {
    return window->RenderArea()->TitleBar()->TitleLabel()->text();
}

} // namespace central
