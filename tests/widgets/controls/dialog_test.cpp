#include "KitFixture.h"

#include "UI/Controls/QDialogEx.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QLoadingDlg.h"
#include "UI/Controls/QMainWindowEx.h"
#include "UI/Controls/QSaveDoneHintDlg.h"
#include "UI/Controls/QStaticLabel.h"
#include "support/TextFit.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

using kit_test::Drag;
using kit_test::Kit;

class Dialog : public Kit {
protected:
    void Open(QDialogEx& dialog) {
        dialog.setFixedSize(374, 206);
        kit_test::Show(dialog);
        dialog.move(200, 150);
        ASSERT_TRUE(kit_test::Eventually([&] { return dialog.pos() == QPoint(200, 150); }));
    }
    // In the middle of the title.
    static QPoint Title(const QDialogEx& dialog) { return dialog.GetTitleWidget()->geometry().center(); }
    static QImageButton& CloseButton(QDialogEx& dialog) {
        return *dialog.findChild<QImageButton*>("dialogClose");
    }
};

TEST_F(Dialog, EscapeDoesNothing) {
    QDialogEx dialog;
    Open(dialog);
    QSignalSpy ends(&dialog, &QDialog::finished);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(ends.count(), 0);
}

TEST_F(Dialog, EscapeDoesNothingInTheOtherWindows) {
    QMainWindowEx window;
    QSaveDoneHintDlg notice;
    QLoadingDlg loading;
    for (QWidget* widget :
         {static_cast<QWidget*>(&window), static_cast<QWidget*>(&notice), static_cast<QWidget*>(&loading)}) {
        kit_test::Show(*widget);
        QTest::keyClick(widget, Qt::Key_Escape);
        EXPECT_TRUE(widget->isVisible()) << widget->metaObject()->className();
    }
}

TEST_F(Dialog, OtherKeysReachTheBaseClass) {
    QDialogEx dialog;
    Open(dialog);
    QSignalSpy clicks(dialog.GetOKBtn(), &QPushButton::clicked);
    QTest::keyClick(&dialog, Qt::Key_Return);
    EXPECT_EQ(clicks.count(), 1); // the default button of a QDialog
    QMainWindowEx window;
    QPushButton button(&window);
    button.setDefault(true);
    kit_test::Show(window);
    QSignalSpy mainClicks(&button, &QPushButton::clicked);
    QTest::keyClick(&window, Qt::Key_Enter);
    EXPECT_EQ(mainClicks.count(), 1);
}

