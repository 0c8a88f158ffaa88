#include "UI/MainWindow/QForceIPWidget.h"

#include "Camera/CCameraRef.h"
#include "Camera/WalkByIndex.h"
#include "Common/QFunction.h"
#include "UI/Controls/QLineEditEx.h"
#include "UI/MainWindow/QPingThread.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QStringList>

namespace {

constexpr QSize kDialogSize(374, 206);
constexpr int kForeignPingMs = 30000;

} // namespace

QForceIPWidget::QForceIPWidget(QWidget* parent, int nTitleStyle) : QDialogEx(nTitleStyle, parent) {}

QForceIPWidget::~QForceIPWidget() {
    Release();
}

bool QForceIPWidget::InitWidget() {
    if (m_pEdit)
        return true;
    m_pHint = new QLabel(this);
    m_pHint->setWordWrap(true);
    m_pHint->setTextFormat(Qt::PlainText);
    m_pLabel = new QLabel(this);
    m_pEdit = new QLineEditEx(this);
    m_pEdit->setObjectName("forceIpEdit");
    m_pLabel->setBuddy(m_pEdit);

    auto* rows = new QGridLayout;
    rows->setContentsMargins(24, 20, 24, 8);
    rows->setHorizontalSpacing(12);
    rows->setVerticalSpacing(16);
    rows->addWidget(m_pHint, 0, 0, 1, 2);
    rows->addWidget(m_pLabel, 1, 0);
    rows->addWidget(m_pEdit, 1, 1);
    rows->setColumnStretch(1, 1);
    rows->setRowStretch(2, 1);
    SetLayoutEx(rows);
    setFixedSize(kDialogSize);
    SetTexts();

    m_pPing = std::make_unique<QPingThread>();
    connect(GetOKBtn(), &QPushButton::clicked, this, &QForceIPWidget::OnBtnOK);
    connect(m_pPing.get(), &QPingThread::SigEndThread, this, &QForceIPWidget::OnPingThreadEnd);
    m_pEdit->setFocus();
    return true;
}

void QForceIPWidget::Release() {
    m_pPing.reset();
    delete m_pEdit;
    delete m_pLabel;
    delete m_pHint;
    m_pEdit = nullptr;
    m_pLabel = nullptr;
    m_pHint = nullptr;
}

void QForceIPWidget::SetTexts() {
    SetTitleText(tr("Edit IP Address"));
    m_pHint->setText(tr("Editing IP address to make device reachable."));
    m_pLabel->setText(tr("IP address:"));
    GetOKBtn()->setText(QDialogEx::tr("OK"));
    GetCancelBtn()->setText(QDialogEx::tr("Cancel"));
    m_pEdit->setAccessibleName(m_pLabel->text());
}

void QForceIPWidget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_pEdit)
        SetTexts();
    QDialogEx::changeEvent(event);
}

void QForceIPWidget::SetCurDeviceIP(unsigned int ip) {
    m_pEdit->setText(QFunction::GetIP(ip));
    m_nCurrentIP = ip;
}

unsigned int QForceIPWidget::GetEditIP() const {
    const QStringList parts = m_pEdit->text().split('.');
    if (parts.size() != 4)
        return 0;
    unsigned int ip = 0;
    for (const QString& part : parts)
        ip = ip << 8 | part.toUInt();
    return ip;
}

void QForceIPWidget::OnBtnOK() {
    const QString text = m_pEdit->text();
    const unsigned int ip = QFunction::GetIP(text);
    if (!QFunction::CheckIPAddress(text)) {
        Refuse(tr("Please make sure the IP address is valid."));
        return;
    }
    // deliberate: the address that the camera already has is neither taken nor refused.
    if (!IsIPAddrChanged(ip))
        return;
    m_pPing->SetIPAddress(text);
    m_pEdit->setFocus(); // and not on Cancel, where it would go from a disabled OK
    GetOKBtn()->setEnabled(false);
    // What is being looked for is what will be taken.
    m_pEdit->setReadOnly(true);
    m_pPing->start(QThread::InheritPriority);
}

void QForceIPWidget::OnPingThreadEnd() {
    GetOKBtn()->setEnabled(true);
    m_pEdit->setReadOnly(false);
    const unsigned int ip = QFunction::GetIP(m_pEdit->text());
    if (!m_pPing->GetPingResult() && !IsOtherDeviceUsed(ip)) {
        accept();
        return;
    }
    Refuse(tr("The IP address is used by other device."));
}

void QForceIPWidget::Refuse(const QString& message) {
    QFunction::ShowMessage(this, message, QString(), QString(), MESSAGE_ERROR);
    m_pEdit->setFocus();
    m_pEdit->selectAll();
}

bool QForceIPWidget::IsOtherDeviceUsed(unsigned int ip) {
    const WalkEnd end =
        WalkByIndex([] { return QCameraContainer::Instance()->GetTotalCameraNum(); }, &CCameraRef::ByIndex,
                    [ip](const CCameraRef& camera) { return camera->GetIP() != ip; });
    return end == WalkEnd::Stopped;
}

bool QForceIPWidget::PingIPAddr(const QString& address) {
    QProcess ping;
    ping.start("cmd", {"/c", QString("ping %1 -n 1").arg(address)}, QIODevice::ReadOnly);
    ping.waitForStarted(kForeignPingMs);
    ping.waitForFinished(kForeignPingMs);
    return QString::fromLocal8Bit(ping.readAllStandardOutput()).contains("ms");
}
