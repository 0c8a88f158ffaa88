#include "UI/MainWindow/RemoteCamera.h"

#include "Camera/QCamera.h"
#include "Camera/QCameraContainer.h"
#include "Common/QFunction.h"
#include "UI/MainWindow/QAddCameraWidget.h"
#include "UI/MainWindow/QDevListWidget.h"

#include <QDialog>
#include <QPointer>
#include <QSize>
#include <QVariant>
#include <memory>
#include <new>

namespace {

QCamera* NewCamera() {
    try {
        return QCamera::NewInstance();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

struct ReleaseCamera {
    void operator()(QCamera* camera) const { camera->ReleaseRef(); }
};

} // namespace

long AddRemoteCamera(const QString& ip, uint32_t hostInterface) {
    _OV_CC_DEVICE_INFO_ info{};
    info.nTLayerType = OV_TLAYER_GIGE;
    info.transport.gige.currentIp = QFunction::GetIP(ip);
    info.transport.gige.hostInterface = hostInterface;
    const long id = QFunction::GetCameraIDIndex();
    QCamera* made = NewCamera();
    if (!made)
        return 0;
    made->AddRef();
    const std::unique_ptr<QCamera, ReleaseCamera> camera(made);
    camera->SetCameraID(id);
    camera->SetOVCCDevInfo(info);
    camera->SetRemoteCamera(true);
    if (camera->GenerateOVCDevInfoByConnectDev() != 0)
        return -1;
    QCameraContainer::Instance()->AddCamera(camera.get());
    return id;
}

uint32_t CurrentHostInterface(const QDevListWidget& list) {
    QVariant data;
    if (!list.GetCurrentItemData(data) || data.toSize().width() != QDevListWidget::ITEM_INTERFACE)
        return 0;
    return static_cast<uint32_t>(data.toSize().height());
}

void ShowAddRemoteCamera(QWidget* owner, QDevListWidget& list) {
    const QPointer<QDevListWidget> alive(&list);
    QAddCameraWidget dialog(owner, kTitlePlain);
    if (!dialog.InitWidget() || dialog.exec() != QDialog::Accepted)
        return;
    if (alive && !dialog.GetCameraIP().isEmpty())
        list.OnAddRemoteCamera(dialog.GetCameraID());
}
