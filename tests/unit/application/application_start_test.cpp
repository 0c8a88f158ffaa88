#include "Common/ApplicationStart.h"

#include "Camera/QCamera.h"
#include "Camera/QCameraContainer.h"
#include "Camera/QFrameBufManager.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "DeviceRecords.h"
#include "FakeCommands.h"
#include "support/CameraXml.h"
#include "support/PlatformDoubles.h"

#include <QDir>
#include <QFile>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QTextCodec>
#include <gmock/gmock.h>
#include <string>
#include <vector>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

std::vector<std::string> g_debugLog;

void Listen(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtDebugMsg)
        g_debugLog.push_back(text.toStdString());
}

// --- plug-ins and codec

TEST(InitializeCodecTest, AddsTheFolderOfPluginsBesideTheWorkingFolder) {
    const QString home = QDir::currentPath();
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    const QStringList before = QCoreApplication::libraryPaths();
    InitializeCodec();
    EXPECT_EQ(QCoreApplication::libraryPaths(), before) << "there is no such folder";
    ASSERT_TRUE(QDir().mkdir("plugins"));
    InitializeCodec();
    const QString added = QDir("plugins").canonicalPath();
    EXPECT_THAT(QCoreApplication::libraryPaths(), Contains(added));
    QCoreApplication::removeLibraryPath(added);
    QDir::setCurrent(home);
}

TEST(InitializeCodecTest, LeavesTheDefaultCodecAlone) {
    QTextCodec* const before = QTextCodec::codecForLocale();
    InitializeCodec();
    EXPECT_EQ(QTextCodec::codecForLocale(), before);
    EXPECT_NE(QTextCodec::codecForName("GBK"), nullptr);
}

// --- font

class ApplicationFont : public testing::Test {
protected:
    void SetUp() override {
        m_before = QGuiApplication::font();
        QFont font("Some Family");
        font.setPixelSize(17);
        QGuiApplication::setFont(font);
        g_debugLog.clear();
        m_handler = qInstallMessageHandler(Listen);
    }
    void TearDown() override {
        qInstallMessageHandler(m_handler);
        QGuiApplication::setFont(m_before);
    }
    // Any font of this machine.
    static QString SomeFontFile() { return KOLT_TEST_FONT; }

private:
    QFont m_before;
    QtMessageHandler m_handler = nullptr;
};

TEST_F(ApplicationFont, AMissingFileGivesTheFallBackInTheSameSize) {
    InitApplicationFont("/nonexistent/segoeui.ttf");
    EXPECT_EQ(QGuiApplication::font().family(), "Fangsong Ti");
    EXPECT_EQ(QGuiApplication::font().pixelSize(), 17);
    EXPECT_THAT(g_debugLog, ElementsAre("addApplicationFont failed"));
}

