#include "UI/Controls/SystemKind.h"

#include <QProcess>

namespace {

constexpr int kProcessWaitMs = 30000;

std::function<QString()>& Probe() {
    static std::function<QString()> probe;
    return probe;
}

QString RunUname() {
    QProcess process;
    process.start("uname", {"-a"});
    if (!process.waitForStarted(kProcessWaitMs) || !process.waitForFinished(kProcessWaitMs))
        return {};
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

} // namespace

bool IsUbuntuSystem() {
    const QString output = Probe() ? Probe()() : RunUname();
    return output.contains("Ubuntu", Qt::CaseSensitive);
}

void SetSystemProbe(std::function<QString()> probe) {
    Probe() = std::move(probe);
}
