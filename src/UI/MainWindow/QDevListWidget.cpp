// The device list itself: its controls, its clicks, and what the user can do with a camera.
#include "UI/MainWindow/QDevListWidget.h"

#include "Camera/CCameraRef.h"
#include "Camera/CameraHandle.h"
#include "Camera/QDeviceDetectThread.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "UI/Controls/QCheckBoxEx.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QMenuEx.h"
#include "UI/Controls/QTreeWidgetEx.h"
#include "UI/MainWindow/CDeviceItemDelegate.h"
#include "UI/MainWindow/DeviceItemData.h"
#include "UI/MainWindow/QForceIPWidget.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCursor>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QTimer>
#include <QTreeWidgetItem>
#include <QVBoxLayout>
#include <new>

namespace {

constexpr int kAutoRefreshMs = 30000;
constexpr QSize kRowButton(20, 20);
constexpr int kBoldWeight = QFont::Bold;

QImageButton* RowButton(const char* picture, QWidget* parent) {
    auto* button = new QImageButton(parent);
    button->SetBtnImageSet(QString(":/ORV/Resources/function btn/") + picture);
    button->setFixedSize(kRowButton);
    button->setObjectName(QString("devices_") + picture);
    return button;
}

QIcon TreeIcon(const QString& normal, const QString& selected) {
    QIcon icon;
    icon.addFile(":/ORV/Resources/tree/" + normal + ".png");
    icon.addFile(":/ORV/Resources/tree/" + selected + ".png", QSize(), QIcon::Selected);
    return icon;
}

void SetButtonText(QImageButton& button, const QString& text) {
    button.setToolTip(text);
    button.setAccessibleName(text);
}

} // namespace

QDevListWidget::QDevListWidget(QWidget* parent) : QWidget(parent) {
    if (!InitWidget()) {
        Release();
        throw std::bad_alloc();
    }
}

QDevListWidget::~QDevListWidget() {
    Release();
}

