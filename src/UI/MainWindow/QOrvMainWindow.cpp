#include "UI/MainWindow/QOrvMainWindow.h"

#include "Camera/QCamera.h"
#include "Common/QFunction.h"
#include "UI/Controls/QMenuBarEx.h"
#include "UI/Controls/QMenuEx.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/MainWindow/CameraUse.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopWidget>
#include <QIcon>
#include <QVBoxLayout>
#include <algorithm>
#include <new>
#include <utility>

namespace {

constexpr int kMenuFontPixels = 14;
constexpr char kMenuFontFamily[] = "FZShuSong-Z01S";
constexpr char kVersion[] = "1.0.0";

// The window on a desktop of usual size, and what counts as usual.
constexpr QSize kUsual(1302, 820);
constexpr QSize kSmallestUsual(1280, 800);

} // namespace

QOrvMainWindow::QOrvMainWindow(QWidget* parent, _WORKSPACE_PARTS_ parts)
    : QMainWindowEx(parent), m_parts(std::move(parts)) {}

QOrvMainWindow::~QOrvMainWindow() {
    Release();
}

// --- building

bool QOrvMainWindow::InitWidget() {
    if (m_pCentral)
        return true;
    SetTitle();
    setWindowIcon(QIcon(":/ORV/Resources/ORV.ico"));
    if (!InitCtrl() || !InitMenu() || !InitLayout() || !InitSignals()) {
        Release();
        return false;
    }
    SetMenuBarActionEnable(false);
    EnableAction(ACTION_FEATURE, false);
    EnableAction(ACTION_OPTIONS, true);
    setGeometry(Placement(QApplication::desktop()->frameGeometry().size()));
    return true;
}

