// The row of buttons over the picture: connect, live view, capture, record, zoom.
#pragma once

#include <QToolBar>

class QButtonGroup;
class QImageButton;

// Each button carries the number of its action, and a click does nothing but tell that number; enabling and
// faces follow what the central window reports. Main thread.
class QOrvToolBar : public QToolBar {
    Q_OBJECT

public:
    // Action numbers of the buttons; also their ids in the group.
    enum Button {
        kCapture = 0,
        kZoomIn = 2,
        kZoomOut = 3,
        kFit = 4,
        kActualSize = 5,
        kConnect = 21,
        kStart = 22,
        kRecord = 23,
    };

    // Throws std::bad_alloc when it can't be built. All buttons are disabled at first.
    explicit QOrvToolBar(QWidget* pParent = nullptr);

    // Null for a number without a button.
    QImageButton* button(int nIndex) const;

    // Enables the buttons for what is selected in the device tree: an item type of the tree and, for a camera
    // item, its id. With a camera, Connect and Start also get their faces. Looks at the state of the camera
    // named, which need not be the open one; one that has gone changes nothing.
    void UpdateToolBarBtn(int nType, int nCameraID);

    void SetToolbarBtnEnable(bool bEnable); // all eight
    void SetToolbarZoomBtnEnable(bool bEnable);
    void SetToolBarZoomInAndOut(bool bInEnable, bool bOutEnable);
    void SetRotateBtnEnable(bool) {} // deliberate: the bar has no rotate button

    // Face and tool tip of a button whose action is on (connected, live, recording, capturing).
    void UpdateConnectBtnImg(bool bConnected);
    void UpdateContinousShotBtn(bool bLive);
    void UpdateRecordBtnImg(bool bRecording);
    void UpdateCapturingBtnImg(bool bCapturing);

    // Sets all texts again, in the present language.
    void RefreshWidgetInfo();

Q_SIGNALS:
    void SigToolBarBtnClicked(int nIndex);

protected:
    void changeEvent(QEvent* event) override;

private:
    bool InitWidget();
    QImageButton* AddButton(int nIndex, const char* name);
    void AddLine();
    void ShowFace(int nIndex, const char* set, bool bOn);

    QButtonGroup* m_pGroup = nullptr;
    bool m_bConnected = false;
    bool m_bLive = false;
    bool m_bRecording = false;
    bool m_bCapturing = false;
};
