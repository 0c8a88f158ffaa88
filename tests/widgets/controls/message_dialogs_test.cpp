#include "KitFixture.h"

#include "Common/QFunction.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "UI/Controls/QShowMessageDlg.h"
#include "support/TextFit.h"

#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTextEdit>
#include <QTimer>

using kit_test::Kit;

class Messages : public Kit {
protected:
    static QImage Picture(QDialog& dialog) {
        return dialog.findChild<QLabel*>("messagePicture")->pixmap(Qt::ReturnByValue).toImage();
    }
    static QString Text(QDialog& dialog) { return dialog.findChild<QLabel*>("messageText")->text(); }
    static QPushButton& Details(QDialog& dialog) { return *dialog.findChild<QPushButton*>("detailsButton"); }
    static QTextEdit& Detail(QDialog& dialog) { return *dialog.findChild<QTextEdit*>("messageDetail"); }
};

struct KindRow {
    int kind;
    const char* picture;
    const char* ok;
    const char* name;
};

TEST_F(Messages, KindChoosesPictureAndConfirmingText) {
    const KindRow rows[] = {{0, "figure", "OK", "Information"},
                            {1, "error", "OK", "Error"},
                            {2, "warning", " OK ", "Warning"},
                            {9, "figure", "OK", "Information"},
                            {-1, "figure", "OK", "Information"}};
    for (const KindRow& row : rows) {
        const QImage picture(QString(":/ORV/Resources/Hint/%1.png").arg(row.picture));
        QMessageBoxDlg box;
        box.SetMsgText("Hint", "Exit the client?", true, row.kind);
        QShowMessageDlg message;
        message.SetInfo("Recording failed.", "", "Error", row.kind);
        for (QDialogEx* dialog : {static_cast<QDialogEx*>(&box), static_cast<QDialogEx*>(&message)}) {
            EXPECT_EQ(Picture(*dialog), picture.convertToFormat(Picture(*dialog).format())) << row.kind;
            EXPECT_EQ(dialog->GetOKBtn()->text(), row.ok) << row.kind;
            EXPECT_EQ(dialog->findChild<QLabel*>("messagePicture")->accessibleName(), row.name) << row.kind;
        }
    }
}

TEST_F(Messages, QuestionShowsCancelOnlyWhereThereIsAChoice) {
    for (const bool choice : {true, false}) {
        QMessageBoxDlg box;
        box.SetMsgText("Hint", "Exit the client?", choice, 0);
        kit_test::Show(box);
        EXPECT_EQ(box.GetCancelBtn()->isVisible(), choice);
        EXPECT_EQ(box.windowTitle(), "Hint");
        EXPECT_EQ(Text(box), "Exit the client?");
    }
}

TEST_F(Messages, QuestionAnswersOneForOKAndZeroForAllElse) {
    for (const char* button : {"dialogOK", "dialogCancel", "dialogClose"}) {
        QMessageBoxDlg box;
        box.SetMsgText("Hint", "Exit the client?", true, 2);
        QTimer::singleShot(0, [&] { box.findChild<QPushButton*>(button)->click(); });
        EXPECT_EQ(box.exec(true), QString(button) == "dialogOK" ? 1 : 0) << button;
    }
}

TEST_F(Messages, WithoutADetailThereIsNoDetailsButton) {
    QShowMessageDlg dialog;
    dialog.SetInfo("Recording failed.No data.", "", "Error", 1);
    kit_test::Show(dialog);
    EXPECT_FALSE(Details(dialog).isVisible());
    EXPECT_FALSE(Detail(dialog).isVisible());
    dialog.SetInfo("Connecting camera failed.", "Access denied.", "Error", 1);
    EXPECT_TRUE(Details(dialog).isVisible());
    dialog.SetInfo("Recording failed.No data.", "", "Error", 1);
    EXPECT_FALSE(Details(dialog).isVisible());
}

TEST_F(Messages, DetailsButtonShowsAndHidesTheDetailAndTheFixedHeightFollows) {
    QShowMessageDlg dialog;
    dialog.SetInfo("Connecting camera failed.", "Access denied.", "Error", 1);
    kit_test::Show(dialog);
    const int low = dialog.height();
    EXPECT_EQ(Details(dialog).text(), "Show Details");
    EXPECT_FALSE(Detail(dialog).isVisible());
    Details(dialog).click();
    EXPECT_EQ(Details(dialog).text(), "Hide Details");
    EXPECT_TRUE(Detail(dialog).isVisible());
    EXPECT_EQ(Detail(dialog).toPlainText(), "Access denied.");
    EXPECT_GT(dialog.height(), low + 100);
    EXPECT_EQ(dialog.minimumHeight(), dialog.maximumHeight());
    Details(dialog).click();
    EXPECT_EQ(Details(dialog).text(), "Show Details");
    EXPECT_EQ(dialog.height(), low);
    EXPECT_EQ(dialog.minimumHeight(), dialog.maximumHeight());
}