bool QOrvMainWindow::InitCtrl() {
    m_pGroup = new QActionGroup(this);
    m_pGroup->setExclusive(false);
    try {
        m_pCentral = new QOrvCentralWindow(this, m_parts);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return m_pCentral->InitWidget();
}

bool QOrvMainWindow::InitMenu() {
    QFont font(kMenuFontFamily);
    font.setPixelSize(kMenuFontPixels);
    MenuBar()->setFont(font);
    for (QMenuEx*& menu : m_menus) {
        menu = new QMenuEx(this);
        menu->setFont(font);
    }
    m_pDisplayMenu = new QMenuEx(m_menus[MENU_VIEW]);
    m_pDisplayMenu->setFont(font);
    for (const int mode : DisplayModeActions())
        AddAction(*m_pDisplayMenu, mode)->setCheckable(true);
    for (int menu = 0; menu < kMainMenus; ++menu)
        FillMenu(static_cast<_MAIN_MENU_>(menu));
    SetTexts();
    for (QMenuEx* menu : m_menus)
        AddTitleBarMenu(menu->title(), menu);
    return true;
}

QAction* QOrvMainWindow::AddAction(QMenuEx& menu, int nAction) {
    auto* action = new QAction(m_pGroup); // which makes it one of the group
    action->setData(nAction);
    menu.addAction(action);
    return action;
}

void QOrvMainWindow::FillMenu(_MAIN_MENU_ menu) {
    QMenuEx& filled = *m_menus[menu];
    for (const int place : MenuPlaces(menu)) {
        if (place == kSeparator) {
            filled.addSeparator();
        } else if (place == kDisplayModeMenu) {
            filled.addMenu(m_pDisplayMenu);
        } else if (place == kCentralToggles) {
            m_pToggles.reset(m_pCentral->CreatePopupMenuEx());
            if (m_pToggles)
                filled.addActions(m_pToggles->actions());
        } else {
            AddAction(filled, place);
        }
    }
}

bool QOrvMainWindow::InitLayout() {
    m_pLayout = new QVBoxLayout;
    m_pLayout->setContentsMargins(0, 0, 0, 0);
    m_pLayout->addWidget(m_pCentral);
    SetLayoutEx(m_pLayout);
    return true;
}

bool QOrvMainWindow::InitSignals() {
    using Central = QOrvCentralWindow;
    using Self = QOrvMainWindow;
    return connect(m_pGroup, &QActionGroup::triggered, m_pCentral, &Central::OnMenuActionTriggered) &&
           connect(m_pGroup, &QActionGroup::triggered, this, &Self::OnMenuActionTriggered) &&
           connect(m_pCentral, &Central::SigUpdateMenuBarActions, this, &Self::UpdateMenuBarActions) &&
           connect(m_pCentral, &Central::SigUpdateViewMenuEnable, this,
                   &Self::OnSigMenuBarViewActionEnable) &&
           connect(m_pCentral, &Central::SigUpdateRecAction, this, &Self::OnSigUpdateRecAction) &&
           connect(m_pCentral, &Central::SigUpdateMenuActions, this, &Self::OnSigUpdateMenuActions) &&
           connect(m_pCentral, &Central::SigEnabledZoom, this, &Self::OnSigEnabledZoom) &&
           connect(m_pCentral, &Central::SigVREngineChanged, this, &Self::OnSigVREngineChanged);
}

void QOrvMainWindow::Release() {
    for (QMenuEx*& menu : m_menus)
        delete std::exchange(menu, nullptr);
    m_pDisplayMenu = nullptr; // the view menu's
    m_pToggles.reset();
    delete std::exchange(m_pGroup, nullptr);
    delete std::exchange(m_pCentral, nullptr);
    delete std::exchange(m_pLayout, nullptr);
}

QRect QOrvMainWindow::Placement(const QSize& desktop) {
    const int w = desktop.width();
    const int h = desktop.height();
    if (w >= kSmallestUsual.width() && h >= kSmallestUsual.height()) {
        // Deliberate: also where it is a little larger than the desktop.
        const QPoint corner((w - kUsual.width()) / 2, (h - kUsual.height()) / 2);
        return {corner, corner + QPoint(kUsual.width(), kUsual.height())};
    }
    const auto part = [](double share, int of) { return static_cast<int>(share * of); };
    return {QPoint(part(0.11, w), part(0.025, h)), QPoint(part(0.78, w), part(0.95, h))};
}

// --- texts

void QOrvMainWindow::SetTitle() {
    SetTitleText(tr("KOLT CAPTURE %1").arg(kVersion));
}

void QOrvMainWindow::SetText(int nAction, const QString& strText) {
    if (QAction* const action = GetAction(nAction))
        action->setText(strText);
}

void QOrvMainWindow::SetTexts() {
    SetTitle();
    m_menus[MENU_FILE]->setTitle(tr("File"));
    m_menus[MENU_VIEW]->setTitle(tr("View"));
    m_menus[MENU_CAMERA]->setTitle(tr("Camera"));
    m_menus[MENU_SETTING]->setTitle(tr("Setting"));
    m_menus[MENU_TOOL]->setTitle(tr("Tool"));
    m_menus[MENU_LANG]->setTitle(tr("Lang"));
    m_menus[MENU_HELP]->setTitle(tr("Help"));
    m_pDisplayMenu->setTitle(tr("Display Mode"));
    const std::pair<int, QString> texts[] = {
        {ACTION_EXIT, tr("Exit")},
        {ACTION_ZOOM_IN, tr("Zoom in")},
        {ACTION_ZOOM_OUT, tr("Zoom out")},
        {ACTION_ZOOM_TO_FIT, tr("Fit to Window")},
        {ACTION_ZOOM_RESUME, tr("Actual Size")},
        {ACTION_DISPLAY_30, tr("30 fps")},
        {ACTION_DISPLAY_60, tr("60 fps")},
        {ACTION_DISPLAY_OFF, tr("Disable Display")},
        {ACTION_LOAD_FEATURES, tr("Import Features")},
        {ACTION_SAVE_FEATURES, tr("Export Features")},
        {ACTION_ADD_REMOTE_CAMERA, tr("Add Remote Camera")},
        {ACTION_SAVE_GENICAM_FILE, tr("Save GenIcam XML")},
        {ACTION_FEATURE, tr("Feature")},
        {ACTION_OPTIONS, tr("Option")},
        {ACTION_IP_CONFIGURATOR, tr("IP Configurator")},
        {ACTION_FIRMWARE_UPDATOR, tr("Firmware Updater")},
        {ACTION_LANG_ENG, tr("English")},
        {ACTION_LANG_CH, tr("Chinese")},
        {ACTION_OPERATOR, tr("User Manual")},
        {ACTION_ABOUT, tr("About")},
    };
    for (const auto& [number, text] : texts)
        SetText(number, text);
    OnSigUpdateCaptureAction(m_bCapturing);
    UpdateConnectBtn(m_bConnected);
    UpdateContinousBtn(m_bLive);
    OnSigUpdateRecAction(m_bRecording);
}

void QOrvMainWindow::UpdateConnectBtn(bool bConnected) {
    m_bConnected = bConnected;
    SetText(ACTION_CONNECT, bConnected ? tr("Disconnect Camera") : tr("Connect Camera"));
}

void QOrvMainWindow::UpdateContinousBtn(bool bLive) {
    m_bLive = bLive;
    SetText(ACTION_CONTINOUS_SHOT, bLive ? tr("Stop Acquisition") : tr("Start Acquisition"));
}

void QOrvMainWindow::OnSigUpdateRecAction(bool bRecording) {
    m_bRecording = bRecording;
    SetText(ACTION_RECORD, bRecording ? tr("Stop Recording") : tr("Start Recording"));
}

void QOrvMainWindow::OnSigUpdateCaptureAction(bool bCapturing) {
    m_bCapturing = bCapturing;
    SetText(ACTION_SAVE_IMG, bCapturing ? tr("Stop Capturing") : tr("Capture and Save"));
}

void QOrvMainWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_pLayout)
        SetTexts();
    QMainWindowEx::changeEvent(event);
}

