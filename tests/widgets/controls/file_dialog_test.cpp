// Choosing of files and folders: what the dialog shows, gives and asks.
#include "KitFixture.h"

#include "UI/Controls/CFileDialog.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMessageBoxDlg.h"
#include "support/TextFit.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>

using kit_test::Kit;

namespace {

class FileDialog : public Kit {
protected:
    // Does `act` with the next dialog of this kind that runs.
    template<typename D>
    static void With(const std::function<void(D&)>& act) {
        auto* timer = new QTimer;
        QObject::connect(timer, &QTimer::timeout, [timer, act] {
            if (auto* dialog = qobject_cast<D*>(QApplication::activeModalWidget())) {
                timer->stop();
                timer->deleteLater();
                act(*dialog);
            }
        });
        timer->start(10);
    }
    QString Make(const QString& name) {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("picture") > 0);
        return file.fileName();
    }
    static QPushButton& Button(const QFileDialog& dialog, QDialogButtonBox::ButtonRole role) {
        auto* box = dialog.findChild<QDialogButtonBox*>("buttonBox");
        for (QPushButton* button : box->findChildren<QPushButton*>())
            if (box->buttonRole(button) == role)
                return *button;
        throw std::runtime_error("no such button");
    }

    const QTemporaryDir m_folder;
};

TEST_F(FileDialog, ProposesANameAndGivesTheChosenOne) {
    With<CFileDialog>([&](CFileDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Save Image");
        EXPECT_EQ(dialog.findChild<QLabel*>("dialogTitleText")->text(), "Save Image");
        EXPECT_EQ(dialog.directory().absolutePath(), m_folder.path());
        auto* name = dialog.findChild<QLineEdit*>("fileNameEdit");
        EXPECT_EQ(name->text(), "a.bmp");
        name->setText("b.bmp");
        QTest::mouseClick(&Button(dialog, QDialogButtonBox::AcceptRole), Qt::LeftButton);
    });
    EXPECT_EQ(CFileDialog::GetSaveFileName(nullptr, "Save Image", m_folder.path() + "//a.bmp",
                                           "Images (*.bmp);;RawData (*.raw)"),
              m_folder.filePath("b.bmp"));
}

TEST_F(FileDialog, CancelAndTheCloseButtonGiveNothing) {
    With<CFileDialog>([&](CFileDialog& dialog) {
        QTest::mouseClick(&Button(dialog, QDialogButtonBox::RejectRole), Qt::LeftButton);
    });
    EXPECT_EQ(CFileDialog::GetOpenFileName(nullptr, "Load", m_folder.path(), "XML (*.xml)"), QString());
    With<CFileDialog>([&](CFileDialog& dialog) {
        QTest::mouseClick(dialog.findChild<QImageButton*>("dialogClose"), Qt::LeftButton);
    });
    EXPECT_EQ(CFileDialog::GetExistingDirectory(nullptr, "Open", m_folder.path()), QString());
}

TEST_F(FileDialog, AsksBeforeAFileIsReplaced) {
    const QString file = Make("a.bmp");
    for (const bool yes : {false, true}) {
        QString asked;
        With<CFileDialog>([&](CFileDialog& dialog) {
            With<QMessageBoxDlg>([&](QMessageBoxDlg& question) {
                asked = question.findChild<QLabel*>("messageText")->text();
                question.done(yes ? QDialog::Accepted : QDialog::Rejected);
            });
            QTest::mouseClick(&Button(dialog, QDialogButtonBox::AcceptRole), Qt::LeftButton);
            EXPECT_EQ(dialog.isVisible(), !yes) << "with no, another name can be chosen";
            if (!yes)
                dialog.reject();
        });
        EXPECT_EQ(CFileDialog::GetSaveFileName(nullptr, "Save", file, "Images (*.bmp)"),
                  yes ? file : QString());
        EXPECT_EQ(asked, "a.bmp already exists.\nDo you want to replace it?");
    }
}

TEST_F(FileDialog, AnExistingFileIsOpenedWithoutAQuestion) {
    const QString file = Make("a.xml");
    With<CFileDialog>([&](CFileDialog& dialog) {
        dialog.selectFile(file);
        QTest::mouseClick(&Button(dialog, QDialogButtonBox::AcceptRole), Qt::LeftButton);
    });
    EXPECT_EQ(CFileDialog::GetOpenFileName(nullptr, "Load", m_folder.path(), "XML (*.xml)"), file);
}

TEST_F(FileDialog, AFolderThatIsGoneIsNoObstacle) {
    With<CFileDialog>([&](CFileDialog& dialog) {
        EXPECT_TRUE(dialog.directory().exists());
        EXPECT_EQ(dialog.findChild<QLineEdit*>("fileNameEdit")->text(), "a.bmp");
        dialog.reject();
    });
    EXPECT_EQ(CFileDialog::GetSaveFileName(nullptr, "Save", "/no/such/folder/a.bmp", "Images (*.bmp)"),
              QString());
}

TEST_F(FileDialog, HasTheLookOfTheProgram) {
    Make("a.bmp");
    CFileDialog dialog(nullptr, "Save Image", m_folder.path(), "Images (*.bmp)");
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    kit_test::Show(dialog);
    EXPECT_TRUE(dialog.windowFlags() & Qt::FramelessWindowHint);
    const QPushButton& save = Button(dialog, QDialogButtonBox::AcceptRole);
    const QPushButton& cancel = Button(dialog, QDialogButtonBox::RejectRole);
    EXPECT_TRUE(save.isDefault());
    EXPECT_LT(save.x(), cancel.x());
    EXPECT_EQ(save.y(), cancel.y());
    EXPECT_TRUE(save.icon().isNull());
    // Every tool has a picture of the program's set, not one of the base style.
    for (const auto& [tool, picture] : {std::pair{"backButton", "back"},
                                        {"forwardButton", "forward"},
                                        {"toParentButton", "parent"},
                                        {"newFolderButton", "new_folder"},
                                        {"listModeButton", "list"},
                                        {"detailModeButton", "details"}}) {
        const QPixmap wanted(QString(":/ORV/Resources/file/%1.png").arg(picture));
        ASSERT_FALSE(wanted.isNull()) << picture;
        const QIcon icon = dialog.findChild<QToolButton*>(tool)->icon();
        EXPECT_EQ(icon.pixmap(20, QIcon::Normal).toImage(), wanted.toImage()) << tool;
    }
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(dialog), testing::IsEmpty());
}

TEST_F(FileDialog, IsDraggedByItsTitle) {
    CFileDialog dialog(nullptr, "Save Image", m_folder.path());
    kit_test::Show(dialog);
    dialog.move(100, 80);
    ASSERT_TRUE(kit_test::Eventually([&] { return dialog.pos() == QPoint(100, 80); }));
    kit_test::Drag(dialog, {200, 15}, {60, 30});
    EXPECT_EQ(dialog.pos(), QPoint(160, 110));
}

} // namespace
