#include "UI/MainWindow/QPingThread.h"

#include <QProcess>

namespace {

constexpr int kStartMs = 30000;
constexpr int kAnswerMs = 100;

} // namespace

QPingThread::QPingThread(QObject* parent) : QThread(parent) {
    setObjectName("kolt-ping"); // the thread's name
}

QPingThread::~QPingThread() {
    wait();
}

void QPingThread::ExitThread() {
    m_nBusy = 0;
    Q_EMIT SigEndThread();
}

void QPingThread::run() {
    if (m_nBusy.exchange(1) != 0)
        return;
    m_bResult = PingIPAddr(m_strAddress);
    ExitThread();
}

bool QPingThread::PingIPAddr(const QString& address) {
    QProcess ping;
    ping.setStandardErrorFile(QProcess::nullDevice());
    ping.start("ping", {"-c", "1", address}, QIODevice::ReadOnly);
    ping.waitForStarted(kStartMs);
    if (!ping.waitForFinished(kAnswerMs)) {
        ping.kill();
        ping.waitForFinished(kStartMs);
        return false;
    }
    // The time of an answer stands as "0.05 ms".
    return QString::fromLocal8Bit(ping.readAllStandardOutput()).contains("ms");
}
