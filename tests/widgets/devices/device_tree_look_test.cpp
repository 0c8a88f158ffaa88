// How the device list looks: pictures that are kept, long names, names that are no plain text, both
// languages.
#include "DeviceListFixture.h"

#include "UI/Controls/QMenuEx.h"
#include "UI/MainWindow/CDeviceItemDelegate.h"
#include "support/TextFit.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QScrollBar>
#include <QToolTip>

namespace devices {
namespace {

using testing::IsEmpty;
using DevicesLook = DeviceListFixture;

std::vector<_OV_CC_DEVICE_INFO_> SomeCameras() {
    Gige line, other, foreign;
    line.user = "Line 3 east";
    line.serial = "KV-1042";
    other.mac = 2;
    other.serial = "KV-1043";
    other.maker = "KOLT";
    other.model = " VC-5000M";
    foreign.mac = 3;
    foreign.ip = 0xC0A80114;
    foreign.user = "Line 4";
    foreign.serial = "KV-1077";
    Usb usb;
    usb.user = "Bench";
    usb.serial = "U3-0007";
    return {GigeRecord(line), GigeRecord(other), GigeRecord(foreign), UsbRecord(usb)};
}

TEST_F(DevicesLook, Pictures) {
    SetHost({Interface("enp3s0", "02:00:00:00:00:0A", {0}), Interface("enp4s0", "02:00:00:00:00:0B", {1})});
    MakeList();
    KeepPicture(*list, "devices-empty.png");
    Round(SomeCameras());
    KeepPicture(*list, "devices-new.png");
    Round(SomeCameras());
    list->OnCameraOpen(Id(1));
    QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, CentreOf(CameraItem(1)));
    KeepPicture(*list, "devices-open.png");
    QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, CentreOf(CameraItem(3)));
    KeepPicture(*list, "devices-unreachable-selected.png");
    Q_EMIT tree()->customContextMenuRequested(CentreOf(CameraItem(3)));
    auto* menu = list->findChild<QMenuEx*>();
    ASSERT_TRUE(menu->isVisible());
    KeepPicture(*menu, "devices-menu.png");
    menu->close();
    list->OnCameraClose(Id(1));
}

TEST_F(DevicesLook, ALongNameIsElidedInTheMiddle) {
    Usb camera;
    camera.user = std::string(60, 'w');
    Round({UsbRecord(camera)});
    EXPECT_EQ(tree()->textElideMode(), Qt::ElideMiddle);
    EXPECT_EQ(tree()->header()->sectionSize(0), tree()->viewport()->width()) << "the column fills the list";
    EXPECT_EQ(tree()->horizontalScrollBar()->maximum(), 0);
    EXPECT_TRUE(CameraItem(1)->toolTip(0).startsWith(CameraItem(1)->text(0)));
    KeepPicture(*list, "devices-long-name.png");
}

TEST_F(DevicesLook, ANameIsNeverMarkup) {
    Gige camera;
    camera.user = "<b>x</b>";
    Round({GigeRecord(camera)});
    const QString tip = CameraItem(1)->toolTip(0);
    EXPECT_TRUE(tip.startsWith("<b>x</b>(G001)\r\n")) << "as it is, for the clipboard";
    QHelpEvent help(QEvent::ToolTip, CentreOf(CameraItem(1)), tree()->viewport()->mapToGlobal(QPoint(9, 9)));
    QCoreApplication::sendEvent(tree()->viewport(), &help);
    EXPECT_TRUE(QToolTip::isVisible());
    EXPECT_EQ(QToolTip::text(), CDeviceItemDelegate::ToolTipText(tip));
    QToolTip::hideText();
    EXPECT_TRUE(CDeviceItemDelegate::ToolTipText(tip).contains("&lt;b&gt;x"));
    EXPECT_EQ(CDeviceItemDelegate::ToolTipText("plain < text"), "plain < text");
}

TEST_F(DevicesLook, ANameIsDrawnInOneLine) {
    const CDeviceItemDelegate delegate;
    EXPECT_EQ(delegate.displayText("a\nb\tc\r\x01", QLocale::c()), "a b c  ");
    EXPECT_EQ(
        delegate.displayText(QString(QChar::LineSeparator) + QChar(QChar::ParagraphSeparator), QLocale::c()),
        "  ");
    EXPECT_EQ(delegate.displayText(QString::fromUtf8("\xE4\xB8\x9C"), QLocale::c()),
              QString::fromUtf8("\xE4\xB8\x9C"));
    Gige camera;
    camera.user = "a\nb";
    Round({GigeRecord(), GigeRecord(camera)});
    const int height = tree()->visualItemRect(Item("USB")).height();
    EXPECT_EQ(tree()->visualItemRect(CameraItem(1)).height(), height);
}

TEST_F(DevicesLook, StatesHaveIcons) {
    Round(SomeCameras());
    const auto picture = [](const QTreeWidgetItem* item) { return item->icon(0).pixmap(20).toImage(); };
    const QImage reachable = picture(CameraItem(1));
    EXPECT_FALSE(reachable.isNull());
    EXPECT_EQ(picture(CameraItem(4)), reachable);
    EXPECT_NE(picture(CameraItem(3)), reachable) << "unreachable";
    list->OnCameraOpen(Id(1));
    EXPECT_NE(picture(CameraItem(1)), reachable) << "open";
    EXPECT_NE(picture(CameraItem(1)), picture(CameraItem(3)));
    list->OnCameraClose(Id(1));
    EXPECT_EQ(picture(CameraItem(1)), reachable);
    for (const char* text : {"GigE", "eth0[10.0.0.1]", "USB"})
        EXPECT_FALSE(picture(Item(text)).isNull()) << text;
}

TEST_F(DevicesLook, FitsInBothLanguages) {
    Round(SomeCameras());
    list->resize(270, 480); // the narrowest that the dock can be
    EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(*list), IsEmpty());
    EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(*list), IsEmpty());
    Settle();
}

} // namespace
} // namespace devices
