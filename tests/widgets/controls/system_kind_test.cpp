#include "UI/Controls/SystemKind.h"

#include "KitFixture.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

class SystemKind : public testing::Test {
protected:
    ~SystemKind() override {
        SetSystemProbe(nullptr);
        qputenv("PATH", m_path);
    }

    // Puts a program of this name and text before the system's own.
    void Pretend(const QByteArray& script) {
        QFile file(m_folder.filePath("uname"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("PATH", m_folder.path().toLocal8Bit() + ":" + m_path);
    }

    const QByteArray m_path = qgetenv("PATH");
    QTemporaryDir m_folder;
};

TEST_F(SystemKind, LooksForTheNameCaseSensitively) {
    const struct {
        const char* output;
        bool ubuntu;
    } rows[] = {{"Linux host 5.15.0-91-generic #101-Ubuntu SMP x86_64 GNU/Linux", true},
                {"Linux ubuntu 6.1.0 #1 SMP x86_64 GNU/Linux", false},
                {"Linux UBUNTU", false},
                {"", false}};
    for (const auto& row : rows) {
        SetSystemProbe([&] { return QString(row.output); });
        EXPECT_EQ(IsUbuntuSystem(), row.ubuntu) << row.output;
    }
}

TEST_F(SystemKind, RunsUnameWithAllOfItsFacts) {
    Pretend("[ \"$1\" = -a ] && echo Linux host Ubuntu");
    EXPECT_TRUE(IsUbuntuSystem());
    Pretend("[ \"$1\" = -a ] && echo Linux host Debian");
    EXPECT_FALSE(IsUbuntuSystem());
}

TEST_F(SystemKind, ProgramThatCannotBeStartedMeansNo) {
    qputenv("PATH", "/nonexistent");
    EXPECT_FALSE(IsUbuntuSystem());
}