TEST_F(Dialog, EnterOnCancelIsNotOK) {
    QDialogEx dialog;
    Open(dialog);
    QSignalSpy clicks(dialog.GetOKBtn(), &QPushButton::clicked);
    QTest::keyClick(dialog.GetCancelBtn(), Qt::Key_Return);
    EXPECT_EQ(clicks.count(), 0);
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(Dialog, IsFramelessAndHasARealTitle) {
    QDialogEx dialog;
    dialog.SetTitleText("Edit IP Address");
    EXPECT_TRUE(dialog.windowFlags() & Qt::FramelessWindowHint);
    EXPECT_EQ(dialog.windowFlags() & Qt::WindowType_Mask, Qt::Dialog);
    EXPECT_EQ(dialog.windowTitle(), "Edit IP Address");
    EXPECT_EQ(dialog.findChild<QStaticLabel*>("dialogTitleText")->text(), "Edit IP Address");
    EXPECT_TRUE(dialog.InitWidget());
    EXPECT_EQ(dialog.findChildren<QImageButton*>("dialogClose").size(), 1);
}

TEST_F(Dialog, TitleAreaDragsTheWindow) {
    QDialogEx dialog;
    Open(dialog);
    QSignalSpy moves(&dialog, &QDialogEx::SigMoveDialog);
    Drag(dialog, Title(dialog), QPoint(30, -20));
    EXPECT_EQ(dialog.pos(), QPoint(230, 130));
    EXPECT_EQ(moves, (QList<QVariantList>{{QPoint(230, 130)}}));
    // The release disarmed it.
    QMouseEvent move(QEvent::MouseMove, Title(dialog), QPoint(900, 900), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(&dialog, &move);
    EXPECT_EQ(dialog.pos(), QPoint(230, 130));
}

TEST_F(Dialog, PressOnTheTitleTextDragsToo) {
    QDialogEx dialog;
    dialog.SetTitleText("Edit IP Address");
    Open(dialog);
    auto* text = dialog.findChild<QStaticLabel*>("dialogTitleText");
    QTest::mousePress(text, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    const QPoint from = text->mapToGlobal(QPoint(5, 5));
    QMouseEvent move(QEvent::MouseMove, dialog.mapFromGlobal(from + QPoint(10, 10)), from + QPoint(10, 10),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&dialog, &move);
    EXPECT_EQ(dialog.pos(), QPoint(210, 160));
    QTest::mouseRelease(text, Qt::LeftButton);
}

TEST_F(Dialog, OnlyALeftPressInTheTitleDrags) {
    QDialogEx dialog;
    Open(dialog);
    Drag(dialog, QPoint(100, 120), QPoint(30, 30));
    Drag(dialog, Title(dialog), QPoint(30, 30), Qt::RightButton);
    EXPECT_EQ(dialog.pos(), QPoint(200, 150));
}

TEST_F(Dialog, WithoutMovingItStays) {
    QDialogEx dialog;
    Open(dialog);
    dialog.SetMoveable(false);
    Drag(dialog, Title(dialog), QPoint(30, 30));
    EXPECT_EQ(dialog.pos(), QPoint(200, 150));
    dialog.SetMoveable(true);
    Drag(dialog, Title(dialog), QPoint(30, 30));
    EXPECT_EQ(dialog.pos(), QPoint(230, 180));
}

TEST_F(Dialog, MovingForbiddenWhileItIsDraggedEndsTheDrag) {
    QDialogEx dialog;
    Open(dialog);
    QObject::connect(&dialog, &QDialogEx::SigMoveDialog, [&] { dialog.SetMoveable(false); });
    const QPoint from = dialog.mapToGlobal(Title(dialog));
    QTest::mousePress(&dialog, Qt::LeftButton, Qt::NoModifier, Title(dialog));
    for (int step = 1; step <= 3; ++step) {
        QMouseEvent move(QEvent::MouseMove, Title(dialog), from + QPoint(10 * step, 0), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&dialog, &move);
    }
    EXPECT_EQ(dialog.pos(), QPoint(210, 150));
}

TEST_F(Dialog, MaximisedItIsNotDragged) {
    QDialogEx dialog;
    Open(dialog);
    dialog.setWindowState(Qt::WindowMaximized);
    const QPoint place = dialog.pos();
    Drag(dialog, Title(dialog), QPoint(30, 30));
    EXPECT_EQ(dialog.pos(), place);
}

TEST_F(Dialog, PressOnTheCloseButtonNeverDrags) {
    QDialogEx dialog;
    Open(dialog);
    QImageButton& close = CloseButton(dialog);
    QTest::mousePress(&close, Qt::LeftButton);
    QMouseEvent move(QEvent::MouseMove, QPoint(50, 100), QPoint(600, 600), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(&dialog, &move);
    EXPECT_EQ(dialog.pos(), QPoint(200, 150));
    QTest::mouseRelease(&close, Qt::LeftButton, Qt::NoModifier, QPoint(-50, 100));
    EXPECT_TRUE(dialog.isVisible());
}

TEST_F(Dialog, CloseAndCancelReject) {
    for (const char* name : {"dialogClose", "dialogCancel"}) {
        QDialogEx dialog;
        Open(dialog);
        QSignalSpy ends(&dialog, &QDialog::finished);
        dialog.findChild<QPushButton*>(name)->click();
        EXPECT_EQ(ends, (QList<QVariantList>{{0}})) << name;
        EXPECT_FALSE(dialog.isVisible()) << name;
    }
}

TEST_F(Dialog, OKIsTheDerivedClasss) {
    QDialogEx dialog;
    Open(dialog);
    dialog.GetOKBtn()->click();
    EXPECT_TRUE(dialog.isVisible());
}

TEST_F(Dialog, ExecChoosesTheModality) {
    for (const bool application : {true, false}) {
        QDialogEx dialog;
        Qt::WindowModality modality = Qt::NonModal;
        QTimer::singleShot(0, [&] {
            modality = dialog.windowModality();
            dialog.accept();
        });
        EXPECT_EQ(dialog.exec(application), 1);
        EXPECT_EQ(modality, application ? Qt::ApplicationModal : Qt::WindowModal);
    }
}

TEST_F(Dialog, TakesALayoutAndItsSuccessor) {
    QDialogEx dialog;
    auto* first = new QHBoxLayout;
    QPointer<QLayout> watched(first);
    auto* label = new QLabel("IP address:");
    first->addWidget(label);
    dialog.SetLayoutEx(first);
    EXPECT_EQ(label->window(), &dialog);
    auto* second = new QHBoxLayout;
    second->addWidget(label);
    dialog.SetLayoutEx(second);
    EXPECT_TRUE(watched.isNull());
    Open(dialog);
    EXPECT_TRUE(label->isVisible());
    EXPECT_GT(label->mapTo(&dialog, QPoint()).y(), dialog.GetTitleWidget()->geometry().bottom());
    EXPECT_LT(label->mapTo(&dialog, QPoint()).y(), dialog.GetBottomWidget()->y());
}

TEST_F(Dialog, ButtonRowCanBeFilledAndHidden) {
    QDialogEx dialog;
    auto* apply = new QPushButton("Apply");
    dialog.GetBtnLayout()->insertWidget(0, apply);
    Open(dialog);
    EXPECT_TRUE(apply->isVisible());
    EXPECT_LT(apply->x(), dialog.GetOKBtn()->x());
    dialog.GetBottomWidget()->hide();
    EXPECT_FALSE(dialog.GetOKBtn()->isVisible());
    EXPECT_TRUE(dialog.GetOKBtn()->isDefault());
    EXPECT_EQ(dialog.geometryEx(), dialog.geometry());
    EXPECT_EQ(dialog.winIdEx(), dialog.winId());
}

TEST_F(Dialog, FiltersOnlyItsOwnActivation) {
    class Open : public QDialogEx {
    public:
        using QDialogEx::eventFilter;
    };
    Open dialog;
    const QWidget* title = dialog.GetTitleWidget();
    QEvent activate(QEvent::WindowActivate);
    QEvent deactivate(QEvent::WindowDeactivate);
    QEvent other(QEvent::Polish);
    QObject stranger;
    EXPECT_TRUE(title->property("active").toBool());
    EXPECT_FALSE(dialog.eventFilter(&stranger, &deactivate));
    EXPECT_TRUE(title->property("active").toBool());
    EXPECT_FALSE(dialog.eventFilter(&dialog, &deactivate));
    EXPECT_FALSE(title->property("active").toBool());
    EXPECT_FALSE(dialog.eventFilter(&dialog, &other));
    EXPECT_FALSE(dialog.eventFilter(&stranger, &activate));
    EXPECT_FALSE(title->property("active").toBool());
    EXPECT_FALSE(dialog.eventFilter(&dialog, &activate));
    EXPECT_TRUE(title->property("active").toBool());
}

TEST_F(Dialog, TitleLooksDifferentWhenItIsNotActive) {
    QDialogEx dialog;
    dialog.SetTitleText("Option");
    Open(dialog);
    QEvent activate(QEvent::WindowActivate);
    QEvent deactivate(QEvent::WindowDeactivate);
    QApplication::sendEvent(&dialog, &activate);
    const QImage active = dialog.GetTitleWidget()->grab().toImage();
    QApplication::sendEvent(&dialog, &deactivate);
    const QImage inactive = dialog.GetTitleWidget()->grab().toImage();
    EXPECT_NE(active, inactive);
    dialog.SetChangeTitleColor(false);
    EXPECT_EQ(dialog.GetTitleWidget()->grab().toImage(), active);
    QApplication::sendEvent(&dialog, &deactivate);
    EXPECT_EQ(dialog.GetTitleWidget()->grab().toImage(), active);
}

TEST_F(Dialog, OnUbuntuTheCloseButtonStandsAtTheLeft) {
    QDialogEx here;
    Open(here);
    EXPECT_GT(CloseButton(here).x(), here.width() / 2);
    int probes = 0;
    SetSystemProbe([&] {
        ++probes;
        return QString("Linux host 5.4.0-42-generic #46-Ubuntu SMP x86_64 GNU/Linux");
    });
    QDialogEx there;
    EXPECT_EQ(probes, 1);
    Open(there);
    EXPECT_LT(CloseButton(there).x(), 10);
}

TEST_F(Dialog, FitsInBothLanguagesAndKeepsTextsThatWereSet) {
    QDialogEx dialog;
    dialog.SetTitleText("KV-1042");
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(dialog), testing::IsEmpty());
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(dialog, {"KV-1042"}), testing::IsEmpty());
    dialog.GetOKBtn()->setText("Apply");
    QEvent language(QEvent::LanguageChange);
    QApplication::sendEvent(&dialog, &language);
    EXPECT_EQ(dialog.GetOKBtn()->text(), "Apply");
    EXPECT_EQ(dialog.GetCancelBtn()->text(), "Cancel");
}

TEST_F(Dialog, TitleStylesDiffer) {
    QDialogEx plain(kTitlePlain);
    QDialogEx notice(kTitleNotice);
    QDialogEx unknown(77);
    for (QDialogEx* dialog : {&plain, &notice, &unknown}) {
        dialog->SetTitleText("Hint");
        Open(*dialog);
    }
    const auto look = [](QDialogEx& dialog) { return dialog.GetTitleWidget()->grab().toImage(); };
    for (QDialogEx* dialog : {&plain, &notice, &unknown})
        dialog->SetChangeTitleColor(false);
    EXPECT_NE(look(plain), look(notice));
    EXPECT_EQ(look(plain), look(unknown));
}
