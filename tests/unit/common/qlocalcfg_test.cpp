#include "Common/QLocalCfg.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QVariant>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace {

class Settings : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        QLocalCfg::SetDirectory(m_folder.path());
    }
    void TearDown() override {
        QLocalCfg::ReleaseInstance();
        QLocalCfg::SetDirectory({});
    }

    void Write(const char* name, const QByteArray& text) {
        QFile file(m_folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QString Text(const char* name) {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString("(missing)");
    }

    QTemporaryDir m_folder;
};

TEST_F(Settings, FirstStartHasTheDefaultsAndMakesTheOutputFolder) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    ASSERT_NE(cfg, nullptr);
    EXPECT_EQ(cfg->GetRemoteCamIP(), "0.0.0.0");
    EXPECT_EQ(cfg->GetUserLevel(), 0);
    EXPECT_FALSE(cfg->GetAutoScanNewDev());
    EXPECT_EQ(cfg->GetSaveMode(), 0);
    EXPECT_EQ(cfg->GetDataOutputFolder(), m_folder.path() + "/Data");
    EXPECT_EQ(cfg->GetRecdingVideoFormat(), 0);
    EXPECT_EQ(cfg->GetVideoQualityType(), 0);
    EXPECT_EQ(cfg->GetVideoQuality(), 40);
    EXPECT_FALSE(cfg->GetIsEnableFixedPlaybackSpeed());
    EXPECT_EQ(cfg->GetFixedPlaybackSpeed(), 25);
    EXPECT_EQ(cfg->GetImgSaveFormat(), 1);
    EXPECT_EQ(cfg->GetImgQualityType(), 0);
    EXPECT_EQ(cfg->GetImgQuality(), 40);
    EXPECT_EQ(cfg->GetImgSaveMode(), 0);
    EXPECT_EQ(cfg->GetImgSaveSpanFrames(), 1);
    EXPECT_FALSE(cfg->GetCheckImgSaveFixedFrames());
    EXPECT_EQ(cfg->GetImgSaveFixedFramesNum(), 1000);
    EXPECT_EQ(cfg->GetImgSaveSpanTime(), 1);
    EXPECT_EQ(cfg->GetImgSaveSpanTimeUnit(), 1);
    EXPECT_FALSE(cfg->GetCheckImgSaveFixedTimes());
    EXPECT_EQ(cfg->GetImgSaveFixedTimeNum(), 5);
    EXPECT_EQ(cfg->GetImgSaveFixedTimeUnit(), 2);
    EXPECT_EQ(cfg->GetImgSavePreFileName(), "Image_");
    EXPECT_EQ(cfg->GetImgSaveFileNameIndexType(), 0);
    EXPECT_TRUE(cfg->GetAutoCheckNetwork());
    EXPECT_TRUE(cfg->GetAutoCheckThrowFrame());
    EXPECT_EQ(cfg->GetSDKBufferSize(), 6);
    EXPECT_EQ(cfg->GetImgSaveBufferSize(), 3);
    EXPECT_EQ(cfg->GetViewShowFlage(), 7);
    EXPECT_EQ(cfg->GetStatusShowFlage(), 79);
    EXPECT_TRUE(cfg->IsFirstStartClient());
    EXPECT_EQ(cfg->GetRenderEngine(), 0);
    EXPECT_EQ(cfg->GetLanguageVersion(), 0);
    EXPECT_TRUE(QDir(m_folder.filePath("Data")).exists());
    EXPECT_FALSE(QFile::exists(m_folder.filePath("LocalConfig.ini"))) << "loading makes no file";

    QLocalCfg::ReleaseInstance();
    EXPECT_TRUE(Text("LocalConfig.ini").contains("FirstStartClient=false"));
    EXPECT_TRUE(Text("LangConfig.ini").contains("Language=0"));
    EXPECT_FALSE(QLocalCfg::Instance()->IsFirstStartClient());
}

