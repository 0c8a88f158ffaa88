// kolt_gallery: every control, dialog and state of the widget kit, to look at or as screenshots.

#include "Pages.h"
#include "StateTable.h"

#include "UI/Controls/ClippedText.h"
#include "UI/Controls/Look.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QTabWidget>
#include <QTextStream>
#include <QTranslator>
#include <QWindow>
#include <memory>

namespace {

constexpr int kShowMs = 5000; // at most, until a window is on the screen

// Has to be known before the application object exists.
void TakeScale(int argc, char** argv) {
    for (int i = 1; i + 1 < argc; ++i)
        if (QLatin1String(argv[i]) == QLatin1String("--scale"))
            qputenv("QT_SCALE_FACTOR", argv[i + 1]);
}

void Settle(QWidget& window) {
    QElapsedTimer clock;
    clock.start();
    while (!(window.windowHandle() && window.windowHandle()->isExposed()) && clock.elapsed() < kShowMs)
        QApplication::processEvents(QEventLoop::AllEvents, 20);
    QApplication::setActiveWindow(&window);
    for (int i = 0; i < 3; ++i)
        QApplication::processEvents();
}

class Photographer {
public:
    Photographer(QString folder, QString suffix) : m_folder(std::move(folder)), m_suffix(std::move(suffix)) {}

    bool Take(QWidget& window, const QString& name) {
        window.move(40, 40);
        window.show();
        Settle(window);
        for (StateTable* table : Tables(window))
            table->FreezeStates();
        QApplication::processEvents();
        for (const QString& line : Look::ClippedTexts(window))
            Complain(name + ": " + line);
        const QString file = QDir(m_folder).filePath(name + m_suffix + ".png");
        if (!window.grab().save(file))
            Complain("can't write " + file);
        return m_good;
    }

    bool IsGood() const { return m_good; }

private:
    static QList<StateTable*> Tables(QWidget& window) {
        QList<StateTable*> tables;
        for (QWidget* widget : window.findChildren<QWidget*>())
            if (auto* table = dynamic_cast<StateTable*>(widget))
                tables += table;
        return tables;
    }

    void Complain(const QString& line) {
        QTextStream(stderr) << line << '\n';
        m_good = false;
    }

    const QString m_folder;
    const QString m_suffix;
    bool m_good = true;
};

int TakeAll(const QString& folder, const QString& suffix) {
    QDir().mkpath(folder);
    Photographer photographer(folder, suffix);
    for (const auto& pages : {ControlPages(), PicturePages(), WindowPages()}) {
        for (const Page& page : pages) {
            const std::unique_ptr<QWidget> window(page.make());
            if (!page.title.isEmpty())
                window->resize(900, 620);
            photographer.Take(*window, page.name);
        }
    }
    return photographer.IsGood() ? 0 : 1;
}

int ShowAll() {
    QTabWidget tabs;
    tabs.setWindowTitle("KOLT CAPTURE: controls");
    for (const auto& pages : {ControlPages(), PicturePages()})
        for (const Page& page : pages)
            tabs.addTab(page.make(), page.title);
    tabs.resize(960, 680);
    tabs.show();
    std::vector<std::unique_ptr<QWidget>> windows;
    for (const Page& page : WindowPages()) {
        windows.emplace_back(page.make());
        windows.back()->show();
    }
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv) {
    TakeScale(argc, argv);
    Look::BeforeApplication();
    QApplication application(argc, argv);
    Look::Apply(application);
    QCommandLineParser parser;
    parser.setApplicationDescription("Shows the controls, dialogs and states of KOLT CAPTURE.");
    parser.addHelpOption();
    parser.addOption({"screenshot-dir",
                      "Write a picture of each page and window there, and end. Fails when a text is clipped.",
                      "folder"});
    parser.addOption(
        {"language", "en, or zh for Chinese (KOLT_en.qm beside the program).", "language", "en"});
    parser.addOption({"scale", "Scale of everything, such as 1.5.", "factor", "1"});
    parser.process(application);

    QTranslator client;
    QTranslator qt;
    if (parser.value("language") == "zh") {
        const QString folder = QCoreApplication::applicationDirPath();
        if (!client.load(folder + "/KOLT_en.qm") || !qt.load(folder + "/qt_zh_CN.qm")) {
            QTextStream(stderr) << "no translation beside the program\n";
            return 2;
        }
        QCoreApplication::installTranslator(&client);
        QCoreApplication::installTranslator(&qt);
    }
    if (!parser.isSet("screenshot-dir"))
        return ShowAll();
    return TakeAll(parser.value("screenshot-dir"),
                   QString("-%1-%2").arg(parser.value("language"), parser.value("scale")));
}
