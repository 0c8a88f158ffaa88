// The hint, the notice, the wait dialog and the about dialog.

#include "KitFixture.h"

#include "UI/Controls/QAboutDlg.h"
#include "UI/Controls/QHintAdjustDlg.h"
#include "UI/Controls/QLoadingDlg.h"
#include "UI/Controls/QSaveDoneHintDlg.h"
#include "support/TextFit.h"

#include <QDate>
#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>

using kit_test::Kit;

class Notices : public Kit {};

TEST_F(Notices, HintTellsTheAnswerAndThenCloses) {
    const struct {
        const char* button;
        const char* text;
        bool adjust;
    } rows[] = {{"dialogOK", "To Adjust", true}, {"dialogCancel", "Ignore", false}};
    for (const auto& row : rows) {
        QHintAdjustDlg hint;
        hint.SetMsgText("Hint", "The packet loss is too much.Please adjust the bandwidth.");
        kit_test::Show(hint);
        QStringList order;
        QObject::connect(&hint, &QHintAdjustDlg::SigBtnAccepted,
                         [&](bool adjust) { order += QString("%1 %2").arg(adjust).arg(hint.isVisible()); });
        QObject::connect(&hint, &QDialog::finished, [&] { order += "closed"; });
        auto* button = hint.findChild<QPushButton*>(row.button);
        EXPECT_EQ(button->text(), row.text);
        button->click();
        EXPECT_EQ(order, (QStringList{QString("%1 1").arg(row.adjust), "closed"})) << row.text;
        EXPECT_FALSE(hint.isVisible());
    }
}

TEST_F(Notices, HintIsNotModalAndItsCloseButtonTellsNothing) {
    QHintAdjustDlg hint;
    hint.SetMsgText("Hint", "text");
    QSignalSpy answers(&hint, &QHintAdjustDlg::SigBtnAccepted);
    kit_test::Show(hint);
    EXPECT_FALSE(hint.isModal());
    EXPECT_TRUE(hint.testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_EQ(hint.windowTitle(), "Hint");
    hint.findChild<QPushButton*>("dialogClose")->click();
    EXPECT_FALSE(hint.isVisible());
    EXPECT_EQ(answers.count(), 0);
}

TEST_F(Notices, ReceiverOfTheAnswerMayDeleteTheHint) {
    QPointer<QHintAdjustDlg> hint(new QHintAdjustDlg);
    QObject::connect(hint, &QHintAdjustDlg::SigBtnAccepted, [&] { delete hint; });
    hint->OnBtnAdjust();
    EXPECT_TRUE(hint.isNull());
}

TEST_F(Notices, SavedNoticeClosesByItselfWithOne) {
    QSaveDoneHintDlg notice;
    QElapsedTimer clock;
    clock.start();
    notice.SetMsgText("Images captured.", "/data/Image_1");
    EXPECT_EQ(notice.exec(), 1);
    EXPECT_GE(clock.elapsed(), 1990);
    EXPECT_FALSE(notice.isVisible());
}

TEST_F(Notices, LinkOpensTheStoredPath) {
    QSaveDoneHintDlg notice;
    QString opened;
    notice.SetOpener([&](const QString& path) { opened = path; });
    notice.SetMsgText("Images captured.", "/data/a b/Image_1.bmp");
    auto* link = notice.findChild<QPushButton*>("linkButton");
    EXPECT_EQ(link->text(), "View");
    link->click();
    EXPECT_EQ(opened, "/data/a b/Image_1.bmp");
    EXPECT_EQ(notice.windowTitle(), "Images captured.");
}

class UrlCatcher : public QObject {
    Q_OBJECT
public Q_SLOTS:
    void Take(const QUrl& url) { m_url = url; }

public:
    QUrl m_url;
};

TEST_F(Notices, LinkGoesToTheDesktopAsALocalFile) {
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler("file", &catcher, "Take");
    QSaveDoneHintDlg notice;
    notice.SetMsgText("Video saved.", "/data/a b#1.raw");
    notice.OnBtnView();
    QDesktopServices::unsetUrlHandler("file");
    EXPECT_EQ(catcher.m_url, QUrl::fromLocalFile("/data/a b#1.raw"));
}

TEST_F(Notices, IconOfTheNoticeCanBeSet) {
    QSaveDoneHintDlg notice;
    const auto picture = [&] { return notice.findChild<QLabel*>()->pixmap(Qt::ReturnByValue).toImage(); };
    const QImage done = picture();
    EXPECT_FALSE(done.isNull());
    notice.SetIcon(2);
    EXPECT_NE(picture(), done);
}

TEST_F(Notices, LoadingDialogIsFramelessAndOpaque) {
    QLoadingDlg loading;
    EXPECT_TRUE(loading.windowFlags() & Qt::FramelessWindowHint);
    EXPECT_EQ(loading.windowOpacity(), 1.0);
    loading.setGeometry(QRect(QPoint(4000, 4000), QPoint(4000, 4000)));
    loading.setModal(true);
    kit_test::Show(loading);
    EXPECT_TRUE(loading.isModal());
    EXPECT_EQ(loading.size(), QSize(1, 1));
}

TEST_F(Notices, AboutTellsNameAndVersion) {
    QAboutDlg about;
    QStringList texts;
    for (const QLabel* label : about.findChildren<QLabel*>())
        texts += label->text();
    for (const char* text : {"Name:", "KOLT CAPTURE(Linux)", "Version:", "V1.0.0 build20170327"})
        EXPECT_TRUE(texts.contains(text)) << text;
    kit_test::Show(about);
    EXPECT_FALSE(about.GetCancelBtn()->isVisible());
    QSignalSpy ends(&about, &QDialog::finished);
    about.GetOKBtn()->click();
    EXPECT_EQ(ends, (QList<QVariantList>{{1}}));
}

TEST_F(Notices, CompileDateBecomesDigits) {
    EXPECT_EQ(QAboutDlg::ConvertDateFormat("Mar 28 2018"), "20180328");
    EXPECT_EQ(QAboutDlg::ConvertDateFormat("Dec  1 2026"), "20261201");
    EXPECT_EQ(QAboutDlg::ConvertDateFormat(""), "");
    EXPECT_EQ(QAboutDlg::ConvertDateFormat("28.3.2018"), "");
    EXPECT_TRUE(QDate::fromString(QAboutDlg::GetSoftwareBuildDate(), "yyyyMMdd").isValid());
}

TEST_F(Notices, FitInBothLanguages) {
    QAboutDlg about;
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(about), testing::IsEmpty());
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(about, {"KOLT CAPTURE(Linux)", "V1.0.0 build20170327"}),
                testing::IsEmpty());
    QHintAdjustDlg hint;
    hint.SetMsgText("KV-1042", "KV-1042");
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(hint), testing::IsEmpty());
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(hint, {"KV-1042"}), testing::IsEmpty());
    QSaveDoneHintDlg notice;
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(notice), testing::IsEmpty());
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(notice), testing::IsEmpty());
}

#include "notices_test.moc"