TEST_F(Settings, EverySetterComesBackAfterARestart) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    cfg->SetRemoteCamIP("10.2.3.4");
    cfg->SetUserLevel(2);
    cfg->SetAutoScanNewDev(true);
    cfg->SetSaveMode(1);
    cfg->SetDataOutputFolder("/data/Bilder \xC3\xA4");
    cfg->SetRecdingVideoFormat(2);
    cfg->SetVideoQualityType(1);
    cfg->SetVideoQuality(77);
    cfg->SetEnableFixedPlaybackSpeeed(true);
    cfg->SetFixedPlaybackSpeed(60);
    cfg->SetImgSaveFormat(2);
    cfg->SetImgQualityType(2);
    cfg->SetImgQuality(90);
    cfg->SetImgSaveMode(1);
    cfg->SetImgSaveSpanFrames(9);
    cfg->SetCheckImgSaveFixedFrames(true);
    cfg->SetImgSaveFixedFramesNum(12);
    cfg->SetImgSaveSpanTime(3);
    cfg->SetImgSaveSpanTimeUnit(3);
    cfg->SetCheckImgSaveFixedTimes(true);
    cfg->SetImgSaveFixedTimeNum(8);
    cfg->SetImgSaveFixedTimeUnit(1);
    cfg->SetImgSavePreFileName("a=b;c,\"d\"");
    cfg->SetImgSaveFileNameIndexType(1);
    cfg->SetAutoCheckNetwork(false);
    cfg->SetAutoCheckThrowFrame(false);
    cfg->SetSDKBufferSize(20);
    cfg->SetImgSaveBufferSize(21);
    cfg->SetViewShowFlage(3);
    cfg->SetStatusShowFlage(0x7FFFFFFF);
    cfg->SetRenderEngine(2);
    cfg->SetLanguageVersion(1);
    QLocalCfg::ReleaseInstance();

    cfg = QLocalCfg::Instance();
    EXPECT_EQ(cfg->GetRemoteCamIP(), "10.2.3.4");
    EXPECT_EQ(cfg->GetUserLevel(), 2);
    EXPECT_TRUE(cfg->GetAutoScanNewDev());
    EXPECT_EQ(cfg->GetSaveMode(), 1);
    EXPECT_EQ(cfg->GetDataOutputFolder(), "/data/Bilder \xC3\xA4");
    EXPECT_EQ(cfg->GetRecdingVideoFormat(), 2);
    EXPECT_EQ(cfg->GetVideoQualityType(), 1);
    EXPECT_EQ(cfg->GetVideoQuality(), 77);
    EXPECT_TRUE(cfg->GetIsEnableFixedPlaybackSpeed());
    EXPECT_EQ(cfg->GetFixedPlaybackSpeed(), 60);
    EXPECT_EQ(cfg->GetImgSaveFormat(), 2);
    EXPECT_EQ(cfg->GetImgQualityType(), 2);
    EXPECT_EQ(cfg->GetImgQuality(), 90);
    EXPECT_EQ(cfg->GetImgSaveMode(), 1);
    EXPECT_EQ(cfg->GetImgSaveSpanFrames(), 9);
    EXPECT_TRUE(cfg->GetCheckImgSaveFixedFrames());
    EXPECT_EQ(cfg->GetImgSaveFixedFramesNum(), 12);
    EXPECT_EQ(cfg->GetImgSaveSpanTime(), 3);
    EXPECT_EQ(cfg->GetImgSaveSpanTimeUnit(), 3);
    EXPECT_TRUE(cfg->GetCheckImgSaveFixedTimes());
    EXPECT_EQ(cfg->GetImgSaveFixedTimeNum(), 8);
    EXPECT_EQ(cfg->GetImgSaveFixedTimeUnit(), 1);
    EXPECT_EQ(cfg->GetImgSavePreFileName(), "a=b;c,\"d\"");
    EXPECT_EQ(cfg->GetImgSaveFileNameIndexType(), 1);
    EXPECT_FALSE(cfg->GetAutoCheckNetwork());
    EXPECT_FALSE(cfg->GetAutoCheckThrowFrame());
    EXPECT_EQ(cfg->GetSDKBufferSize(), 20);
    EXPECT_EQ(cfg->GetImgSaveBufferSize(), 21);
    EXPECT_EQ(cfg->GetViewShowFlage(), 3);
    EXPECT_EQ(cfg->GetStatusShowFlage(), 0x7FFFFFFF);
    EXPECT_EQ(cfg->GetRenderEngine(), 2);
    EXPECT_EQ(cfg->GetLanguageVersion(), 1);
}

