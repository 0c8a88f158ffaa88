#include "KitFixture.h"

#include "UI/Controls/QAdAction.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMenuEx.h"

#include <QAccessible>
#include <QButtonGroup>
#include <QMouseEvent>

using kit_test::Kit;

class ImageButton : public Kit {
protected:
    ImageButton() {
        m_button.SetBtnImageSet(":/ORV/Resources/btn2/capture");
        m_button.setFixedSize(44, 32);
        m_button.SetBtnIndex(9);
    }

    // As the window system sends it: press, release, double click, release.
    void DoubleClick() {
        const QPoint middle = m_button.rect().center();
        QTest::mouseClick(&m_button, Qt::LeftButton, Qt::NoModifier, middle);
        QMouseEvent second(QEvent::MouseButtonDblClick, middle, Qt::LeftButton, Qt::LeftButton,
                           Qt::NoModifier);
        QApplication::sendEvent(&m_button, &second);
        QTest::mouseRelease(&m_button, Qt::LeftButton, Qt::NoModifier, middle);
    }

    static bool HasColour(const QImage& image, const QColor& colour) {
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (QColor(image.pixel(x, y)) == colour)
                    return true;
        return false;
    }

    QImageButton m_button;
};

TEST_F(ImageButton, TellsPressReleaseAndClick) {
    QStringList order;
    QObject::connect(&m_button, &QImageButton::SigButtonPressed,
                     [&](int i) { order += QString("press %1").arg(i); });
    QObject::connect(&m_button, &QImageButton::SigButtonReleased,
                     [&](int i) { order += QString("release %1").arg(i); });
    QObject::connect(&m_button, &QImageButton::SigButtonClicked,
                     [&](int i, bool on) { order += QString("click %1 %2").arg(i).arg(on); });
    QTest::mouseClick(&m_button, Qt::LeftButton);
    EXPECT_EQ(order, (QStringList{"press 9", "release 9", "click 9 0"}));
}

TEST_F(ImageButton, WithACheckStateAClickTogglesItAndTellsTheNewOne) {
    m_button.SetCheckable(true);
    QSignalSpy clicks(&m_button, &QImageButton::SigButtonClicked);
    m_button.click();
    EXPECT_TRUE(m_button.IsChecked());
    m_button.click();
    EXPECT_FALSE(m_button.IsChecked());
    EXPECT_EQ(clicks, (QList<QVariantList>{{9, true}, {9, false}}));
}

TEST_F(ImageButton, WithoutACheckStateNothingChecksIt) {
    m_button.SetCheck(true);
    m_button.click();
    EXPECT_FALSE(m_button.IsChecked());
    m_button.SetCheckable(true);
    m_button.SetCheck(true);
    EXPECT_TRUE(m_button.IsChecked());
    m_button.SetCheckable(false);
    EXPECT_FALSE(m_button.IsChecked());
}

TEST_F(ImageButton, SettingTheCheckTellsNothing) {
    m_button.SetCheckable(true);
    QSignalSpy clicks(&m_button, &QImageButton::SigButtonClicked);
    m_button.SetCheck(true);
    EXPECT_EQ(clicks.count(), 0);
}

TEST_F(ImageButton, ButtonGroupNeitherUnchecksNorLosesIt) {
    QImageButton other;
    QButtonGroup group; // exclusive, as groups are
    group.addButton(&m_button, 21);
    group.addButton(&other, 22);
    m_button.SetCheckable(true);
    other.SetCheckable(true);
    QSignalSpy ids(&group, &QButtonGroup::idClicked);
    m_button.click();
    other.click();
    EXPECT_TRUE(m_button.IsChecked());
    EXPECT_TRUE(other.IsChecked());
    EXPECT_EQ(ids, (QList<QVariantList>{{21}, {22}}));
}

