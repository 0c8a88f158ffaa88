#include "UI/MainWindow/CameraUse.h"

#include "Camera/QCamera.h"
#include "Camera/QCameraContainer.h"

bool UseCamera(long lCameraID, const std::function<void(QCamera&)>& use) {
    QCameraContainer* const container = QCameraContainer::Instance();
    QCamera* const camera = container ? container->GetCamera(lCameraID) : nullptr;
    if (!camera)
        return false;
    camera->AddRef();
    use(*camera);
    camera->ReleaseRef();
    return true;
}
