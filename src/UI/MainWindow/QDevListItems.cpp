// The tree's camera items.
#include "Camera/CCameraRef.h"
#include "Camera/CameraHandle.h"
#include "Camera/DeviceIdentity.h"
#include "UI/MainWindow/DeviceItemData.h"
#include "UI/MainWindow/DeviceTexts.h"
#include "UI/MainWindow/QDevListWidget.h"

#include <QBrush>
#include <QColor>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

namespace {

constexpr int kNameBytes = 128;
constexpr uint32_t kUsb3 = 0x2FF; // BCD; USB 3.0 and later are above

void SetNameOf(const CCameraRef& camera, const QString& label) {
    camera->SetCameraName(DeviceTexts::CutUtf8(label, kNameBytes).constData());
}

QString WithState(const QString& label, bool reachable) {
    return reachable ? label : label + DeviceTexts::Unreachable();
}

} // namespace

QTreeWidgetItem* QDevListWidget::GetCameraItem(long lCameraID) const {
    if (!m_pTree)
        return nullptr;
    for (QTreeWidgetItemIterator item(m_pTree); *item; ++item)
        if (IsCameraItem(**item) && ItemNumber(**item) == lCameraID)
            return *item;
    return nullptr;
}

bool QDevListWidget::IsIPReachable(const _Struct_Net_WORK& scNetWork, unsigned int nIP) {
    return IsReachableThrough(scNetWork, nIP);
}

void QDevListWidget::ShowState(QTreeWidgetItem& item, bool reachable, bool open) const {
    item.setIcon(0, open ? m_openIcon : reachable ? m_cameraIcon : m_unreachableIcon);
}

// --- new items
// ---------------------------------------------------------------------------------------------------------------

void QDevListWidget::OnNewCamera(long lCameraID, bool bIsReachable, bool bAdd) {
    if (!m_pGigeRoot || !m_pUsbRoot || GetCameraItem(lCameraID))
        return;
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!camera)
        return;
    const _OV_CC_DEVICE_INFO_ info = camera->GetOVCCDevInfo();
    if (info.nTLayerType == OV_TLAYER_USB3) {
        OnNewU3VCamera(lCameraID, m_pUsbRoot);
    } else if (info.nTLayerType == OV_TLAYER_GIGE) {
        _Struct_Net_WORK* network = FindNetworkOf(info.transport.gige.hostInterface);
        if (network)
            OnNewGigeCamera(lCameraID, m_mapNetworks[network],
                            bAdd || IsIPReachable(*network, info.transport.gige.currentIp), bIsReachable);
        else
            OnNewGigeCamera(lCameraID, m_pGigeRoot, true, bIsReachable);
    }
}

void QDevListWidget::OnNewGigeCamera(long lCameraID, QTreeWidgetItem* pParentItem, bool bReachable,
                                     bool /*bCanOpen*/) {
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!camera)
        return;
    const _OV_CC_DEVICE_INFO_ info = camera->GetOVCCDevInfo();
    const QString label = DeviceLabel(info);
    auto item = std::make_unique<QTreeWidgetItem>();
    if (!bReachable) {
        item->setForeground(0, QColor(169, 169, 169));
        camera->SetCameraReachable(false);
    }
    item->setText(0, WithState(label, bReachable));
    SetItemData(*item, ITEM_GIGE_CAMERA, static_cast<int>(lCameraID));
    SetNameOf(camera, label);
    item->setToolTip(0, DeviceTexts::GigeToolTip(info, DeviceTexts::Round::First));
    ShowState(*item, bReachable, lCameraID == m_lOpenCameraID);
    pParentItem->addChild(item.release());
}

void QDevListWidget::OnNewU3VCamera(long lCameraID, QTreeWidgetItem* pParentItem) {
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!camera)
        return;
    const _OV_CC_DEVICE_INFO_ info = camera->GetOVCCDevInfo();
    const QString label = DeviceLabel(info);
    auto item = std::make_unique<QTreeWidgetItem>();
    item->setText(0, label);
    SetItemData(*item, ITEM_USB_CAMERA, static_cast<int>(lCameraID));
    SetNameOf(camera, label);
    item->setToolTip(0, DeviceTexts::UsbToolTip(info));
    ShowState(*item, true, lCameraID == m_lOpenCameraID);
    pParentItem->addChild(item.release());
}

void QDevListWidget::OnAddRemoteCamera(long lCameraID) {
    OnNewCamera(lCameraID, true, true);
    if (QTreeWidgetItem* item = GetCameraItem(lCameraID))
        m_pTree->setCurrentItem(item);
}

void QDevListWidget::OnDeleteCamera(long lCameraID) {
    QTreeWidgetItem* item = GetCameraItem(lCameraID);
    if (!item)
        return;
    m_pTree->removeItemWidget(item, 0);
    delete item;
}

// --- updates
// -----------------------------------------------------------------------------------------------------------------

