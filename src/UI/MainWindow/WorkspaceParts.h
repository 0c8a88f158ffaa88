// What the central window asks of the views that stand in its docks or over it. Each part is made by a
// function, so that the window knows none of the classes, and a window without a part still works: its place
// shows a hint and the actions that lead to it can't be chosen (QOrvCentralWindow::IsAvailable).
#pragma once

#include <QString>
#include <functional>

class QDialog;
class QWidget;

// A view that follows the open camera. Main thread. It gets ids, looks the camera up and copes with its
// having gone.
class CCameraView {
public:
    virtual ~CCameraView() = default;

    // What stands in the dock; made with the dock as parent, and owned by it.
    virtual QWidget* Widget() = 0;
    virtual void OnCameraOpen(long lCameraID) = 0;
    virtual void OnCameraClose(long lCameraID) = 0;
};

// The editor of a camera's features.
class CFeatureEditor : public CCameraView {
public:
    virtual void OnCameraStartShot() = 0;
    virtual void OnCameraStopShot() = 0;
    // Reads the features again whose category is `nType` (0: all) or whose name is `strName`.
    virtual void UpdateFeatures(int nType, const QString& strName) = 0;
    virtual void LoadCamFeatures() = 0;
    virtual void SaveCamFeatures() = 0;
    virtual void OnOptionsChanged() = 0;
};

// The window of the tool panels: made on first use, deleted when the camera closes.
class CToolPanel {
public:
    virtual ~CToolPanel() = default;

    virtual QDialog* Window() = 0;
    virtual void SetCurCamera(long lCameraID) = 0;
    virtual void UpdateCurrentPage() = 0;
};

// What the options window needs to know.
struct _OPTIONS_CALL_ {
    bool recording = false;
    long cameraId = -1;
    bool networkPage = false; // the network page in front
    int language = 0;
};

struct _WORKSPACE_PARTS_ {
    std::function<CFeatureEditor*(QWidget* parent)> featureEditor;
    std::function<CCameraView*(QWidget* parent)> embeddedView;
    // `closed` is to be called when the operator closes the window.
    std::function<CToolPanel*(QWidget* parent, std::function<void()> closed)> toolPanel;
    // Runs the options window. False when it could not be built; `accepted` tells whether it ended with OK.
    std::function<bool(QWidget* parent, const _OPTIONS_CALL_& call, bool& accepted)> options;
    // Runs the window for the files in the camera.
    std::function<void(QWidget* parent, long cameraId)> fileAccess;
};
