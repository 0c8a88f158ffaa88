// A device list on the scripted doubles and scripted host interfaces.
#pragma once

#include "Camera/CCameraRef.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "DeviceRecords.h"
#include "UI/MainWindow/QDevListWidget.h"
#include "WidgetHelp.h"
#include "support/PlatformDoubles.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <QTreeWidgetItem>
#include <QTreeWidgetItemIterator>
#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <vector>

namespace devices {

// Settings in a folder of their own, messages written down, cameras and doubles put back at the end.
class WidgetFixture : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // "message|detail|kind" of those shown since the last call.
    std::vector<std::string> Messages();

    QTemporaryDir folder;
    support::PlatformDoubles& doubles = support::PlatformDoubles::Get();
    long first = 1; // id of the first camera that is made

private:
    std::vector<std::string> m_messages;
};

class DeviceListFixture : public WidgetFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    // Two networks: eth0 10.0.0.1/24 (MAC "A"), eth1 10.0.1.1/24 (MAC "B").
    void SetHost(const QVector<_HOST_INTERFACE_>& interfaces);
    void MakeList();
    // Refreshes with these devices and waits for the end of the round.
    void Round(const std::vector<_OV_CC_DEVICE_INFO_>& there);
    // Waits for the end of a running round and for its signals.
    void Settle();

    // All items as text, indented by their level.
    std::vector<std::string> Tree() const;
    // "text": the item, anywhere. Null if there is none.
    QTreeWidgetItem* Item(const std::string& text) const;
    QTreeWidgetItem* CameraItem(long number) const { return list->GetCameraItem(Id(number)); }
    long Id(long number) const { return first + number - 1; }
    QCamera* Camera(long number) { return QCameraContainer::Instance()->GetCamera(Id(number)); }
    std::string CameraName(long number);
    QPoint CentreOf(QTreeWidgetItem* item) const;
    static QSize Data(const QTreeWidgetItem* item) { return item->data(0, Qt::UserRole).toSize(); }
    QTreeWidget* tree() const { return list->findChild<QTreeWidget*>("deviceTree"); }
    QWidget* button(const char* name) const { return list->findChild<QWidget*>(QString("devices_") + name); }

    std::unique_ptr<QDevListWidget> list;
};

} // namespace devices