bool QDevListWidget::InitWidget() {
    try {
        if (!InitCtrl() || !InitLayout() || !InitSignals())
            return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
    StartDevDetectThread();
    OnOptionsChanged();
    m_pLabel->hide();
    return true;
}

bool QDevListWidget::InitCtrl() {
    m_pThread = std::make_unique<QDeviceDetectThread>();
    m_pTimer = new QTimer(this);
    m_font = font();
    m_boldFont = m_font;
    m_boldFont.setWeight(kBoldWeight);
    m_cameraIcon = TreeIcon("camera", "camera");
    m_unreachableIcon = TreeIcon("camera_off", "camera_off");
    m_openIcon = TreeIcon("camera_sel", "camera_sel");

    m_pTree = new QTreeWidgetEx(this);
    m_pTree->setObjectName("deviceTree");
    m_pTree->setItemDelegate(new CDeviceItemDelegate(m_pTree));
    m_pTree->setColumnCount(1);
    m_pTree->setHeaderHidden(true);
    m_pTree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_pTree->header()->setStretchLastSection(true);
    m_pTree->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_pTree->setSelectionMode(QAbstractItemView::SingleSelection);
    m_pTree->setExpandsOnDoubleClick(true);
    m_pTree->setUniformRowHeights(true);

    m_pLabel = new QLabel(this);
    m_pAutoRefresh = new QCheckBoxEx(this);
    m_pBtnRefresh = RowButton("refresh", this);
    m_pBtnCopy = RowButton("copy", this);
    m_pBtnAdd = RowButton("add", this);
    m_pBtnDelete = RowButton("delete", this);
    m_pMenu = new QMenuEx(this);
    m_pActionDelete = m_pMenu->addAction(QString());
    m_pActionAdd = m_pMenu->addAction(QString());
    m_pMenu->addSeparator();
    m_pActionCopy = m_pMenu->addAction(QString());
    SetTexts();
    InitDeviceTree();
    return true;
}

bool QDevListWidget::InitLayout() {
    m_pRow = new QHBoxLayout;
    m_pRow->setContentsMargins(12, 8, 12, 8);
    m_pRow->setSpacing(8);
    m_pRow->addWidget(m_pBtnCopy);
    m_pRow->addWidget(m_pBtnAdd);
    m_pRow->addWidget(m_pBtnDelete);
    m_pRow->addWidget(m_pLabel);
    m_pRow->addStretch();
    m_pRow->addWidget(m_pAutoRefresh);
    m_pRow->addWidget(m_pBtnRefresh);

    auto* line = new QFrame(this);
    line->setObjectName("deviceLine");
    line->setFrameShape(QFrame::NoFrame);
    line->setFixedHeight(1);
    line->setBackgroundRole(QPalette::Mid);
    line->setAutoFillBackground(true);

    m_pLayout = new QVBoxLayout(this);
    m_pLayout->setContentsMargins(0, 0, 0, 0);
    m_pLayout->setSpacing(0);
    m_pLayout->addWidget(m_pTree, 1);
    m_pLayout->addWidget(line);
    m_pLayout->addLayout(m_pRow);
    return true;
}

bool QDevListWidget::InitSignals() {
    QDeviceDetectThread* thread = m_pThread.get();
    connect(thread, &QDeviceDetectThread::SigNewCamera, this,
            [this](long id, bool canOpen) { OnNewCamera(id, canOpen); });
    connect(thread, &QDeviceDetectThread::SigDeleteCamera, this, &QDevListWidget::OnDeleteCamera);
    connect(thread, &QDeviceDetectThread::SigUpdateCameraInfo, this, &QDevListWidget::OnUpdaterCamera);
    connect(thread, &QDeviceDetectThread::SigUpdateCamName, this, &QDevListWidget::OnUpdaterCameraName);
    connect(thread, &QDeviceDetectThread::SigDetectDevFinished, this, &QDevListWidget::OnDetectDevFinished);

    connect(m_pTree, &QTreeWidget::itemDoubleClicked, this, &QDevListWidget::OnTreeItemDoubleClicked);
    connect(m_pTree, &QTreeWidget::itemClicked, this, &QDevListWidget::OnTreeItemClicked);
    connect(m_pTree, &QTreeWidget::itemSelectionChanged, this, &QDevListWidget::OnTreeSelectesChanged);
    connect(m_pTree, &QTreeWidget::customContextMenuRequested, this,
            &QDevListWidget::OnDevListCunstomContextMenuRequested);

    connect(m_pAutoRefresh, &QCheckBox::stateChanged, this, &QDevListWidget::OnCheckAutoScan);
    connect(m_pBtnRefresh, &QPushButton::clicked, this, &QDevListWidget::OnBtnRefresh);
    connect(m_pTimer, &QTimer::timeout, this, &QDevListWidget::UpdateDevices);
    connect(m_pActionCopy, &QAction::triggered, this, &QDevListWidget::OnActionCopy);
    connect(m_pActionDelete, &QAction::triggered, this, &QDevListWidget::OnActionDeleteCam);
    connect(m_pActionAdd, &QAction::triggered, this, &QDevListWidget::SigAddRemoteCamera);
    connect(m_pBtnCopy, &QPushButton::clicked, this, &QDevListWidget::OnActionCopy);
    connect(m_pBtnDelete, &QPushButton::clicked, this, &QDevListWidget::OnActionDeleteCam);
    connect(m_pBtnAdd, &QPushButton::clicked, this, &QDevListWidget::SigAddRemoteCamera);
    return true;
}

void QDevListWidget::EndDetection() {
    if (m_pTimer)
        m_pTimer->stop();
    if (m_pThread) {
        m_pThread->disconnect(this);
        m_pThread->exit(0);
        m_pThread.reset();
    }
}

void QDevListWidget::Release() {
    EndDetection();
    if (m_pTree)
        m_pTree->disconnect(this); // selections that change while it goes are nobody's business
    m_mapNetworks.clear();
    m_networks.clear();
    m_pGigeRoot = nullptr;
    m_pUsbRoot = nullptr;
    delete m_pMenu;
    m_pMenu = nullptr;
    delete m_pTree;
    m_pTree = nullptr;
    delete m_pTimer;
    m_pTimer = nullptr;
}

void QDevListWidget::SetTexts() {
    m_pAutoRefresh->setText(tr("Auto-Refresh"));
    m_pActionDelete->setText(tr("Delete"));
    m_pActionAdd->setText(tr("Add Remote Camera"));
    m_pActionCopy->setText(tr("Copy Information"));
    SetButtonText(*m_pBtnRefresh, tr("Refresh"));
    SetButtonText(*m_pBtnDelete, m_pActionDelete->text());
    SetButtonText(*m_pBtnAdd, m_pActionAdd->text());
    SetButtonText(*m_pBtnCopy, m_pActionCopy->text());
    m_pTree->setAccessibleName(tr("Device"));
}

void QDevListWidget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_pTree) {
        SetTexts();
        // Groups and cameras get their texts anew by this.
        OnBtnRefresh();
    }
    QWidget::changeEvent(event);
}

// --- detection
// ---------------------------------------------------------------------------------------------------------------

void QDevListWidget::StartDevDetectThread() {
    if (m_pThread && !m_pThread->isRunning())
        m_pThread->start(QThread::InheritPriority);
}

bool QDevListWidget::IsDetecting() const {
    return m_pThread && m_pThread->isRunning();
}

void QDevListWidget::UpdateDevices() {
    RefreshNetWorks();
    StartDevDetectThread();
}

void QDevListWidget::OnBtnRefresh() {
    if (!m_pTree || !m_pGigeRoot || !m_pUsbRoot)
        return;
    RefreshNetWorks();
    StartDevDetectThread();
}

void QDevListWidget::OnCheckAutoScan(int state) {
    if (state == Qt::Checked)
        m_pTimer->start(kAutoRefreshMs);
    else
        m_pTimer->stop();
    if (QLocalCfg* cfg = QLocalCfg::Instance())
        cfg->SetAutoScanNewDev(state == Qt::Checked);
}

