// What the camera core tells its owner. Implemented by the central window.
#pragma once

#include <QString>

// All calls come from the camera's threads (grab, save) or from the thread that called QCamera. They must not
// block and must not stop the stream from within: an implementation only forwards, by queued signals.
class QCameraOwner {
public:
    virtual ~QCameraOwner() = default;

    // A message for the operator; `icon` is a message kind of QFunction::ShowMessage.
    virtual void OnShowMsg(const QString& title, const QString& detail, int icon) = 0;

    // The recording or series cannot go on.
    virtual void OnStopRecording() = 0;

    // Files were saved in `path`.
    virtual void OnShowSaveMsg(const QString& message, const QString& path) = 0;

    virtual void UpdateCaptureBtnAndAction(bool capturing) = 0;

    // Whether anybody looks at the embedded information. Asked for every frame, on the grab thread.
    virtual bool IsEmbedWidgetVisible() = 0;
};
