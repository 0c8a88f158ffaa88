// Controls that carry an index, and the ones that only look different.

#include "KitFixture.h"

#include "UI/Controls/QAdAction.h"
#include "UI/Controls/QCheckBoxEx.h"
#include "UI/Controls/QComboBoxEx.h"
#include "UI/Controls/QGroupBoxEx.h"
#include "UI/Controls/QMenuBarEx.h"
#include "UI/Controls/QMenuEx.h"
#include "UI/Controls/QPushButtonEx.h"
#include "UI/Controls/QPushButtonExColor.h"
#include "UI/Controls/QRadioButtonEx.h"
#include "UI/Controls/QScrollAreaEx.h"
#include "UI/Controls/QSliderEx.h"
#include "UI/Controls/QSpinBoxEx.h"
#include "UI/Controls/QTreeWidgetEx.h"

#include <QHelpEvent>
#include <QScrollBar>
#include <QToolTip>
#include <QVBoxLayout>
#include <QWheelEvent>

using kit_test::Kit;

class Controls : public Kit {};

TEST_F(Controls, PushButtonsTellTheirIndex) {
    QPushButtonEx plain("Copy");
    QPushButtonExColor coloured("Apply");
    plain.SetIndex(3);
    coloured.SetIndex(4);
    QSignalSpy plainClicks(&plain, &QPushButtonEx::SigOnClickedButton);
    QSignalSpy colouredClicks(&coloured, &QPushButtonExColor::SigOnClickedButton);
    QTest::mouseClick(&plain, Qt::LeftButton);
    QTest::mouseClick(&coloured, Qt::LeftButton);
    EXPECT_EQ(plainClicks, (QList<QVariantList>{{3}}));
    EXPECT_EQ(colouredClicks, (QList<QVariantList>{{4}}));
    EXPECT_EQ(plain.GetIndex(), 3);
    EXPECT_EQ(coloured.GetIndex(), 4);
}

TEST_F(Controls, DisabledButtonTellsNothing) {
    QPushButtonEx button("Copy");
    button.setEnabled(false);
    QSignalSpy clicks(&button, &QPushButtonEx::SigOnClickedButton);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(clicks.count(), 0);
}

TEST_F(Controls, EnterClicksTheFocusedButtonOnce) {
    for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        QPushButtonEx plain("Copy");
        QPushButtonExColor coloured("Apply");
        QSignalSpy plainClicks(&plain, &QPushButtonEx::SigOnClickedButton);
        QSignalSpy colouredClicks(&coloured, &QPushButtonExColor::SigOnClickedButton);
        QTest::keyClick(&plain, static_cast<Qt::Key>(key));
        QTest::keyClick(&coloured, static_cast<Qt::Key>(key));
        EXPECT_EQ(plainClicks.count(), 1) << key;
        EXPECT_EQ(colouredClicks.count(), 1) << key;
    }
}

TEST_F(Controls, CheckBoxTellsItsIndexAndState) {
    QCheckBoxEx box("Polling");
    box.SetIndex(7);
    QSignalSpy toggles(&box, &QCheckBoxEx::Toggled);
    box.click();
    box.setChecked(false);
    box.setChecked(false);
    EXPECT_EQ(toggles, (QList<QVariantList>{{7, true}, {7, false}}));
}

TEST_F(Controls, GroupBoxTellsItsIndexAndState) {
    QGroupBoxEx box("Enable");
    box.SetIndex(2);
    box.setCheckable(true);
    QSignalSpy toggles(&box, &QGroupBoxEx::Toggled);
    box.setChecked(false);
    box.setChecked(true);
    EXPECT_EQ(toggles, (QList<QVariantList>{{2, false}, {2, true}}));
    EXPECT_EQ(box.GetIndex(), 2);
}

TEST_F(Controls, ActionTellsIndexChannelAndState) {
    QAdAction action("30 fps", 5, 77);
    action.setCheckable(true);
    QSignalSpy triggers(&action, &QAdAction::SigActionTriggered);
    action.trigger();
    action.SetIndex(6);
    action.SetChannelID(78);
    action.trigger();
    ASSERT_EQ(triggers.count(), 2);
    EXPECT_EQ(triggers[0][0].toInt(), 5);
    EXPECT_EQ(triggers[0][1].value<long>(), 77);
    EXPECT_TRUE(triggers[0][2].toBool());
    EXPECT_EQ(triggers[1][0].toInt(), 6);
    EXPECT_EQ(triggers[1][1].value<long>(), 78);
    EXPECT_FALSE(triggers[1][2].toBool());
}

class Combo : public Kit {
protected:
    Combo() {
        m_combo.addItem("Off", 0);
        m_combo.addItem("Once", 1);
        m_combo.addItem("Again", 1);
        m_combo.addItem("Name", "name");
        m_combo.setCurrentIndex(0);
    }
    QComboBoxEx m_combo;
};

TEST_F(Combo, WheelLeavesTheSelectionAndEmitsNothing) {
    m_combo.setCurrentIndex(1);
    QSignalSpy changes(&m_combo, QOverload<int>::of(&QComboBox::currentIndexChanged));
    QSignalSpy activations(&m_combo, QOverload<int>::of(&QComboBox::activated));
    for (int delta : {120, -120, -360}) {
        QWheelEvent wheel(QPointF(5, 5), m_combo.mapToGlobal(QPointF(5, 5).toPoint()), QPoint(),
                          QPoint(0, delta), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&m_combo, &wheel);
    }
    EXPECT_EQ(m_combo.currentIndex(), 1);
    EXPECT_EQ(changes.count(), 0);
    EXPECT_EQ(activations.count(), 0);
}

