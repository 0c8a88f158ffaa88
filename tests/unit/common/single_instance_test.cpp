#include "Common/SingleInstance.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
int g_lockError = 0; // what each wish for a lock fails with; 0: the system decides
} // namespace

extern "C" {
int __real_fcntl(int descriptor, int command, ...);
int __wrap_fcntl(int descriptor, int command, ...);

int __wrap_fcntl(int descriptor, int command, ...) {
    va_list more;
    va_start(more, command);
    void* argument = va_arg(more, void*);
    va_end(more);
    if (command == F_SETLK && g_lockError != 0) {
        errno = g_lockError;
        return -1;
    }
    return __real_fcntl(descriptor, command, argument);
}
}

namespace {

QByteArray Content(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

TEST(ExecutableName, IsTheBaseNameOfTheLink) {
    EXPECT_EQ(currentExeName(), QFileInfo(QCoreApplication::applicationFilePath()).fileName().toStdString());
}

TEST(ExecutableName, LinksOfAllKinds) {
    const QTemporaryDir folder;
    const std::string link = folder.filePath("link").toStdString();
    EXPECT_EQ(ExeNameOfLink(link.c_str()), ""); // absent
    const struct {
        const char* target;
        const char* name;
    } cases[] = {{"/opt/kolt/KOLT_CAPTURE", "KOLT_CAPTURE"}, {"KOLT_CAPTURE", ""}, {"/opt/kolt/", ""}};
    for (const auto& c : cases) {
        ASSERT_EQ(symlink(c.target, link.c_str()), 0);
        EXPECT_EQ(ExeNameOfLink(link.c_str()), c.name) << c.target;
        unlink(link.c_str());
    }
}

TEST(PidFile, HoldsTheProcessIdAndNothingOfBefore) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("kolt.pid");
    QFile before(path);
    ASSERT_TRUE(before.open(QIODevice::WriteOnly));
    before.write("99999999999999 of an earlier day");
    before.close();
    ASSERT_TRUE(TakePidFile(path.toStdString()));
    EXPECT_EQ(Content(path), QByteArray::number(static_cast<qlonglong>(getpid())));
}

TEST(PidFile, AnotherProcessIsRefusedWhileThisOneLives) {
    const QTemporaryDir folder;
    const std::string path = folder.filePath("kolt.pid").toStdString();
    ASSERT_TRUE(TakePidFile(path));
    EXPECT_EXIT(std::exit(TakePidFile(path) ? 0 : 7), testing::ExitedWithCode(7), "");
    EXPECT_EQ(Content(QString::fromStdString(path)), QByteArray::number(static_cast<qlonglong>(getpid())));
}

TEST(PidFile, IsFreeAgainWhenItsProcessHasEnded) {
    const QTemporaryDir folder;
    const std::string path = folder.filePath("kolt.pid").toStdString();
    const pid_t child = fork();
    if (child == 0)
        _exit(TakePidFile(path) ? 0 : 1);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    EXPECT_TRUE(TakePidFile(path));
}

TEST(PidFile, ThatCannotBeMadeIsAFailure) {
    const QTemporaryDir folder;
    testing::internal::CaptureStdout();
    EXPECT_FALSE(TakePidFile(folder.filePath("absent/kolt.pid").toStdString()));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Open file failed, error : No such file or directory");
}

TEST(PidFile, ThatCannotBeWrittenIsAFailure) {
    testing::internal::CaptureStdout();
    EXPECT_FALSE(TakePidFile("/dev/full")); // takes the lock, refuses the text
    const std::string told = testing::internal::GetCapturedStdout();
    EXPECT_NE(told.find("Write file failed, file: /dev/full, error: "), std::string::npos) << told;
}

struct LockFailure {
    int error;
    bool taken;
};

class PidFileLock : public testing::TestWithParam<LockFailure> {
protected:
    void TearDown() override { g_lockError = 0; }
};

TEST_P(PidFileLock, FailsOnlyWhenAnotherHoldsIt) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("kolt.pid");
    g_lockError = GetParam().error;
    testing::internal::CaptureStdout();
    EXPECT_EQ(TakePidFile(path.toStdString()), GetParam().taken);
    const std::string told = testing::internal::GetCapturedStdout();
    const QByteArray ownId = QByteArray::number(static_cast<qlonglong>(getpid()));
    EXPECT_EQ(Content(path), GetParam().taken ? ownId : QByteArray());
    EXPECT_EQ(told,
              GetParam().taken
                  ? std::string()
                  : path.toStdString() + " already locked, error: " + std::strerror(GetParam().error) + "\n");
}

INSTANTIATE_TEST_SUITE_P(Errors, PidFileLock,
                         testing::Values(LockFailure{EAGAIN, false}, LockFailure{EACCES, false},
                                         LockFailure{ENOLCK, true}, LockFailure{EINTR, true}));

} // namespace