TEST_F(ImageButton, GuardedDoubleClickReachesNeitherTheSignalsNorTheBaseClass) {
    QSignalSpy presses(&m_button, &QImageButton::SigButtonPressed);
    QSignalSpy releases(&m_button, &QImageButton::SigButtonReleased);
    QSignalSpy clicks(&m_button, &QPushButton::clicked);
    QObject::connect(&m_button, &QImageButton::SigButtonClicked, &m_button, &QImageButton::ControlClickEvent);
    DoubleClick();
    EXPECT_EQ(presses.count(), 1);
    EXPECT_EQ(releases.count(), 1);
    EXPECT_EQ(clicks.count(), 1);
    EXPECT_FALSE(m_button.isDown());
}

TEST_F(ImageButton, UnguardedDoubleClickCountsTwice) {
    QSignalSpy clicks(&m_button, &QPushButton::clicked);
    DoubleClick();
    EXPECT_EQ(clicks.count(), 2);
}

TEST_F(ImageButton, GuardEndsAfterItsTime) {
    QSignalSpy clicks(&m_button, &QPushButton::clicked);
    QElapsedTimer clock;
    clock.start();
    m_button.ControlClickEvent();
    QTest::mouseClick(&m_button, Qt::LeftButton);
    EXPECT_EQ(clicks.count(), 0);
    EXPECT_TRUE(kit_test::Eventually([&] {
        if (clicks.isEmpty())
            QTest::mouseClick(&m_button, Qt::LeftButton);
        return clicks.count() == 1;
    }));
    EXPECT_GE(clock.elapsed(), 190);
}

TEST_F(ImageButton, GuardSetDuringAPressDoesNotLeaveTheButtonDown) {
    QTest::mousePress(&m_button, Qt::LeftButton);
    ASSERT_TRUE(m_button.isDown());
    m_button.ControlClickEvent();
    QSignalSpy releases(&m_button, &QImageButton::SigButtonReleased);
    QTest::mouseRelease(&m_button, Qt::LeftButton);
    EXPECT_EQ(releases.count(), 0);
    EXPECT_TRUE(kit_test::Eventually([&] { return !m_button.isDown(); }));
}

TEST_F(ImageButton, KeyboardClicksItToo) {
    QSignalSpy clicks(&m_button, &QImageButton::SigButtonClicked);
    QTest::keyClick(&m_button, Qt::Key_Space);
    QTest::keyClick(&m_button, Qt::Key_Return);
    EXPECT_EQ(clicks.count(), 2);
}

TEST_F(ImageButton, DrawsThePictureOfItsState) {
    kit_test::Show(m_button);
    const QImage normal = m_button.grab().toImage();
    m_button.setDown(true);
    const QImage pressed = m_button.grab().toImage();
    m_button.setDown(false);
    m_button.SetCheckable(true);
    m_button.SetCheck(true);
    const QImage checked = m_button.grab().toImage();
    m_button.SetCheck(false);
    m_button.setEnabled(false);
    const QImage disabled = m_button.grab().toImage();
    EXPECT_NE(normal, pressed);
    EXPECT_EQ(pressed, checked);
    EXPECT_NE(normal, disabled);
    EXPECT_TRUE(HasColour(pressed, Look::Colour("accentInk")));
    EXPECT_FALSE(HasColour(normal, Look::Colour("accentInk")));
    EXPECT_TRUE(HasColour(disabled, Look::Colour("disabledIcon")));
}

TEST_F(ImageButton, MissingPicturesAreDrawnAsTheNormalOne) {
    m_button.SetBtnImage(":/ORV/Resources/btn2/capture.png");
    kit_test::Show(m_button);
    m_button.setEnabled(false);
    EXPECT_TRUE(HasColour(m_button.grab().toImage(), Look::Colour("ink2")));
    m_button.SetBtnImage("", "", "", "");
    EXPECT_FALSE(HasColour(m_button.grab().toImage(), Look::Colour("ink2")));
}