TEST_F(Messages, NewInfoHidesTheDetailAgain) {
    QShowMessageDlg dialog;
    dialog.SetInfo("a", "b", "c", 0);
    dialog.OnBtnDetails();
    dialog.SetInfo("d", "e", "f", 0);
    EXPECT_EQ(Details(dialog).text(), "Show Details");
    EXPECT_EQ(dialog.windowTitle(), "f");
    EXPECT_EQ(Text(dialog), "d");
}

TEST_F(Messages, TextIsShownAsItIs) {
    QMessageBoxDlg box;
    box.SetMsgText("Hint", "<b>not bold</b>", false, 0);
    EXPECT_EQ(box.findChild<QLabel*>("messageText")->textFormat(), Qt::PlainText);
}

TEST_F(Messages, LongTextsFit) {
    for (const QString& text :
         {QString("Failed to open the attribute settings. \nPlease stop recording first."),
          QString("word ").repeated(80), QString("x").repeated(200), QString("x\n").repeated(12)}) {
        QMessageBoxDlg box;
        box.SetMsgText("Hint", text, true, 2);
        kit_test::Show(box);
        const auto* label = box.findChild<QLabel*>("messageText");
        EXPECT_GE(label->height(), label->heightForWidth(label->width())) << text.toStdString();
        EXPECT_TRUE(box.rect().contains(QRect(label->mapTo(&box, QPoint()), label->size())))
            << text.toStdString();
        EXPECT_LE(box.width(), 900) << text.toStdString();
    }
}

TEST_F(Messages, FitInBothLanguages) {
    QMessageBoxDlg box;
    box.SetMsgText("KOLT CAPTURE", "KV-1042", true, 2);
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(box), testing::IsEmpty());
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(box, {"KOLT CAPTURE", "KV-1042"}), testing::IsEmpty());
    QShowMessageDlg message;
    message.SetInfo("KV-1042", "KV-1042", "KOLT CAPTURE", 1);
    message.OnBtnDetails();
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(message), testing::IsEmpty());
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(message, {"KOLT CAPTURE", "KV-1042"}),
                testing::IsEmpty());
}

struct Presented {
    QString title;
    QString text;
    QString detail;
    Qt::WindowModality modality = Qt::NonModal;
    QPoint centre;
    QWidget* parent = nullptr;
};

// What ShowMessage puts on the screen.
static Presented Present(QWidget* parent) {
    Presented seen;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<QShowMessageDlg*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        seen.title = dialog->windowTitle();
        seen.text = dialog->findChild<QLabel*>("messageText")->text();
        seen.detail = dialog->findChild<QTextEdit*>("messageDetail")->toPlainText();
        seen.modality = dialog->windowModality();
        seen.centre = dialog->geometry().center();
        seen.parent = dialog->parentWidget();
        dialog->accept();
    });
    watch.start(5);
    QFunction::ShowMessage(parent, "Connecting camera failed.", "Access denied.", "Error", 1);
    return seen;
}

TEST_F(Messages, ShowMessageIsModalToTheApplicationWithoutAParent) {
    const Presented seen = Present(nullptr);
    EXPECT_EQ(seen.title, "Error");
    EXPECT_EQ(seen.text, "Connecting camera failed.");
    EXPECT_EQ(seen.detail, "Access denied.");
    EXPECT_EQ(seen.modality, Qt::ApplicationModal);
    EXPECT_EQ(seen.parent, nullptr);
    EXPECT_LE((seen.centre - QGuiApplication::primaryScreen()->geometry().center()).manhattanLength(), 2);
}

TEST_F(Messages, ShowMessageIsModalToTheWindowOfItsParent) {
    QWidget parent;
    parent.setGeometry(10, 10, 200, 100);
    kit_test::Show(parent);
    const Presented seen = Present(&parent);
    EXPECT_EQ(seen.modality, Qt::WindowModal);
    EXPECT_EQ(seen.parent, &parent);
    EXPECT_LE((seen.centre - QGuiApplication::primaryScreen()->geometry().center()).manhattanLength(), 2);
}