// --- what can be chosen

QAction* QOrvMainWindow::GetAction(long nAction) const {
    if (!m_pGroup)
        return nullptr;
    const QList<QAction*> actions = m_pGroup->actions();
    const auto found = std::find_if(actions.begin(), actions.end(), [nAction](const QAction* action) {
        return action->data().toInt() == nAction;
    });
    return found == actions.end() ? nullptr : *found;
}

bool QOrvMainWindow::HasAll(const std::vector<int>& actions) const {
    return std::all_of(actions.begin(), actions.end(),
                       [this](int action) { return GetAction(action) != nullptr; });
}

void QOrvMainWindow::EnableAction(int nAction, bool bEnable) {
    if (QAction* const action = GetAction(nAction))
        action->setEnabled(bEnable && m_pCentral->IsAvailable(nAction));
}

void QOrvMainWindow::SetMenuBarActionEnable(bool bEnable) {
    if (!HasAll(CameraActions()))
        return;
    for (const int action : CameraActions())
        EnableAction(action, bEnable);
    m_pDisplayMenu->setEnabled(bEnable);
}

void QOrvMainWindow::UpdateMenuBarActions(int nType, int nCameraID) {
    if (nType != QDevListWidget::ITEM_GIGE_CAMERA && nType != QDevListWidget::ITEM_USB_CAMERA) {
        Apply(MenuStateOfItem(nType));
        return;
    }
    UseCamera(nCameraID, [this](const QCamera& camera) {
        if (const auto state = MenuStateOfCamera(camera.GetCameraState(), camera.IsHaveFrameData()))
            Apply(*state);
    });
}

void QOrvMainWindow::Apply(const _MENU_STATE_& state) {
    if (!HasAll(CameraActions()))
        return;
    SetMenuBarActionEnable(false);
    for (const int action : state.enabled)
        EnableAction(action, true);
    m_pDisplayMenu->setEnabled(state.displayMode);
    if (state.feature)
        EnableAction(ACTION_FEATURE, *state.feature);
    if (state.connected)
        UpdateConnectBtn(*state.connected);
    if (state.live)
        UpdateContinousBtn(*state.live);
}

void QOrvMainWindow::OnSigMenuBarViewActionEnable(bool bEnable) {
    const std::vector<int> zooms{ACTION_ZOOM_IN, ACTION_ZOOM_OUT, ACTION_ZOOM_TO_FIT, ACTION_ZOOM_RESUME};
    if (!HasAll(zooms))
        return;
    for (const int zoom : zooms)
        EnableAction(zoom, bEnable);
}

void QOrvMainWindow::OnSigEnabledZoom(bool bIn, bool bOut) {
    if (!HasAll({ACTION_ZOOM_IN, ACTION_ZOOM_OUT}))
        return;
    EnableAction(ACTION_ZOOM_IN, bIn);
    EnableAction(ACTION_ZOOM_OUT, bOut);
}

void QOrvMainWindow::OnSigUpdateMenuActions(int nActionID) {
    const std::vector<int>& modes = DisplayModeActions();
    if (std::find(modes.begin(), modes.end(), nActionID) == modes.end() || !HasAll(modes))
        return;
    for (const int mode : modes)
        GetAction(mode)->setChecked(mode == nActionID);
}

void QOrvMainWindow::OnSigVREngineChanged(uint nMode, long lCameraID) {
    m_nRenderEngine = nMode;
    UpdateMenuBarActions(QDevListWidget::ITEM_GIGE_CAMERA, static_cast<int>(lCameraID));
}

// --- leaving

void QOrvMainWindow::OnMenuActionTriggered(QAction* pAction) {
    if (pAction && pAction->data().toInt() == ACTION_EXIT)
        close();
}

void QOrvMainWindow::closeEvent(QCloseEvent* event) {
    if (!m_pCentral) {
        event->accept();
        return;
    }
    QMessageBoxDlg question(this);
    question.SetMsgText(tr("Hint"), tr("Exit the client?"), true, MESSAGE_INFORMATION);
    QRect place(QPoint(), question.size());
    place.moveCenter(QApplication::desktop()->frameGeometry().center());
    question.move(place.topLeft());
    if (question.exec() != QDialog::Accepted) {
        event->ignore();
        return;
    }
    m_pCentral->close();
    event->accept();
}

void QOrvMainWindow::TestFireWall() {
    if (m_fireWall.IsFirWallOpened())
        QFunction::ShowMessage(
            this, tr("Please turn off Windows Firewall to ensure\nthat the client can work properly."),
            QString(), QString(), MESSAGE_WARNING);
}
