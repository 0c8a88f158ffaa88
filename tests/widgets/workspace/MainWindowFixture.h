// The main window on the scripted doubles.
#pragma once

#include "FakeParts.h"
#include "UI/Controls/QDockWidgetEx.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMenuBarEx.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "UI/MainWindow/QOrvCentralWindow.h"
#include "UI/MainWindow/QOrvMainWindow.h"
#include "WorkspaceFixture.h"

#include <QAction>
#include <QMenu>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace workspace {

using Numbers = std::set<int>;

class MainWindowFixture : public WorkspaceFixture {
protected:
    void SetUp() override {
        WorkspaceFixture::SetUp();
        MakeWindow(AllParts(told));
    }
    void TearDown() override {
        window.reset();
        WorkspaceFixture::TearDown();
    }

    // Shown, with its first detection round over.
    void MakeWindow(const _WORKSPACE_PARTS_& parts) {
        window.reset();
        window = std::make_unique<QOrvMainWindow>(nullptr, parts);
        ASSERT_TRUE(window->InitWidget());
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        ASSERT_TRUE(devices::WaitFor([this] { return !Central()->DeviceList()->IsDetecting(); }));
        QCoreApplication::processEvents();
    }

    QOrvCentralWindow* Central() const { return window->CentralWindow(); }
    QAction* Action(int number) const { return window->GetAction(number); }
    std::string Text(int number) const { return Action(number)->text().toStdString(); }
    void Choose(int number) const { Action(number)->trigger(); }
    // By its place in the title bar.
    QMenu* Menu(int place) const { return window->MenuBar()->actions().at(place)->menu(); }
    QMenu* DisplayMenu() const {
        for (const QAction* action : Menu(1)->actions())
            if (action->menu())
                return action->menu();
        return nullptr;
    }
    // "-" for a line, "text>" for a submenu.
    static std::vector<std::string> Lines(const QMenu* menu) {
        std::vector<std::string> lines;
        for (const QAction* action : menu->actions())
            lines.push_back(
                action->isSeparator() ? "-" : action->text().toStdString() + (action->menu() ? ">" : ""));
        return lines;
    }
    Numbers Enabled() const {
        Numbers numbers;
        for (int number = 0; number <= 36; ++number)
            if (Action(number) && Action(number)->isEnabled())
                numbers.insert(number);
        return numbers;
    }
    // Those of them that go by the selection.
    Numbers EnabledByCamera() const {
        Numbers numbers;
        for (const int number : Enabled())
            if (number <= 5 ? number != 1 : number >= 21 && number <= 29)
                numbers.insert(number);
        return numbers;
    }
    void SetAll(bool enabled) const {
        for (int number = 0; number <= 29; ++number)
            if (Action(number))
                Action(number)->setEnabled(enabled);
        DisplayMenu()->setEnabled(enabled);
    }

    Told told; // by the stand-ins of the parts
    std::unique_ptr<QOrvMainWindow> window;
};

} // namespace workspace
