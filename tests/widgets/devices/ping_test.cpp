// The ping, with commands of the test's own. The real one: tests/devices.
#include "DeviceListFixture.h"
#include "FakePing.h"

#include "UI/MainWindow/QForceIPWidget.h"
#include "UI/MainWindow/QPingThread.h"

#include <QElapsedTimer>
#include <atomic>
#include <pthread.h>

namespace devices {
namespace {

using Ping = WidgetFixture;

// A command that ends in time on a machine that is busy: asked again until it does.
bool AnswersSooner(const QString& address) {
    return WaitFor([&address] { return QPingThread::PingIPAddr(address); });
}

TEST_F(Ping, AnAnswerShowsItsTime) {
    const FakePing ping(folder.path(), "echo \"64 bytes from $3: icmp_seq=1 ttl=64 time=0.042 ms\"");
    EXPECT_TRUE(AnswersSooner("10.0.0.9"));
}

TEST_F(Ping, TheCommandLine) {
    const QString file = folder.filePath("arguments");
    const FakePing ping(folder.path(), ("echo \"$# $*\" >" + file).toLocal8Bit().constData());
    QByteArray written;
    ASSERT_TRUE(WaitFor([&] {
        QPingThread::PingIPAddr("10.0.0.9");
        QFile arguments(file);
        return arguments.open(QIODevice::ReadOnly) && !(written = arguments.readAll()).isEmpty();
    }));
    EXPECT_EQ(written, "3 -c 1 10.0.0.9\n");
}

TEST_F(Ping, TextWithoutATimeIsNoAnswer) {
    const FakePing ping(folder.path(), "echo unreachable");
    EXPECT_FALSE(QPingThread::PingIPAddr("10.0.0.9"));
}

TEST_F(Ping, ComplaintsDoNotCount) {
    const FakePing ping(folder.path(), "echo 'problems' >&2; exit 2");
    EXPECT_FALSE(QPingThread::PingIPAddr("10.0.0.9"));
}

TEST_F(Ping, WhoNeedsLongerThanATenthOfASecondIsSilent) {
    const QString file = folder.filePath("pid");
    const FakePing ping(
        folder.path(),
        ("echo 'time=1 ms'; echo $$ >" + file + "; exec /bin/sleep 60").toLocal8Bit().constData());
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(QPingThread::PingIPAddr("10.0.0.9"));
    EXPECT_LT(clock.elapsed(), kPatienceMs);
    QFile pid(file);
    if (pid.open(QIODevice::ReadOnly)) {
        EXPECT_FALSE(QFile::exists("/proc/" + pid.readAll().trimmed()))
            << "the command doesn't outlive its ping";
    }
}

TEST_F(Ping, NoSuchCommand) {
    const FakePing ping(folder.path(), nullptr);
    EXPECT_FALSE(QPingThread::PingIPAddr("10.0.0.9"));
    EXPECT_FALSE(QForceIPWidget::PingIPAddr("10.0.0.9")) << "nor that of another system";
}

TEST_F(Ping, OfAnotherSystem) {
    const FakePing ping(folder.path(), nullptr);
    QFile script(folder.path() + "/path/cmd");
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\n[ \"$1\" = /c ] && [ \"$2\" = 'ping 10.0.0.9 -n 1' ] && echo 'time<1ms'\n");
    script.close();
    ASSERT_TRUE(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    EXPECT_TRUE(QForceIPWidget::PingIPAddr("10.0.0.9"));
}

TEST_F(Ping, TheThreadTellsItsEnd) {
    const FakePing ping(folder.path(), "echo 'time=1 ms'");
    QPingThread thread;
    char name[32] = {};
    QObject::connect(
        &thread, &QPingThread::SigEndThread, &thread,
        [&name] { pthread_getname_np(pthread_self(), name, sizeof name); }, Qt::DirectConnection);
    EXPECT_FALSE(thread.GetPingResult()) << "before the first ping";
    thread.SetIPAddress("10.0.0.9");
    QObject here;
    int ended = 0; // told on this thread
    QObject::connect(&thread, &QPingThread::SigEndThread, &here, [&ended] { ++ended; });
    ASSERT_TRUE(WaitFor([&] {
        const int before = ended;
        thread.start();
        return WaitFor([&] { return ended == before + 1; }) && thread.wait(kPatienceMs) &&
               thread.GetPingResult();
    }));
    EXPECT_STREQ(name, "kolt-ping");
}

TEST_F(Ping, ASecondPingMeanwhileEndsAtOnce) {
    class Twice : public QPingThread {
    public:
        using QPingThread::run;
    };
    const FakePing ping(folder.path(), "exec /bin/sleep 60");
    Twice thread;
    std::atomic<int> ends{0};
    QObject::connect(
        &thread, &QPingThread::SigEndThread, &thread, [&ends] { ++ends; }, Qt::DirectConnection);
    thread.SetIPAddress("10.0.0.9");
    thread.start();
    ASSERT_TRUE(WaitFor([&thread] { return thread.isRunning(); }));
    thread.run(); // on this thread: the other one is at it, or has ended
    ASSERT_TRUE(thread.wait(kPatienceMs));
    EXPECT_GE(ends, 1);
}

} // namespace
} // namespace devices