TEST_F(ApplicationFont, AFileThatIsNoFontGivesTheFallBack) {
    const QTemporaryDir folder;
    QFile file(folder.filePath("segoeui.ttf"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(2000, 'x'));
    file.close();
    InitApplicationFont(file.fileName());
    EXPECT_EQ(QGuiApplication::font().family(), "Fangsong Ti");
    EXPECT_THAT(g_debugLog, ElementsAre("addApplicationFont failed"));
}

TEST_F(ApplicationFont, TheFirstFamilyOfTheFileAt13Points) {
    const int id = QFontDatabase::addApplicationFont(SomeFontFile());
    ASSERT_NE(id, -1);
    const QString family = QFontDatabase::applicationFontFamilies(id).value(0);
    ASSERT_FALSE(family.isEmpty());
    InitApplicationFont(SomeFontFile());
    EXPECT_EQ(QGuiApplication::font().family(), family);
    EXPECT_EQ(QGuiApplication::font().pointSize(), 13);
    EXPECT_THAT(g_debugLog, ElementsAre("addApplicationFont success"));
    QFontDatabase::removeApplicationFont(id);
}

TEST_F(ApplicationFont, AFontWithoutFamiliesIsASuccessThatChangesNothing) {
    const int id = QFontDatabase::addApplicationFont(SomeFontFile());
    ASSERT_NE(id, -1);
    QFontDatabase::removeApplicationFont(id); // the id is left without a family
    ASSERT_THAT(QFontDatabase::applicationFontFamilies(id), IsEmpty());
    UseApplicationFont(id);
    EXPECT_EQ(QGuiApplication::font().family(), "Some Family");
    EXPECT_EQ(QGuiApplication::font().pixelSize(), 17);
    EXPECT_THAT(g_debugLog, ElementsAre("addApplicationFont success"));
}

// --- singletons

TEST(InitOrvTest, IsTrueOnceTheFunctionsAreThere) {
    EXPECT_TRUE(InitORV());
    EXPECT_TRUE(InitORV());
    QFunction::Release();
}

TEST(InitOrvTest, IsFalseWithoutMemory) {
    QFunction::Release();
    {
        const devices::FailAllocationsOf no(sizeof(QFunction));
        EXPECT_FALSE(InitORV());
    }
    EXPECT_TRUE(InitORV());
    QFunction::Release();
}

// --- going down

class ClearOrvTest : public testing::Test {
protected:
    void SetUp() override {
        QLocalCfg::SetDirectory(folder.path());
        doubles.Reset(support::CameraXml());
        support::FillCameraRegisters(doubles.Port());
    }
    void TearDown() override {
        QFunction::Release();
        QLocalCfg::ReleaseInstance();
        QCameraContainer::ReleaseInstance();
        QFrameBufManager::ReleaseInstance();
        QLocalCfg::SetDirectory({});
        doubles.Reset();
    }
    void OpenACamera() {
        QCamera* const camera = QCamera::NewInstance();
        camera->SetCameraID(QFunction::GetCameraIDIndex());
        QCameraContainer::Instance()->AddCamera(camera);
        ASSERT_EQ(camera->OpenCamera(), 0);
    }
    QStringList Files() const { return QDir(folder.path()).entryList({"*.ini"}, QDir::Files, QDir::Name); }

    QTemporaryDir folder;
    app_test::FakeCommands commands;
    support::PlatformDoubles& doubles = support::PlatformDoubles::Get();
};

TEST_F(ClearOrvTest, EndsTheToolsFirstThenReleasesInOrder) {
    commands.List("UID PID PPID C STIME TTY TIME CMD\n"
                  "root        4242       1  0 10:00 ?        00:00:00 ./ORV_IP_Config ENG\n"
                  "root        4343       1  0 10:00 ?        00:00:00 ./ORV_Firmware_Update ENG\n");
    std::vector<std::string> order;
    QObject::connect(QFunction::Instance(), &QObject::destroyed, [&] {
        for (const std::string& line : commands.Run())
            order.push_back(line);
        order.push_back("functions");
    });
    QObject::connect(QLocalCfg::Instance(), &QObject::destroyed, [&] {
        EXPECT_EQ(Files(), QStringList({"LangConfig.ini", "LocalConfig.ini"})) << "written by then";
        order.push_back("settings");
    });
    ASSERT_NO_FATAL_FAILURE(OpenACamera());
    doubles.OnCall("OV_CC_CloseDevice", [&] { order.push_back("cameras"); });
    EXPECT_EQ(Files(), QStringList());
    ClearORV();
    EXPECT_THAT(order, ElementsAre("ps -ef", "kill -9 4242", "ps -ef", "kill -9 4343", "functions",
                                   "settings", "cameras"));
    EXPECT_EQ(doubles.OpenHandles('c'), 0);
    EXPECT_EQ(commands.Run().size(), 4U);
}

TEST_F(ClearOrvTest, WithoutToolsNothingIsKilled) {
    // The names are those of the tools' processes, not of the files that the menu starts.
    commands.List("root        4242       1  0 10:00 ?        00:00:00 ./KOLT_IP_Config ENG\n"
                  "root        4343       1  0 10:00 ?        00:00:00 ./KOLT_Firmware_Update ENG\n");
    ClearORV();
    EXPECT_THAT(commands.Run(), ElementsAre("ps -ef", "ps -ef"));
}

TEST_F(ClearOrvTest, TwiceIsSafe) {
    commands.List("");
    QFunction::Instance();
    QLocalCfg::Instance();
    ASSERT_NO_FATAL_FAILURE(OpenACamera());
    ClearORV();
    EXPECT_EQ(QFile::remove(folder.filePath("LocalConfig.ini")), true);
    ClearORV();
    EXPECT_EQ(Files(), QStringList({"LangConfig.ini"})) << "nothing is made anew only to be released";
    EXPECT_THAT(commands.Run(), ElementsAre("ps -ef", "ps -ef", "ps -ef", "ps -ef"));
}

} // namespace
