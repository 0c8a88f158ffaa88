// Asks, beside the main thread, whether anybody answers at an address.
#pragma once

#include <QString>
#include <QThread>
#include <atomic>

// One start is one ping. Set the address before the start, read the result after SigEndThread. The owner
// makes and deletes it; the destructor waits for a running ping, about a tenth of a second at most once the
// command has started.
class QPingThread : public QThread {
    Q_OBJECT

public:
    explicit QPingThread(QObject* parent = nullptr);
    ~QPingThread() override;

    void SetIPAddress(const QString& address) { m_strAddress = address; }
    // True: somebody answered at once.
    bool GetPingResult() const { return m_bResult; }
    // Marks the end of a ping and tells it.
    void ExitThread();
    // Runs "ping -c 1 address" (looked up in PATH) on the calling thread. Who needs more than 100 ms for the
    // whole command counts as silent.
    static bool PingIPAddr(const QString& address);

Q_SIGNALS:
    void SigEndThread();

protected:
    void run() override;

private:
    std::atomic<int32_t> m_nBusy{0};
    std::atomic<bool> m_bResult{false};
    QString m_strAddress; // written before a start, read by the ping
};
