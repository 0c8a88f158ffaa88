#include "DeviceListFixture.h"

#include <QApplication>

namespace devices {

void WidgetFixture::SetUp() {
    ASSERT_TRUE(folder.isValid());
    QLocalCfg::SetDirectory(folder.path());
    ApplyLook();
    QFunction::SetMessagePresenter(
        [this](QWidget*, const QString& message, const QString& detail, const QString&, int kind) {
            m_messages.push_back(QString("%1|%2|%3").arg(message, detail).arg(kind).toStdString());
        });
    doubles.Reset();
    first = QFunction::GetCameraIDIndex() + 1;
}

void WidgetFixture::TearDown() {
    QCameraContainer::ReleaseInstance();
    EXPECT_EQ(doubles.OpenHandles('c'), 0) << "a handle was left";
    doubles.Reset();
    SetHostInterfaceSource({});
    QFunction::SetMessagePresenter({});
    QLocalCfg::ReleaseInstance();
    QLocalCfg::SetDirectory({});
}

std::vector<std::string> WidgetFixture::Messages() {
    std::vector<std::string> taken;
    taken.swap(m_messages);
    return taken;
}

void DeviceListFixture::SetUp() {
    WidgetFixture::SetUp();
    SetHost({Interface("eth0", "A", {0}), Interface("eth1", "B", {1})});
}

void DeviceListFixture::TearDown() {
    list.reset();
    WidgetFixture::TearDown();
}

void DeviceListFixture::SetHost(const QVector<_HOST_INTERFACE_>& interfaces) {
    SetHostInterfaceSource([interfaces] { return interfaces; });
}

void DeviceListFixture::MakeList() {
    list = std::make_unique<QDevListWidget>();
    list->resize(320, 480);
    list->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(list.get()));
    Settle();
}

void DeviceListFixture::Settle() {
    ASSERT_TRUE(WaitFor([this] { return !list->IsDetecting(); }));
    QCoreApplication::processEvents();
}

void DeviceListFixture::Round(const std::vector<_OV_CC_DEVICE_INFO_>& there) {
    if (!list)
        MakeList();
    Settle();
    doubles.SetDevices(there);
    list->OnBtnRefresh();
    Settle();
}

std::vector<std::string> DeviceListFixture::Tree() const {
    return TreeLines(tree());
}

QTreeWidgetItem* DeviceListFixture::Item(const std::string& text) const {
    for (QTreeWidgetItemIterator item(tree()); *item; ++item)
        if ((*item)->text(0).toStdString() == text)
            return *item;
    return nullptr;
}

std::string DeviceListFixture::CameraName(long number) {
    char name[129] = {};
    const QCamera* camera = Camera(number);
    return camera && camera->GetCameraName(name, sizeof name) ? name : "";
}

QPoint DeviceListFixture::CentreOf(QTreeWidgetItem* item) const {
    tree()->scrollToItem(item);
    return tree()->visualItemRect(item).center();
}

} // namespace devices
