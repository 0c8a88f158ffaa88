#include "Common/CLanguageSwitch.h"
#include "support/Places.h"

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

QString Client() {
    return QCoreApplication::translate("QFunction", "No data.");
}
QString Qt() {
    return QCoreApplication::translate("QFileDialog", "Open");
}

// Counts what every widget would get.
class CChanges : public QObject {
public:
    CChanges() { qApp->installEventFilter(this); }
    ~CChanges() override { qApp->removeEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        count += event->type() == QEvent::LanguageChange;
        return false;
    }
};

class LanguageSwitch : public testing::Test {
protected:
    // A program's folder with the files wanted.
    QString Folder(bool client, bool qt) {
        if (client) {
            EXPECT_TRUE(QFile::copy(KOLT_BIN_DIR "/KOLT_en.qm", m_folder.filePath("KOLT_en.qm")));
        }
        if (qt) {
            EXPECT_TRUE(QFile::copy(KOLT_BIN_DIR "/qt_zh_CN.qm", m_folder.filePath("qt_zh_CN.qm")));
        }
        return m_folder.path();
    }
    static void ExpectTexts(const char* client, const char* qt) {
        EXPECT_EQ(Client(), QString::fromUtf8(client));
        EXPECT_EQ(Qt(), QString::fromUtf8(qt));
    }
    QTemporaryDir m_folder;
};

TEST_F(LanguageSwitch, StartsInEnglish) {
    const CLanguageSwitch languages(Folder(true, true));
    EXPECT_EQ(languages.GetLanguage(), CLanguageSwitch::English);
    ExpectTexts("No data.", "Open");
}

TEST_F(LanguageSwitch, InitWithOneIsChineseForBothFiles) {
    CLanguageSwitch languages(Folder(true, true));
    languages.Init(1);
    EXPECT_EQ(languages.GetLanguage(), CLanguageSwitch::Chinese);
    ExpectTexts("无数据。", "打开");
    languages.Init(0);
    EXPECT_EQ(languages.GetLanguage(), CLanguageSwitch::English);
    ExpectTexts("No data.", "Open");
}

TEST_F(LanguageSwitch, InitNeedsBothFilesForTheLanguage) {
    CLanguageSwitch languages(Folder(true, false));
    languages.Init(1);
    EXPECT_EQ(languages.GetLanguage(), CLanguageSwitch::English);
    ExpectTexts("无数据。", "Open");
}

TEST_F(LanguageSwitch, InitWithoutTheClientsFileLeavesQtsAlone) {
    CLanguageSwitch languages(Folder(false, true));
    languages.Init(1);
    EXPECT_EQ(languages.GetLanguage(), CLanguageSwitch::English);
    ExpectTexts("No data.", "Open");
}

TEST_F(LanguageSwitch, OtherSettingsChangeNothing) {
    CLanguageSwitch languages(Folder(true, true));
    for (const int setting : {-1, 2, 1000}) {
        languages.Init(setting);
        EXPECT_EQ(languages.GetLanguage(), CLanguageSwitch::English);
        ExpectTexts("No data.", "Open");
    }
    languages.SwitchToChinese();
    languages.Init(2);
    EXPECT_EQ(languages.GetLanguage(), CLanguageSwitch::Chinese);
    ExpectTexts("无数据。", "打开");
}

TEST_F(LanguageSwitch, ByHandChineseCountsEvenWithoutAFile) {
    CLanguageSwitch languages(Folder(false, true));
    languages.SwitchToChinese();
    EXPECT_EQ(languages.GetLanguage(), CLanguageSwitch::Chinese);
    ExpectTexts("No data.", "打开");
}

TEST_F(LanguageSwitch, ToAndFroAndTwice) {
    CLanguageSwitch languages(Folder(true, true));
    for (int round = 0; round < 3; ++round) {
        languages.SwitchToChinese();
        languages.SwitchToChinese();
        ExpectTexts("无数据。", "打开");
        languages.SwitchToEnglish();
        EXPECT_EQ(languages.GetLanguage(), CLanguageSwitch::English);
        ExpectTexts("No data.", "Open");
    }
}

TEST_F(LanguageSwitch, TellsEveryoneOfEachChange) {
    CLanguageSwitch languages(Folder(true, true));
    CChanges changes;
    languages.SwitchToEnglish(); // nothing to take out
    EXPECT_EQ(changes.count, 0);
    languages.SwitchToChinese();
    EXPECT_GE(changes.count, 1);
    const int toChinese = changes.count;
    languages.SwitchToEnglish();
    EXPECT_GT(changes.count, toChinese);
}

TEST_F(LanguageSwitch, TakesItsTextsAlongWhenItGoes) {
    {
        CLanguageSwitch languages(Folder(true, true));
        languages.SwitchToChinese();
        ExpectTexts("无数据。", "打开");
    }
    ExpectTexts("No data.", "Open");
}

TEST_F(LanguageSwitch, LooksBesideTheProgram) {
    // The build puts the test programs and the translations into one folder, as with the program.
    CLanguageSwitch languages;
    languages.Init(1);
    EXPECT_EQ(languages.GetLanguage(), CLanguageSwitch::Chinese);
    ExpectTexts("无数据。", "打开");
}

} // namespace
