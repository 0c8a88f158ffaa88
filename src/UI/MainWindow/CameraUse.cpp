#include "UI/MainWindow/CameraUse.h"

#include "Camera/CCameraRef.h"

#include <array>

bool UseCamera(long lCameraID, const std::function<void(QCamera&)>& use) {
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!camera)
        return false;
    use(*camera);
    return true;
}

QString NameOfCamera(const QCamera& camera) {
    std::array<char, 129> name{};
    return camera.GetCameraName(name.data(), static_cast<int>(name.size())) ? QString::fromUtf8(name.data())
                                                                            : QString();
}