void QDevListWidget::OnOptionsChanged() {
    if (const QLocalCfg* cfg = QLocalCfg::Instance())
        m_pAutoRefresh->setChecked(cfg->GetAutoScanNewDev());
}

// --- clicks
// ------------------------------------------------------------------------------------------------------------------

bool QDevListWidget::GetCurrentItemData(QVariant& value) const {
    const QTreeWidgetItem* item = m_pTree ? m_pTree->currentItem() : nullptr;
    if (!item)
        return false;
    value = item->data(0, Qt::UserRole);
    return true;
}

void QDevListWidget::OnTreeItemClicked(QTreeWidgetItem* item, int /*column*/) {
    EmitClicked(item);
}

void QDevListWidget::OnTreeSelectesChanged() {
    EmitClicked(m_pTree->currentItem());
}

void QDevListWidget::EmitClicked(const QTreeWidgetItem* item) {
    const bool camera = item && IsCameraItem(*item);
    m_pBtnCopy->setEnabled(camera);
    m_pBtnDelete->setEnabled(camera);
    m_pBtnAdd->setEnabled(!camera);
    if (item)
        Q_EMIT SigClickedTreeItem(ItemType(*item), ItemNumber(*item));
}

void QDevListWidget::OnTreeItemDoubleClicked(QTreeWidgetItem* item, int /*column*/) {
    if (!item || !IsCameraItem(*item) || ItemNumber(*item) < 0)
        return;
    const long id = ItemNumber(*item);
    const CCameraRef camera = CCameraRef::ById(id);
    if (!camera)
        return;
    if (camera->IsGigECameraReachable())
        Q_EMIT SigOnOpenCamera(id);
    else
        ForceDeviceIP(id);
}

void QDevListWidget::OnDevListCunstomContextMenuRequested(const QPoint& pos) {
    const QTreeWidgetItem* item = m_pTree->itemAt(pos);
    if (!item)
        return;
    const bool camera = IsCameraItem(*item);
    if (!camera && ItemType(*item) != ITEM_INTERFACE)
        return;
    m_pActionCopy->setEnabled(true);
    m_pActionDelete->setEnabled(camera);
    m_pActionAdd->setEnabled(!camera);
    m_pMenu->popup(QCursor::pos());
}

// --- what the user can do
// ----------------------------------------------------------------------------------------------------

void QDevListWidget::OnActionCopy() {
    if (const QTreeWidgetItem* item = m_pTree->currentItem())
        QApplication::clipboard()->setText(item->toolTip(0));
}

void QDevListWidget::OnActionDeleteCam() {
    QTreeWidgetItem* item = m_pTree->currentItem();
    if (!item || !IsCameraItem(*item))
        return;
    const long id = ItemNumber(*item);
    if (id == m_lOpenCameraID) {
        QFunction::ShowMessage(this, tr("Please disconnect the camera before deleting it."), QString(),
                               QString(), MESSAGE_ERROR);
        return;
    }
    QCameraContainer::Instance()->DelCameraByID(id);
    delete item;
}

bool QDevListWidget::OnCheckCameraReachable(long lCameraID) {
    bool reachable = false;
    {
        const CCameraRef camera = CCameraRef::ById(lCameraID);
        if (!camera)
            return false;
        reachable = camera->IsGigECameraReachable();
    }
    if (!reachable)
        ForceDeviceIP(lCameraID);
    return reachable;
}

void QDevListWidget::ForceDeviceIP(long lCameraID) {
    const CCameraRef camera = CCameraRef::ById(lCameraID);
    if (!camera)
        return;
    // The dialog runs an event loop: the record is that of the moment when it was opened.
    const _OV_CC_DEVICE_INFO_ info = camera->GetOVCCDevInfo();
    const QPointer<QDevListWidget> alive(this);
    const QPointer<QForceIPWidget> dialog(new QForceIPWidget(this));
    if (!dialog->InitWidget())
        return;
    dialog->SetCurDeviceIP(info.transport.gige.currentIp);
    const bool accepted = dialog->exec() == QDialog::Accepted;
    if (!dialog || !alive)
        return; // the program is being closed
    const unsigned int ip = dialog->GetEditIP();
    delete dialog;
    if (!accepted)
        return;
    CCameraHandle handle(info, CCameraHandle::Log::With);
    if (!handle)
        return; // deliberate: neither a message nor a refresh
    const uint32_t status = OV_GIGE_ForceIp(handle.Get(), ip);
    if (status != OV_STATUS_OK)
        QFunction::ShowMessage(this, tr("Editing IP address failed. The device may be\nin use by others."),
                               QFunction::GenerateCameraOperateError(QFunction::GenerateORVErrCode(status)),
                               QString(), MESSAGE_ERROR);
    handle.Destroy();
    if (alive)
        OnBtnRefresh();
}
