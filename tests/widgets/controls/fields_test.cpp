// Line edits, their companions, and labels.

#include "KitFixture.h"

#include "UI/Controls/QFolderSelectWidget.h"
#include "UI/Controls/QLineEditEx.h"
#include "UI/Controls/QSearchWidget.h"
#include "UI/Controls/QStaticLabel.h"
#include "UI/Controls/QStatusLabel.h"

#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolTip>

using kit_test::Kit;

class Field : public Kit {
protected:
    Field() {
        auto* layout = new QHBoxLayout(&m_window);
        layout->addWidget(&m_field);
        layout->addWidget(&m_other);
        m_window.resize(400, 60);
        m_field.setText("10000.00");
    }
    ~Field() override {
        m_field.setParent(nullptr);
        m_other.setParent(nullptr);
    }
    void ClickAt(int x) {
        QTest::mouseClick(&m_field, Qt::LeftButton, Qt::NoModifier, QPoint(x, m_field.height() / 2));
    }

    QWidget m_window;
    QLineEditEx m_field;
    QLineEditEx m_other;
};

TEST_F(Field, ReturnAndEnterTellTheTextBeforeTheBaseClassHandlesThem) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        QLineEditEx field("12");
        QStringList order;
        QObject::connect(&field, QOverload<QString>::of(&QLineEditEx::SigEnterKeyPress),
                         [&](const QString& text) { order += "text " + text; });
        QObject::connect(&field, QOverload<>::of(&QLineEditEx::SigEnterKeyPress), [&] { order += "plain"; });
        QObject::connect(&field, &QLineEdit::returnPressed, [&] { order += "base"; });
        QTest::keyClick(&field, key);
        EXPECT_EQ(order, (QStringList{"text 12", "plain", "base"}));
    }
}

TEST_F(Field, OtherKeysTellNothing) {
    QSignalSpy enters(&m_field, QOverload<>::of(&QLineEditEx::SigEnterKeyPress));
    m_field.clear();
    QTest::keyClicks(&m_field, "12");
    EXPECT_EQ(enters.count(), 0);
    EXPECT_EQ(m_field.text(), "12");
}

