// The central window on the scripted doubles, with cameras that the first detection round found.
#pragma once

#include "UI/Controls/QImageButton.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvToolBar.h"
#include "UI/MainWindow/QPrevTitleBar.h"
#include "UI/MainWindow/QRenderWidget.h"
#include "WorkspaceFixture.h"

#include <QDialog>
#include <QStringList>
#include <memory>
#include <vector>

namespace central {

// What the parts were told, in order: "editor open 3", "panel camera 3" and so on.
class ScriptedParts {
public:
    _WORKSPACE_PARTS_ Make();
    std::vector<std::string> Told();

    bool optionsBuilt = true;
    bool optionsAccepted = false;
    _OPTIONS_CALL_ lastOptions;
    std::function<void()> onOptions;   // while the options are open
    QDialog* panel = nullptr;          // while it exists
    std::function<void()> onPanelExec; // once the panel is open; must close it
    void Tell(const std::string& what) { m_told.push_back(what); }

private:
    std::vector<std::string> m_told;
};

class Central : public workspace::WorkspaceFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    // The window with cameras named "east", "west"..., as many as asked for.
    void Make(int cameras = 1, _WORKSPACE_PARTS_ parts = {});
    long Id(int number) const { return first + number - 1; }
    std::string Name(int number) const;
    void Select(int number);
    void Do(int action) { window->OnToolBarBtnClicked(action); }
    bool Enabled(int action) const { return window->ToolBar()->button(action)->isEnabled(); }
    // Log lines since the last call: "level text".
    std::vector<std::string> Log();
    // Live view of the first camera, with a frame received.
    void Live();
    QString Title() const;

    QTemporaryDir files;
    std::unique_ptr<QMainWindow> frame; // what holds the window in place of the main window
    QOrvCentralWindow* window = nullptr;

private:
    QTemporaryDir m_home;
    QByteArray m_homeBefore;
    std::vector<std::string> m_log;
};

} // namespace central