void QDevListWidget::OnUpdaterCamera(long lCameraID, bool bReachable) {
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!camera)
        return;
    if (camera->GetTLayerType() == OV_TLAYER_GIGE)
        OnUpdaterGigeCamera(lCameraID, bReachable);
    else if (camera->GetTLayerType() == OV_TLAYER_USB3)
        OnUpdaterUSBCamera(lCameraID);
}

// What the round says of reachability is not looked at: the networks decide.
void QDevListWidget::OnUpdaterGigeCamera(long lCameraID, bool /*bReachable*/) {
    QTreeWidgetItem* item = GetCameraItem(lCameraID);
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!item || !camera)
        return;
    const _OV_CC_DEVICE_INFO_ info = camera->GetOVCCDevInfo();
    if (const _Struct_Net_WORK* network = FindNetworkOf(info.transport.gige.hostInterface)) {
        const bool reachable = IsIPReachable(*network, info.transport.gige.currentIp);
        item->setForeground(0, reachable ? QColor(QRgb{0x66}) : QColor(196, 196, 196));
        camera->SetCameraReachable(reachable);
    }
    const QString label = DeviceLabel(info);
    const bool reachable = camera->IsGigECameraReachable();
    item->setText(0, WithState(label, reachable));
    SetItemData(*item, ITEM_GIGE_CAMERA, static_cast<int>(lCameraID));
    SetNameOf(camera, label);
    item->setToolTip(0, DeviceTexts::GigeToolTip(info, DeviceTexts::Round::Later));
    ShowState(*item, reachable, lCameraID == m_lOpenCameraID);
}

void QDevListWidget::OnUpdaterUSBCamera(long lCameraID) {
    QTreeWidgetItem* item = GetCameraItem(lCameraID);
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!item || !camera)
        return;
    const _OV_CC_DEVICE_INFO_ info = camera->GetOVCCDevInfo();
    if (info.transport.usb3.usbVersion > kUsb3) {
        item->setForeground(0, QColor(102, 102, 102));
        camera->SetCameraReachable(true);
    }
    const QString label = DeviceLabel(info);
    item->setText(0, label);
    SetNameOf(camera, label);
    item->setToolTip(0, DeviceTexts::UsbToolTip(info));
}

void QDevListWidget::OnUpdaterCameraName(const QString& strName, long lCameraID) {
    if (QTreeWidgetItem* item = GetCameraItem(lCameraID))
        item->setText(0, strName);
}

void QDevListWidget::OnDetectDevFinished() {
    for (QTreeWidgetItemIterator item(m_pTree); *item; ++item) {
        if (ItemType(**item) == ITEM_GIGE_CAMERA)
            OnUpDateGigeItem(*item);
        else if (ItemType(**item) == ITEM_USB_CAMERA)
            OnUpDateUSBItem(*item);
    }
    Q_EMIT SigUpdatePreTitle();
}

void QDevListWidget::OnUpDateGigeItem(QTreeWidgetItem* item) {
    const CCameraRef camera = CCameraRef::ById(ItemNumber(*item));
    if (!camera)
        return;
    const QString label = DeviceLabel(camera->GetOVCCDevInfo());
    if (camera->GetRemoteCamera()) {
        UpdateRemoteItem(*item, camera, label);
        return;
    }
    item->setText(0, WithState(label, camera->IsGigECameraReachable()));
    SetNameOf(camera, label);
}

// A remote camera is asked for the name that is shown; its own name keeps the form of the label.
void QDevListWidget::UpdateRemoteItem(QTreeWidgetItem& item, const CCameraRef& camera, const QString& label) {
    _OV_CC_DEVICE_INFO_ info = camera->GetOVCCDevInfo();
    const CCameraHandle handle(info, CCameraHandle::Log::Without);
    if (!handle || OV_CC_GetDeviceInfo(handle.Get(), &info) != OV_STATUS_OK)
        return;
    item.setText(0, RemoteNameOfItem(info));
    SetNameOf(camera, label);
}

void QDevListWidget::OnUpDateUSBItem(QTreeWidgetItem* item) {
    const CCameraRef camera = CCameraRef::ById(ItemNumber(*item));
    if (!camera)
        return;
    const QString label = DeviceLabel(camera->GetOVCCDevInfo());
    item->setText(0, label);
    SetNameOf(camera, label);
}

// --- the open camera
// ---------------------------------------------------------------------------------------------------------

void QDevListWidget::OnCameraOpen(long lCameraID) {
    m_lOpenCameraID = lCameraID;
    QTreeWidgetItem* item = GetCameraItem(lCameraID);
    if (!item)
        return;
    item->setFont(0, m_boldFont);
    ShowState(*item, true, true);
}

void QDevListWidget::OnCameraClose(long lCameraID) {
    m_lOpenCameraID = -1;
    QTreeWidgetItem* item = GetCameraItem(lCameraID);
    if (!item)
        return;
    item->setFont(0, m_font);
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    ShowState(*item, !camera || camera->IsGigECameraReachable(), false);
}