TEST_F(Field, ReceiverOfEnterMayDeleteIt) {
    QPointer<QLineEditEx> field(new QLineEditEx("1"));
    QObject::connect(field, QOverload<QString>::of(&QLineEditEx::SigEnterKeyPress), [&] { delete field; });
    QKeyEvent key(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    static_cast<QObject*>(field)->event(&key);
    EXPECT_TRUE(field.isNull());
}

TEST_F(Field, LeavingItTellsTheText) {
    kit_test::ShowActive(m_window);
    m_field.setFocus();
    QSignalSpy texts(&m_field, QOverload<QString>::of(&QLineEditEx::SigFocusOutEvent));
    QSignalSpy plain(&m_field, QOverload<>::of(&QLineEditEx::SigFocusOutEvent));
    m_other.setFocus();
    EXPECT_EQ(texts, (QList<QVariantList>{{"10000.00"}}));
    EXPECT_EQ(plain.count(), 1);
}

TEST_F(Field, FirstClickSelectsAllAndLaterOnesPlaceTheCursor) {
    kit_test::ShowActive(m_window);
    m_other.setFocus();
    ClickAt(20);
    EXPECT_EQ(m_field.selectedText(), "10000.00");
    ClickAt(20);
    EXPECT_FALSE(m_field.hasSelectedText());
    const int place = m_field.cursorPosition();
    EXPECT_LT(place, 8);
    ClickAt(m_field.width() - 10);
    EXPECT_FALSE(m_field.hasSelectedText());
    EXPECT_GT(m_field.cursorPosition(), place);
    m_other.setFocus();
    m_field.deselect();
    ClickAt(20);
    EXPECT_EQ(m_field.selectedText(), "10000.00");
}

TEST_F(Field, FirstClickIntoASelectionPlacesTheCursor) {
    kit_test::ShowActive(m_window);
    m_other.setFocus();
    m_field.setFocus();
    m_field.setSelection(0, 3);
    ClickAt(m_field.width() - 10);
    EXPECT_FALSE(m_field.hasSelectedText());
}

TEST_F(Field, TremblingHandKeepsTheSelectionAndAPulledOneSelects) {
    kit_test::ShowActive(m_window);
    m_other.setFocus();
    const QPoint start(20, m_field.height() / 2);
    const auto move = [&](int way) {
        QMouseEvent event(QEvent::MouseMove, start + QPoint(way, 0), Qt::NoButton, Qt::LeftButton,
                          Qt::NoModifier);
        QApplication::sendEvent(&m_field, &event);
    };
    QTest::mousePress(&m_field, Qt::LeftButton, Qt::NoModifier, start);
    move(2);
    EXPECT_EQ(m_field.selectedText(), "10000.00");
    move(40);
    EXPECT_NE(m_field.selectedText(), "10000.00");
    QTest::mouseRelease(&m_field, Qt::LeftButton, Qt::NoModifier, start);
}

TEST_F(Field, RightClickSelectsNothing) {
    kit_test::ShowActive(m_window);
    m_field.setContextMenuPolicy(Qt::NoContextMenu);
    m_other.setFocus();
    QTest::mouseClick(&m_field, Qt::RightButton, Qt::NoModifier, QPoint(20, 10));
    EXPECT_FALSE(m_field.hasSelectedText());
}

TEST_F(Field, SearchButtonStandsInItAndKeepsTheTextFree) {
    m_window.resize(700, 60);
    auto* search = new QSearchWidget(&m_field);
    kit_test::ShowActive(m_window);
    EXPECT_EQ(search->parentWidget(), &m_field);
    EXPECT_EQ(m_field.textMargins().right(), 20);
    EXPECT_EQ(search->focusPolicy(), Qt::NoFocus);
    EXPECT_EQ(search->cursor().shape(), Qt::PointingHandCursor);
    EXPECT_TRUE(m_field.rect().contains(search->geometry()));
    EXPECT_GT(search->geometry().left(), m_field.width() - 26);
    EXPECT_FALSE(search->autoDefault());
    QSignalSpy clicks(search, &QPushButton::clicked);
    QTest::mouseClick(search, Qt::LeftButton);
    EXPECT_EQ(clicks.count(), 1);
}

// Acts on the folder dialog that the next call opens.
static void WhenFolderDialogOpens(const std::function<void(QFileDialog&)>& act) {
    auto* timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, [timer, act] {
        if (auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            timer->stop();
            timer->deleteLater();
            act(*dialog);
        }
    });
    timer->start(10);
}

TEST_F(Field, FolderButtonTakesTheChosenFolder) {
    const QTemporaryDir start;
    ASSERT_TRUE(QDir(start.path()).mkdir("pictures"));
    QFolderSelectWidget folder;
    folder.SetText(start.path());
    QString title;
    QString from;
    WhenFolderDialogOpens([&](QFileDialog& dialog) {
        title = dialog.windowTitle();
        from = dialog.directory().absolutePath();
        dialog.selectFile(start.path() + "/pictures");
        static_cast<QDialog&>(dialog).done(QDialog::Accepted);
    });
    folder.OnBtnSelectFolder();
    EXPECT_EQ(title, "Open Directory");
    EXPECT_EQ(from, start.path());
    EXPECT_EQ(folder.GetText(), start.path() + "/pictures");
}

TEST_F(Field, CancelledFolderDialogLeavesTheText) {
    QFolderSelectWidget folder;
    folder.SetText("/no/such/folder");
    WhenFolderDialogOpens([](QFileDialog& dialog) { dialog.reject(); });
    folder.findChild<QPushButton*>()->click();
    EXPECT_EQ(folder.GetText(), "/no/such/folder");
}

TEST_F(Field, StaticLabelElidesInTheMiddleAndTellsTheWhole) {
    QWidget window;
    window.resize(500, 40);
    QStaticLabel label("Line 3 east, reject station (KV-1042)", &window);
    label.setGeometry(0, 0, 480, 30);
    kit_test::Show(window);
    EXPECT_EQ(label.GetShownText(), label.text());
    label.resize(120, 30);
    const QString shown = label.GetShownText();
    EXPECT_TRUE(shown.startsWith("Line"));
    EXPECT_TRUE(shown.endsWith("1042)"));
    EXPECT_LE(label.fontMetrics().horizontalAdvance(shown), 120);
    QHelpEvent help(QEvent::ToolTip, QPoint(5, 5), label.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&label, &help);
    EXPECT_EQ(QToolTip::text(), label.text());
    EXPECT_LT(label.minimumSizeHint().width(), 100);
}

