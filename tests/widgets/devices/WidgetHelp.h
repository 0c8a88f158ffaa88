// Waiting, pictures and modal dialogs in tests of windows.
#pragma once

#include <QApplication>
#include <QString>
#include <QTimer>
#include <QTreeWidget>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace devices {

constexpr int kPatienceMs = 20000;

// Handles events until it is true; false after kPatienceMs.
bool WaitFor(const std::function<bool()>& condition);

// The folder for pictures that are kept.
QString PicturePath(const QString& name);
void KeepPicture(QWidget& window, const QString& name);

// The look of the program; a second time does nothing.
void ApplyLook();

// All items as text, indented by their level.
std::vector<std::string> TreeLines(QTreeWidget* tree);

// Once a modal dialog of this class is open, `use` is called with it; it must close it.
template<typename Dialog>
class DialogWatch {
public:
    explicit DialogWatch(std::function<void(Dialog&)> use) : m_use(std::move(use)) {
        m_timer.callOnTimeout([this] {
            auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            if (!dialog || !dialog->isVisible() || m_seen > 0)
                return;
            ++m_seen;
            m_timer.stop();
            m_use(*dialog);
        });
        m_timer.start(5);
    }
    int Seen() const { return m_seen; }

private:
    std::function<void(Dialog&)> m_use;
    QTimer m_timer;
    int m_seen = 0;
};

} // namespace devices
