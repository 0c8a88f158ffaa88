#include "UI/MainWindow/QAddCameraWidget.h"

#include "Camera/CCameraRef.h"
#include "Common/QFunction.h"
#include "Common/QLocalCfg.h"
#include "UI/Controls/QLineEditEx.h"
#include "UI/MainWindow/RemoteCamera.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

constexpr QSize kDialogSize(372, 169);

QAddCameraWidget::QAddCameraWidget(QWidget* parent, int nTitleStyle)
    : QDialogEx(nTitleStyle, parent), m_pAdder(dynamic_cast<QRemoteCameraAdder*>(parent)) {}

QAddCameraWidget::~QAddCameraWidget() {
    if (QLocalCfg* cfg = QLocalCfg::Instance(); cfg && m_pEdit)
        cfg->SetRemoteCamIP(m_pEdit->text());
    Release();
}

bool QAddCameraWidget::InitWidget() {
    if (m_pEdit)
        return true;
    m_pLabel = new QLabel(this);
    m_pEdit = new QLineEditEx(this);
    m_pEdit->setObjectName("remoteIpEdit");
    m_pLabel->setBuddy(m_pEdit);
    if (const QLocalCfg* cfg = QLocalCfg::Instance())
        m_pEdit->setText(cfg->GetRemoteCamIP());

    auto* rows = new QGridLayout;
    rows->setContentsMargins(24, 20, 24, 8);
    rows->setHorizontalSpacing(12);
    rows->addWidget(m_pLabel, 0, 0);
    rows->addWidget(m_pEdit, 0, 1);
    rows->setColumnStretch(1, 1);
    rows->setRowStretch(1, 1);
    SetLayoutEx(rows);
    setFixedSize(kDialogSize);
    SetTexts();
    connect(GetOKBtn(), &QPushButton::clicked, this, &QAddCameraWidget::OnBtnOK);
    m_pEdit->setFocus();
    m_pEdit->selectAll();
    return true;
}

void QAddCameraWidget::Release() {
    delete m_pEdit;
    delete m_pLabel;
    m_pEdit = nullptr;
    m_pLabel = nullptr;
}

void QAddCameraWidget::SetTexts() {
    SetTitleText(tr("Add Remote Camera"));
    m_pLabel->setText(tr("Camera IP Address:"));
    GetOKBtn()->setText(QDialogEx::tr("OK"));
    GetCancelBtn()->setText(QDialogEx::tr("Cancel"));
    m_pEdit->setAccessibleName(m_pLabel->text());
}

void QAddCameraWidget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_pEdit)
        SetTexts();
    QDialogEx::changeEvent(event);
}

QString QAddCameraWidget::GetCameraIP() const {
    return m_pEdit->text();
}

void QAddCameraWidget::OnBtnOK() {
    const QString text = m_pEdit->text();
    if (!QFunction::CheckIPAddress(text)) {
        Refuse(tr("Please make sure the IP address is valid."));
        return;
    }
    m_lCameraID = FindOrAdd(text);
    // deliberate: also for 0, a camera object that could not be made.
    if (m_lCameraID >= 0) {
        accept();
        return;
    }
    Refuse(tr("Failed to add the camera. Please make sure the\ncamera has been connected to the network."));
}

long QAddCameraWidget::FindOrAdd(const QString& text) const {
    if (const CCameraRef known = CCameraRef::ByIp(QFunction::GetIP(text)))
        return known->GetCameraID();
    return m_pAdder ? m_pAdder->AddCamera(text) : -1;
}

void QAddCameraWidget::Refuse(const QString& message) {
    QFunction::ShowMessage(this, message, QString(), QString(), MESSAGE_ERROR);
    m_pEdit->setFocus();
    m_pEdit->selectAll();
}
