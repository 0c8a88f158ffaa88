// The program's window: the menus in its title bar, and the central window below.
#pragma once

#include "UI/Controls/QMainWindowEx.h"
#include "UI/MainWindow/CTestFireWall.h"
#include "UI/MainWindow/MainMenu.h"
#include "UI/MainWindow/WorkspaceParts.h"

#include <array>
#include <memory>

class QAction;
class QActionGroup;
class QMenu;
class QOrvCentralWindow;
class QVBoxLayout;

// Owns the menus, their actions and the central window. An action carries its number as data; choosing it
// makes the central window act, and the central window's signals bring back what can be chosen next. Main
// thread.
class QOrvMainWindow : public QMainWindowEx {
    Q_OBJECT

public:
    // An empty window; throws std::bad_alloc when not even that can be built.
    explicit QOrvMainWindow(QWidget* parent = nullptr, _WORKSPACE_PARTS_ parts = {});
    ~QOrvMainWindow() override;

    // Builds the contents and places the window, without showing it. False, with nothing left behind, when a
    // part can't be built. A second call changes nothing.
    bool InitWidget();

    // The action with this number; null when no menu has it.
    QAction* GetAction(long nAction) const;
    QOrvCentralWindow* CentralWindow() const { return m_pCentral; }
    // As last told by OnSigVREngineChanged; 2 at first.
    uint RenderEngine() const { return m_nRenderEngine; }

    // Reminds of the firewall. No flow of the program calls it.
    void TestFireWall();

    // Where the window stands on a desktop of this size.
    static QRect Placement(const QSize& desktop);

public Q_SLOTS:
    // Enables the actions for what is selected in the device tree: an item type of the tree and, for a camera
    // item, its id. Looks at the state of the camera named, which need not be the open one; one that has gone
    // changes nothing.
    void UpdateMenuBarActions(int nType, int nCameraID);
    void OnMenuActionTriggered(QAction* pAction);
    // The four zoom entries.
    void OnSigMenuBarViewActionEnable(bool bEnable);
    void OnSigUpdateRecAction(bool bRecording);
    // No signal leads here: an action's text while single pictures are taken in a row.
    void OnSigUpdateCaptureAction(bool bCapturing);
    // Marks a display mode (8, 9, 10); other numbers are not for the menus.
    void OnSigUpdateMenuActions(int nActionID);
    void OnSigEnabledZoom(bool bIn, bool bOut);
    void OnSigVREngineChanged(uint nMode, long lCameraID);

protected:
    // Asks first. Closing the window closes the central window, and with it the open camera.
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    bool InitCtrl();
    bool InitMenu();
    bool InitLayout();
    bool InitSignals();
    void Release();
    QAction* AddAction(QMenuEx& menu, int nAction);
    void FillMenu(_MAIN_MENU_ menu);
    void SetTitle();
    void SetTexts();
    void SetText(int nAction, const QString& strText);
    bool HasAll(const std::vector<int>& actions) const;
    void EnableAction(int nAction, bool bEnable);
    void SetMenuBarActionEnable(bool bEnable);
    void Apply(const _MENU_STATE_& state);
    void UpdateConnectBtn(bool bConnected);
    void UpdateContinousBtn(bool bLive);

    _WORKSPACE_PARTS_ m_parts; // until the central window has them
    QOrvCentralWindow* m_pCentral = nullptr;
    QVBoxLayout* m_pLayout = nullptr;
    QActionGroup* m_pGroup = nullptr;
    std::array<QMenuEx*, kMainMenus> m_menus{};
    QMenuEx* m_pDisplayMenu = nullptr;
    std::unique_ptr<QMenu> m_pToggles; // its actions stand in the view menu
    uint m_nRenderEngine = 2;
    CTestFireWall m_fireWall;
    bool m_bConnected = false;
    bool m_bLive = false;
    bool m_bRecording = false;
    bool m_bCapturing = false;
};