TEST_F(ImageButton, TextTakesTheColoursThatWereSet) {
    QImageButton button;
    button.setText("MMMM");
    button.SetBtnTextColor(Qt::red);
    button.SetOnBtnTextColor(Qt::blue);
    button.resize(100, 30);
    kit_test::Show(button);
    EXPECT_TRUE(HasColour(button.grab().toImage(), Qt::red));
    button.setDown(true);
    EXPECT_TRUE(HasColour(button.grab().toImage(), Qt::blue));
    EXPECT_FALSE(HasColour(button.grab().toImage(), Qt::red));
}

TEST_F(ImageButton, TooLargePictureIsMadeToFit) {
    m_button.SetBtnImage(":/ORV/Resources/Hint/figure.png");
    m_button.setFixedSize(16, 16);
    kit_test::Show(m_button);
    const QImage drawn = m_button.grab().toImage();
    EXPECT_TRUE(HasColour(drawn, Look::Colour("accent")));
    EXPECT_NE(QColor(drawn.pixel(0, 0)), Look::Colour("accent"));
}

TEST_F(ImageButton, MenuTellsButtonEntryAndState) {
    QSignalSpy triggers(&m_button, &QImageButton::SigMenuTriggered);
    QAdAction* first = m_button.AddMenu("30 fps", true, 4);
    m_button.AddMenu("Other", false, 5);
    ASSERT_TRUE(m_button.menu());
    first->trigger();
    m_button.menu()->actions()[1]->trigger();
    ASSERT_EQ(triggers.count(), 2);
    EXPECT_EQ(triggers[0][0].toInt(), 9);
    EXPECT_EQ(triggers[0][1].toInt(), 4);
    EXPECT_EQ(triggers[0][2].value<long>(), -1);
    EXPECT_TRUE(triggers[0][3].toBool());
    EXPECT_EQ(triggers[1][1].toInt(), 5);
    EXPECT_FALSE(triggers[1][3].toBool());
}

TEST_F(ImageButton, MenuEntriesAreFoundByTheirIndex) {
    m_button.AddMenu("30 fps", true, 4);
    QAdAction* second = m_button.AddMenu("60 fps", true, 5);
    m_button.SetMenuChecked(5, true);
    EXPECT_TRUE(m_button.GetMenuCheckd(5));
    EXPECT_FALSE(m_button.GetMenuCheckd(4));
    m_button.SetMenuActionEnable(5, false);
    EXPECT_FALSE(second->isEnabled());
    m_button.SetMenuChecked(99, true);
    m_button.SetMenuActionEnable(99, true);
    EXPECT_FALSE(m_button.GetMenuCheckd(99));
    EXPECT_FALSE(QImageButton().GetMenuCheckd(0));
}

TEST_F(ImageButton, OwnMenuIsTakenAndGivenBack) {
    QMenuEx menu;
    auto* action = new QAdAction("Save", 3, 12, &menu);
    menu.addAction(action);
    menu.addAction("plain");
    QSignalSpy triggers(&m_button, &QImageButton::SigMenuTriggered);
    m_button.SetMenu(&menu);
    m_button.SetMenu(&menu);
    action->trigger();
    ASSERT_EQ(triggers.count(), 1);
    EXPECT_EQ(triggers[0][2].value<long>(), 12);
    m_button.SetMenu(nullptr);
    action->trigger();
    EXPECT_EQ(triggers.count(), 1);
    EXPECT_FALSE(m_button.menu());
}

TEST_F(ImageButton, ToolTipIsItsNameForAssistiveTechnology) {
    m_button.setToolTip("Capture and Save");
    QAccessibleInterface* face = QAccessible::queryAccessibleInterface(&m_button);
    ASSERT_TRUE(face);
    EXPECT_EQ(face->text(QAccessible::Name), "Capture and Save");
    m_button.setToolTip("Stop Capturing");
    EXPECT_EQ(face->text(QAccessible::Name), "Stop Capturing");
}
