// The main window with the real libraries, virtual cameras beside it in a network of their own, and somebody
// who answers the dialogs.
#pragma once

#include "Camera/CCameraRef.h"
#include "UI/MainWindow/QOrvMainWindow.h"
#include "VirtualCamera.h"
#include "support/NetworkNamespace.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

class QTreeWidget;
class QTreeWidgetItem;

namespace program {

constexpr int kPatienceMs = 30000;

// Handles events until it is true; false after kPatienceMs.
bool WaitFor(const std::function<bool()>& condition);

// Answers each modal dialog as soon as it is open, and keeps what the messages said.
class Answers {
public:
    Answers();

    // The path that the next file dialogs get; they are cancelled while it is empty.
    QString file;
    // Texts of messages since the last call.
    std::vector<std::string> TakeMessages();

private:
    void Look();

    QTimer m_timer;
    std::vector<std::string> m_messages;
};

// A camera of the test and what is known of it in the program.
struct Camera {
    vcam::Config config;
    std::unique_ptr<vcam::VirtualCamera> device;
    bool plugged = false;
};

class Desk : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Before Open. Loopback addresses in order; the first 16 are looked for by the program.
    vcam::Config& Add(const std::string& name);
    void Plug(Camera& camera);
    void Unplug(Camera& camera); // like a pulled cable
    // Shows the window, with all cameras plugged in and found.
    void Open();

    // The registry's id of the camera; -1 while the program doesn't know it.
    static long IdOf(const Camera& camera);
    QTreeWidget* Tree() const;
    QTreeWidgetItem* ItemOf(const Camera& camera) const;
    // By clicks of the mouse.
    void Select(const Camera& camera);
    void DoubleClick(const Camera& camera);
    void Click(int action); // a button of the tool bar
    bool Enabled(int action) const;
    void Refresh(); // a whole detection round
    // Looks for cameras until it is true: on a busy machine an answer may come too late for one round.
    bool LookUntil(const std::function<bool()>& condition);
    QOrvCentralWindow& Central() const { return *window->CentralWindow(); }

    QTemporaryDir folder;
    std::deque<Camera> cameras;
    std::unique_ptr<Answers> answers;
    std::unique_ptr<QOrvMainWindow> window;
    kolt::test::NetworkNamespace network; // where the program lives

private:
    std::unique_ptr<kolt::test::NamespaceScope> m_inside;
};

} // namespace program
