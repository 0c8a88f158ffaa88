#include "Common/ApplicationStart.h"
#include "UI/Controls/Look.h"
#include "UI/MainWindow/QOrvMainWindow.h"

#include <QApplication>
#include <QIcon>
#include <new>
#include <optional>

// Always 0: a start that fails ends the program without a word, and the event loop's result is nobody's.
int main(int argc, char** argv) {
    Look::BeforeApplication();
    QApplication application(argc, argv);
    Look::Apply(application);
    InitializeCodec();
    InitApplicationFont(QCoreApplication::applicationDirPath() + "/segoeui.ttf");
    QApplication::setWindowIcon(QIcon(":/ORV/Resources/ORV.ico"));
    if (!InitORV())
        return 0;
    std::optional<QOrvMainWindow> window;
    try {
        window.emplace();
    } catch (const std::bad_alloc&) {
        return 0;
    }
    if (!window->InitWidget())
        return 0; // deliberate: without ClearORV
    window->setVisible(true);
    window->show();
    QApplication::exec();
    ClearORV();
    return 0;
}