TEST_F(Field, StaticLabelLeavesWrappedAndRichTextAlone) {
    QStaticLabel wrapped("one two three four five six");
    wrapped.setWordWrap(true);
    wrapped.resize(40, 100);
    EXPECT_EQ(wrapped.GetShownText(), wrapped.text());
    QStaticLabel rich("<b>one two three four</b>");
    rich.resize(20, 20);
    EXPECT_EQ(rich.GetShownText(), rich.text());
}

TEST_F(Field, StatusItemsDontMoveWhileTheirFiguresChange) {
    QWidget row;
    row.setFixedHeight(25);
    row.resize(600, 25);
    auto* layout = new QHBoxLayout(&row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* rate = new QStatusLabel("AcquisitionRate:30.00fps");
    auto* next = new QStatusLabel("LostPacket: 0");
    layout->addWidget(rate);
    layout->addWidget(next);
    layout->addStretch();
    kit_test::Show(row);
    const int place = next->x();
    for (const char* text :
         {"AcquisitionRate:11.11fps", "AcquisitionRate:28.88fps", "AcquisitionRate:9.99fps"}) {
        rate->setText(text);
        QCoreApplication::processEvents();
        EXPECT_EQ(next->x(), place) << text;
    }
    rate->setText("AcquisitionRate:130.00fps");
    QCoreApplication::processEvents();
    EXPECT_GT(next->x(), place);
    // Hidden and shown again, the item has the width that it needs.
    rate->hide();
    rate->setText("AcquisitionRate:30.00fps");
    rate->show();
    rate->setText("AcquisitionRate:30.00fps");
    EXPECT_EQ(rate->accessibleName(), rate->text());
    EXPECT_EQ(rate->focusPolicy(), Qt::NoFocus);
    EXPECT_TRUE(rate->isReadOnly());
}

TEST_F(Field, StatusItemGivesWayWhereTheRowIsFull) {
    for (const QString text : {"Resolution: 1920 * 1080", "分辨率：1920 * 1080"}) {
        QStatusLabel item(text);
        EXPECT_GE(item.sizeHint().width(), Look::FigureWidth(item.fontMetrics(), text));
        item.resize(item.sizeHint());
        EXPECT_EQ(item.GetShownText(), text);
        // The caption gives way, the value stays.
        for (int width = item.sizeHint().width(); width >= item.minimumSizeHint().width(); --width) {
            item.resize(width, 20);
            const QString shown = item.GetShownText();
            EXPECT_TRUE(shown.endsWith("1920 * 1080")) << shown.toStdString();
            EXPECT_EQ(shown[0], text[0]);
            EXPECT_LE(Look::FigureWidth(item.fontMetrics(), shown), width);
        }
        EXPECT_LT(item.minimumSizeHint().width(), item.sizeHint().width());
    }
    QStatusLabel plain("Nothing to be told here");
    EXPECT_LT(plain.minimumSizeHint().width(), plain.sizeHint().width() / 2);
    plain.resize(plain.minimumSizeHint());
    EXPECT_EQ(plain.GetShownText(), plain.text()) << "cut at its end when it is drawn";
}

TEST_F(Field, StatusItemTakesTheWidthOfANewLanguage) {
    QStatusLabel item("AcquisitionRate:30.00fps");
    const int wide = item.sizeHint().width();
    QEvent language(QEvent::LanguageChange);
    QCoreApplication::sendEvent(&item, &language);
    item.setText("Rate:30.00fps");
    EXPECT_LT(item.sizeHint().width(), wide);
    item.setText("Rate:3.00fps");
    EXPECT_EQ(item.sizeHint().width(), QStatusLabel("Rate:30.00fps").sizeHint().width()) << "as ever";
}
