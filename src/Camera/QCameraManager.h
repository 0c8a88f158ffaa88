// A name kept for a manager of cameras; the registry is QCameraContainer.
#pragma once

#include <QObject>

class QCameraManager : public QObject {
    Q_OBJECT
};