// Otherwise a panel full of combo boxes could not be scrolled.
TEST_F(Combo, WheelOverItScrollsThePanel) {
    QScrollAreaEx area;
    auto* panel = new QWidget;
    panel->setMinimumHeight(2000);
    auto* layout = new QVBoxLayout(panel);
    auto* combo = new QComboBoxEx(panel);
    combo->addItems({"a", "b"});
    layout->addWidget(combo, 0, Qt::AlignTop);
    area.setWidget(panel);
    area.resize(200, 100);
    kit_test::Show(area);
    QWheelEvent wheel(QPointF(5, 5), combo->mapToGlobal(QPoint(5, 5)), QPoint(), QPoint(0, -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    // Only what comes from the window system goes on to the parents.
    QSpontaneKeyEvent::setSpontaneous(&wheel);
    qApp->notify(combo, &wheel);
    ASSERT_GT(area.verticalScrollBar()->maximum(), 0);
    EXPECT_GT(area.verticalScrollBar()->value(), 0);
    EXPECT_EQ(combo->currentIndex(), 0);
}

TEST_F(Combo, DataSelectsTheFirstItemThatHasIt) {
    m_combo.SetCurrentIndexByData(1);
    EXPECT_EQ(m_combo.currentIndex(), 1);
    m_combo.SetCurrentIndexByData("name");
    EXPECT_EQ(m_combo.currentIndex(), 3);
}

TEST_F(Combo, UnknownDataKeepsTheSelection) {
    m_combo.setCurrentIndex(2);
    QSignalSpy changes(&m_combo, QOverload<int>::of(&QComboBox::currentIndexChanged));
    m_combo.SetCurrentIndexByData(99);
    m_combo.SetCurrentIndexByData(QVariant());
    EXPECT_EQ(m_combo.currentIndex(), 2);
    EXPECT_EQ(changes.count(), 0);
    QComboBoxEx empty;
    empty.SetCurrentIndexByData(1);
    EXPECT_EQ(empty.currentIndex(), -1);
}

// The order of two events, by what was first.
struct Order {
    QStringList events;
};

TEST_F(Controls, SliderSavesAtTheReleaseBeforeTheBaseClassSeesIt) {
    QSliderEx slider(Qt::Horizontal);
    slider.resize(200, 24);
    kit_test::Show(slider);
    Order order;
    QObject::connect(&slider, &QSliderEx::SigSaveParam, [&] { order.events += "save"; });
    QObject::connect(&slider, &QSlider::sliderReleased, [&] { order.events += "released"; });
    slider.setValue(50);
    EXPECT_TRUE(order.events.isEmpty());
    QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(100, 12));
    EXPECT_TRUE(order.events.isEmpty());
    QTest::mouseRelease(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(100, 12));
    EXPECT_EQ(order.events, (QStringList{"save", "released"}));
}

TEST_F(Controls, SpinBoxSavesAtEachRelease) {
    QSpinBoxEx box;
    box.resize(80, 26);
    kit_test::Show(box);
    int value = -1;
    QSignalSpy saves(&box, &QSpinBoxEx::SigSaveParam);
    QObject::connect(&box, &QSpinBoxEx::SigSaveParam, [&] { value = box.value(); });
    const QPoint up(box.width() - 8, 6);
    QTest::mousePress(&box, Qt::LeftButton, Qt::NoModifier, up);
    EXPECT_EQ(saves.count(), 0);
    QTest::mouseRelease(&box, Qt::LeftButton, Qt::NoModifier, up);
    EXPECT_EQ(saves.count(), 1);
    EXPECT_EQ(value, 1);
}

TEST_F(Controls, ReceiverOfASaveMayDeleteTheControl) {
    auto* slider = new QSliderEx(Qt::Horizontal);
    QPointer<QSliderEx> watched(slider);
    QObject::connect(slider, &QSliderEx::SigSaveParam, [slider] { delete slider; });
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(5, 5), Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    static_cast<QObject*>(slider)->event(&release);
    EXPECT_TRUE(watched.isNull());
}

TEST_F(Controls, TreeTellsTheWholeOfAnElidedName) {
    QTreeWidgetEx tree;
    tree.setHeaderHidden(true);
    tree.resize(120, 100);
    auto* item = new QTreeWidgetItem(&tree, {"Reject station above the belt, second camera(KV-2210)"});
    auto* brief = new QTreeWidgetItem(&tree, {"KV"});
    kit_test::Show(tree);
    const auto ask = [&](QTreeWidgetItem* of) {
        const QPoint at = tree.visualItemRect(of).topLeft() + QPoint(5, 5);
        QHelpEvent help(QEvent::ToolTip, at, tree.viewport()->mapToGlobal(at));
        QApplication::sendEvent(tree.viewport(), &help);
    };
    QToolTip::hideText();
    ask(item);
    EXPECT_EQ(QToolTip::text(), item->text(0));
    item->setToolTip(0, "its own");
    ask(item);
    EXPECT_EQ(QToolTip::text(), "its own");
    QToolTip::hideText();
    ask(brief);
    EXPECT_NE(QToolTip::text(), "KV");
    EXPECT_EQ(tree.textElideMode(), Qt::ElideMiddle);
}

TEST_F(Controls, StandInForTheirStandardClass) {
    EXPECT_FALSE(QMenuBarEx().isNativeMenuBar());
    EXPECT_EQ(QMenuEx("File").title(), "File");
    EXPECT_EQ(QRadioButtonEx("By time").text(), "By time");
    EXPECT_TRUE(QScrollAreaEx().widgetResizable());
}
