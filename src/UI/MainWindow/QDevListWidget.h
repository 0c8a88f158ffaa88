// The device list: transports, host networks and cameras in a tree, with a row of buttons.
#pragma once

#include "Camera/Boundary/OvCameraControl.h"
#include "UI/MainWindow/NetworkGroups.h"

#include <QFont>
#include <QIcon>
#include <QMap>
#include <QVariant>
#include <QWidget>
#include <memory>
#include <vector>

class CCameraRef;
class QAction;
class QCheckBoxEx;
class QDeviceDetectThread;
class QHBoxLayout;
class QImageButton;
class QLabel;
class QMenuEx;
class QTimer;
class QTreeWidget;
class QTreeWidgetItem;
class QVBoxLayout;

// Owns the detection thread, its timer and the tree. Decides whether a GigE camera can be reached, and asks
// for a new address where it can't. Never opens a camera itself.
//
// Main thread. The detection thread's signals come queued and carry ids: each slot looks the camera up again
// and does nothing when camera or item has gone. At the end of each round every remote camera is asked for
// its name, which waits for its answer.
//
// Each item carries in Qt::UserRole a QSize: width the type of the item, height its number (the group's IPv4
// address or the camera's id).
class QDevListWidget : public QWidget {
    Q_OBJECT

public:
    enum {
        ITEM_GIGE_ROOT = 2,
        ITEM_INTERFACE = 3,
        ITEM_USB_ROOT = 4,
        ITEM_GIGE_CAMERA = 5,
        ITEM_USB_CAMERA = 6
    };

    // Starts the first detection round. Throws std::bad_alloc when it can't be built.
    explicit QDevListWidget(QWidget* parent = nullptr);
    // Waits for a running round.
    ~QDevListWidget() override;

    // Null when no item of a camera has this id.
    QTreeWidgetItem* GetCameraItem(long lCameraID) const;
    // The current item's data; false if there is none.
    bool GetCurrentItemData(QVariant& value) const;
    static bool IsIPReachable(const _Struct_Net_WORK& scNetWork, unsigned int nIP);
    // Asks the user for a new address and gives it to the camera.
    void ForceDeviceIP(long lCameraID);
    // Nothing while a round runs.
    void StartDevDetectThread();
    bool IsDetecting() const;
    // For the program's end: waits for a running round and lets no further one start, so that nobody asks for
    // the registry when it has been released.
    void EndDetection();

public Q_SLOTS:
    // `bAdd`: added by hand, and never marked as unreachable by this call.
    void OnNewCamera(long lCameraID, bool bIsReachable, bool bAdd = false);
    void OnUpdaterCamera(long lCameraID, bool bReachable);
    void OnUpdaterCameraName(const QString& strName, long lCameraID);
    void OnDeleteCamera(long lCameraID);
    void OnDetectDevFinished();
    void OnCameraOpen(long lCameraID);
    void OnCameraClose(long lCameraID);
    void OnAddRemoteCamera(long lCameraID);
    // Whether it can be reached; asks for a new address when not.
    bool OnCheckCameraReachable(long lCameraID);
    void UpdateDevices();
    void OnBtnRefresh();
    void OnOptionsChanged();
    void OnActionCopy();
    void OnActionDeleteCam();
    void OnCheckAutoScan(int state);
    void OnTreeItemClicked(QTreeWidgetItem* item, int column);
    void OnTreeSelectesChanged();
    void OnTreeItemDoubleClicked(QTreeWidgetItem* item, int column);
    void OnDevListCunstomContextMenuRequested(const QPoint& pos);

Q_SIGNALS:
    void SigOnOpenCamera(long lCamID);
    void SigClickedTreeItem(int nType, int nID);
    void SigAddRemoteCamera();
    void SigUpdatePreTitle();

protected:
    void changeEvent(QEvent* event) override;

private:
    bool InitWidget();
    bool InitCtrl();
    bool InitLayout();
    bool InitSignals();
    void Release();
    void SetTexts();

    // --- networks
    void InitDeviceTree();
    bool IsNetWorkExited(const QString& mac, const _HOST_ADDRESS_& entry);
    void RefreshNetWorks();
    void RemoveNetworks(const QVector<_HOST_INTERFACE_>& interfaces);
    void UpdateNetwork(const _HOST_INTERFACE_& host);
    void AddNetwork(const _HOST_INTERFACE_& host, const _HOST_ADDRESS_& entry);
    void ShowNetwork(QTreeWidgetItem& item, const _HOST_INTERFACE_& host, const _HOST_ADDRESS_& entry);
    _Struct_Net_WORK* FindNetwork(const QString& mac) const;
    _Struct_Net_WORK* FindNetworkOf(unsigned int hostInterface) const;

    // --- items
    void OnNewGigeCamera(long lCameraID, QTreeWidgetItem* pParentItem, bool bReachable, bool bCanOpen);
    void OnNewU3VCamera(long lCameraID, QTreeWidgetItem* pParentItem);
    void OnUpdaterGigeCamera(long lCameraID, bool bReachable);
    void OnUpdaterUSBCamera(long lCameraID);
    void OnUpDateGigeItem(QTreeWidgetItem* item);
    void OnUpDateUSBItem(QTreeWidgetItem* item);
    void UpdateRemoteItem(QTreeWidgetItem& item, const CCameraRef& camera, const QString& label);
    void ShowState(QTreeWidgetItem& item, bool reachable, bool open) const;
    void EmitClicked(const QTreeWidgetItem* item);

    long m_lOpenCameraID = -1;
    std::unique_ptr<QDeviceDetectThread> m_pThread;
    QTimer* m_pTimer = nullptr;
    QFont m_font;
    QFont m_boldFont;
    QTreeWidget* m_pTree = nullptr;
    QLabel* m_pLabel = nullptr; // hidden
    QCheckBoxEx* m_pAutoRefresh = nullptr;
    QImageButton* m_pBtnRefresh = nullptr;
    QVBoxLayout* m_pLayout = nullptr;
    QHBoxLayout* m_pRow = nullptr;
    QTreeWidgetItem* m_pGigeRoot = nullptr;
    QTreeWidgetItem* m_pUsbRoot = nullptr;
    std::vector<std::unique_ptr<_Struct_Net_WORK>> m_networks; // in the order of their making
    QMap<_Struct_Net_WORK*, QTreeWidgetItem*> m_mapNetworks;
    QMenuEx* m_pMenu = nullptr;
    QAction* m_pActionDelete = nullptr;
    QAction* m_pActionAdd = nullptr;
    QAction* m_pActionCopy = nullptr;
    QImageButton* m_pBtnCopy = nullptr;
    QImageButton* m_pBtnAdd = nullptr;
    QImageButton* m_pBtnDelete = nullptr;
    QIcon m_cameraIcon;
    QIcon m_unreachableIcon;
    QIcon m_openIcon;
};
