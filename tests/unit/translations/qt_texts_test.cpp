// Qt's own dialogs and menus show no English text when the program is Chinese.
#include "Common/CLanguageSwitch.h"
#include "support/Places.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QToolButton>
#include <QTreeView>
#include <gmock/gmock.h>
#include <memory>

namespace {

class QtTexts : public testing::Test {
protected:
    QtTexts() : m_languages(KOLT_BIN_DIR) {
        m_languages.Init(CLanguageSwitch::Chinese);
        EXPECT_EQ(m_languages.GetLanguage(), CLanguageSwitch::Chinese);
    }

    static void Expect(const QString& text, const char* what) {
        static const QRegularExpression word("[A-Za-z]{2}");
        static const QRegularExpression key(
            "(Ctrl|Alt|Shift|Del|Left|Right|Up)\\b"); // printed so on the keys
        static const QRegularExpression tag("<[^>]*>");
        EXPECT_FALSE(word.match(QString(text).remove(key).remove(tag)).hasMatch())
            << what << ": " << text.toStdString();
        m_seen += !text.isEmpty();
    }

    static void ExpectChinese(const QWidget& window) {
        for (const auto* label : window.findChildren<QLabel*>())
            Expect(label->text(), "label");
        for (const auto* button : window.findChildren<QAbstractButton*>()) {
            Expect(button->text(), "button");
            Expect(button->toolTip(), "tool tip");
        }
        for (const auto* action : window.findChildren<QAction*>())
            Expect(action->text().section('\t', 0, 0), "action");
    }

    static void ExpectChinese(QMenu* menu) {
        ASSERT_NE(menu, nullptr);
        const std::unique_ptr<QMenu> owner(menu);
        ASSERT_FALSE(menu->actions().isEmpty());
        for (const QAction* action : menu->actions())
            Expect(action->text().section('\t', 0, 0), "menu");
    }

    CLanguageSwitch m_languages;
    static int m_seen;
};
int QtTexts::m_seen = 0;

TEST_F(QtTexts, FileDialogs) {
    for (const auto mode : {QFileDialog::AcceptOpen, QFileDialog::AcceptSave}) {
        for (const auto files : {QFileDialog::ExistingFile, QFileDialog::AnyFile, QFileDialog::Directory}) {
            QFileDialog dialog(nullptr, {}, "/");
            dialog.setOption(QFileDialog::DontUseNativeDialog);
            dialog.setAcceptMode(mode);
            dialog.setFileMode(files);
            dialog.show();
            Expect(dialog.windowTitle(), "title");
            ExpectChinese(dialog);
            const auto* tree = dialog.findChild<QTreeView*>("treeView");
            ASSERT_NE(tree, nullptr);
            ASSERT_GE(tree->header()->count(), 4);
            for (int column = 0; column < tree->header()->count(); ++column)
                Expect(tree->model()->headerData(column, Qt::Horizontal).toString(), "header");
        }
    }
    EXPECT_GT(m_seen, 100);
}

TEST_F(QtTexts, ButtonsOfDialogs) {
    for (int button = QDialogButtonBox::FirstButton; button <= QDialogButtonBox::LastButton; button <<= 1) {
        const QDialogButtonBox box{QDialogButtonBox::StandardButtons(button)};
        ExpectChinese(box);
    }
    QMessageBox box(QMessageBox::Warning, "标题", "文字", QMessageBox::Ok | QMessageBox::Cancel);
    box.setDetailedText("细节");
    ExpectChinese(box);
}

TEST_F(QtTexts, ContextMenus) {
    QLineEdit line("文字");
    ExpectChinese(line.createStandardContextMenu());
    QPlainTextEdit text("文字");
    ExpectChinese(text.createStandardContextMenu());
}

TEST_F(QtTexts, Docks) {
    const QDockWidget dock("面板");
    ExpectChinese(dock);
}

} // namespace