TEST_F(Settings, AnExistingFileWithoutATextGivesTheEmptyText) {
    // QSettings keeps its own group "General" apart from ours by the percent sign.
    Write("LocalConfig.ini", "[%General]\nUserLevel=1\n");
    QLocalCfg* cfg = QLocalCfg::Instance();
    EXPECT_EQ(cfg->GetImgSavePreFileName(), "");
    EXPECT_EQ(cfg->GetDataOutputFolder(), "");
    EXPECT_EQ(cfg->GetUserLevel(), 1);
    EXPECT_EQ(cfg->GetVideoQuality(), 40) << "numbers keep their defaults";
    EXPECT_TRUE(cfg->IsFirstStartClient()) << "the entry is missing";
    EXPECT_FALSE(QDir(m_folder.filePath("Data")).exists());
}

TEST_F(Settings, HandEditedValues) {
    Write("LocalConfig.ini",
          "[Recording]\nFixedPlaybackSpeed=25.7\nVideoQuality=lots\nImgSaveSpanFrames=0\n"
          "ImgSaveFixedFrames=maybe\nImgQuality=99999999999999\n[Common]\nFirstStartClient=true\n");
    QLocalCfg* cfg = QLocalCfg::Instance();
    EXPECT_EQ(cfg->GetFixedPlaybackSpeed(), 25);
    EXPECT_EQ(cfg->GetVideoQuality(), 0) << "not a number";
    EXPECT_EQ(cfg->GetImgSaveSpanFrames(), 0) << "not validated";
    EXPECT_EQ(cfg->GetImgQuality(), QVariant("99999999999999").toInt())
        << "beyond an int: whatever toInt makes of it";
    EXPECT_TRUE(cfg->IsFirstStartClient());
    cfg->SaveDataToIniFile();
    EXPECT_TRUE(Text("LocalConfig.ini").contains("FirstStartClient=false"));
}

TEST_F(Settings, PlaybackSpeedsThatNoIntHolds) {
    for (const char* value : {"1e30", "-1e30", "nan", "inf"}) {
        Write("LocalConfig.ini", QByteArray("[Recording]\nFixedPlaybackSpeed=") + value + "\n");
        EXPECT_EQ(QLocalCfg::Instance()->GetFixedPlaybackSpeed(), 0) << value;
        QFile::remove(m_folder.filePath("LocalConfig.ini"));
        QLocalCfg::ReleaseInstance();
        QFile::remove(m_folder.filePath("LocalConfig.ini"));
    }
}

TEST_F(Settings, GarbageFileGivesTheDefaults) {
    Write("LocalConfig.ini", QByteArray("\x00\xFF\x01[[[[\n=\n", 10));
    Write("LangConfig.ini", "[Common]\nLanguage=klingon\n");
    QLocalCfg* cfg = QLocalCfg::Instance();
    ASSERT_NE(cfg, nullptr);
    EXPECT_EQ(cfg->GetSDKBufferSize(), 6);
    EXPECT_EQ(cfg->GetLanguageVersion(), 0);
}

TEST_F(Settings, OnlyTheLanguageIsWrittenAtOnce) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    cfg->SetUserLevel(2);
    EXPECT_EQ(Text("LocalConfig.ini"), "(missing)");
    cfg->SetLanguageVersion(1);
    EXPECT_TRUE(Text("LangConfig.ini").contains("Language=1"));
    EXPECT_EQ(Text("LocalConfig.ini"), "(missing)");
}

TEST_F(Settings, FilesKeepTheirSpellingsAndGroups) {
    QLocalCfg::Instance()->SaveDataToIniFile();
    const QString text = Text("LocalConfig.ini");
    for (const char* part :
         {"[AddCamera]\nIP=0.0.0.0", "RecdingVedioFormat=0", "ViewShowFlage=7", "StatusShowFlage=79",
          "AutoLostPacketConfig=true", "FixedPlaybackSpeed=25", "SDKBufferSize=6", "RenderEngine=0"})
        EXPECT_TRUE(text.contains(part)) << part << "\n" << text.toStdString();
}

TEST_F(Settings, TextsMayBeReadWhileTheyAreWritten) {
    QLocalCfg* cfg = QLocalCfg::Instance();
    std::atomic<bool> stop{false};
    std::thread reader([&] {
        while (!stop) {
            const int size = cfg->GetImgSavePreFileName().size();
            ASSERT_TRUE(size == 6 || size == 3) << size;
        }
    });
    for (int i = 0; i < 2000; ++i)
        cfg->SetImgSavePreFileName(i % 2 ? QString("Image_") : QString("abc"));
    stop = true;
    reader.join();
}

} // namespace
