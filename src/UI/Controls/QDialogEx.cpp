#include "UI/Controls/QDialogEx.h"

#include "UI/Controls/CDialogTitle.h"
#include "UI/Controls/CFrameGrips.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QPushButtonEx.h"
#include "UI/Controls/QPushButtonExColor.h"
#include "UI/Controls/SystemKind.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <new>

QDialogEx::QDialogEx(int nTitleStyle, QWidget* parent)
    : QDialog(parent), m_nTitleStyle(nTitleStyle), m_bUbuntu(IsUbuntuSystem()), m_drag(*this) {
    if (!QDialogEx::InitWidget())
        throw std::bad_alloc();
}

QDialogEx::~QDialogEx() = default;

bool QDialogEx::InitWidget() {
    if (m_bBuilt)
        return true;
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    if (!CreateCtrl() || !CreateLayout() || !ConnectSlot())
        return false;
    installEventFilter(this);
    m_bBuilt = true;
    return true;
}

bool QDialogEx::CreateCtrl() {
    m_pTitle =
        new CDialogTitle(m_nTitleStyle == kTitleNotice ? "dialogNotice" : "dialogTitle", m_bUbuntu, this);
    m_pContent = new QWidget(this);
    m_pContent->setObjectName("dialogContent");
    m_pBottom = new QWidget(this);
    m_pBottom->setObjectName("dialogBottom");
    m_pBtnOK = new QPushButtonExColor(m_pBottom);
    m_pBtnOK->setObjectName("dialogOK");
    m_pBtnOK->setDefault(true);
    m_pBtnCancel = new QPushButtonEx(m_pBottom);
    m_pBtnCancel->setObjectName("dialogCancel");
    RefreshButtons();
    m_pGrips = new CFrameGrips(this);
    m_pGrips->SetEnabled(false);
    return true;
}

bool QDialogEx::CreateLayout() {
    m_pBtnLayout = new QHBoxLayout(m_pBottom);
    m_pBtnLayout->setContentsMargins(16, 8, 16, 12);
    m_pBtnLayout->setSpacing(8);
    m_pBtnLayout->addStretch();
    m_pBtnLayout->addWidget(m_pBtnOK);
    m_pBtnLayout->addWidget(m_pBtnCancel);

    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(1, 1, 1, 1);
    whole->setSpacing(0);
    whole->addWidget(m_pTitle);
    whole->addWidget(m_pContent, 1);
    whole->addWidget(m_pBottom);
    return true;
}

bool QDialogEx::ConnectSlot() {
    QImageButton* const close = m_pTitle->CloseButton();
    return connect(close, &QPushButton::clicked, this, &QDialogEx::OnClickedClose) &&
           connect(close, &QImageButton::SigButtonPressed, this, &QDialogEx::OnPressedClose) &&
           connect(m_pBtnCancel, &QPushButton::clicked, this, &QDialogEx::OnBtnCancel);
}

void QDialogEx::SetTitleText(const QString& strTitle) {
    setWindowTitle(strTitle);
    m_pTitle->SetText(strTitle);
}

QWidget* QDialogEx::GetTitleWidget() const {
    return m_pTitle;
}

void QDialogEx::SetLayoutEx(QLayout* pLayout) {
    delete m_pContent->layout();
    m_pContent->setLayout(pLayout);
}

void QDialogEx::SetMoveable(bool bMoveable) {
    m_bMoveable = bMoveable;
    if (!bMoveable)
        m_drag.Stop();
}

void QDialogEx::SetResizable(bool bResizable) {
    m_pGrips->SetEnabled(bResizable);
}

void QDialogEx::SetChangeTitleColor(bool bChange) {
    m_bChangeTitleColor = bChange;
    ShowTitleActive(!bChange || !isVisible() || isActiveWindow());
}

int QDialogEx::exec(bool bAppModal) {
    setWindowModality(bAppModal ? Qt::ApplicationModal : Qt::WindowModal);
    return QDialog::exec();
}

void QDialogEx::OnClickedClose() {
    close();
}

void QDialogEx::OnPressedClose(int /*iButtonIndex*/) {
    // A press that slips off the button must not drag the dialog.
    m_drag.Stop();
}

void QDialogEx::OnBtnCancel() {
    reject();
}

void QDialogEx::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        return; // deliberate: swallowed, no dialog closes on Escape
    QDialog::keyPressEvent(event);
}

void QDialogEx::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && m_bMoveable && m_pTitle->geometry().contains(event->pos()))
        m_drag.Start(*event);
    QDialog::mousePressEvent(event);
}

void QDialogEx::mouseMoveEvent(QMouseEvent* event) {
    if (m_drag.Follow(*event))
        Q_EMIT SigMoveDialog(pos());
    QDialog::mouseMoveEvent(event);
}

void QDialogEx::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        m_drag.Stop();
    QDialog::mouseReleaseEvent(event);
}

bool QDialogEx::eventFilter(QObject* watched, QEvent* event) {
    if (watched == this && event->type() == QEvent::WindowActivate)
        SetActivateDialg();
    else if (watched == this && event->type() == QEvent::WindowDeactivate)
        SetDeactivateDilog();
    return false;
}

void QDialogEx::SetActivateDialg() {
    if (m_bChangeTitleColor)
        ShowTitleActive(true);
}

void QDialogEx::SetDeactivateDilog() {
    if (m_bChangeTitleColor)
        ShowTitleActive(false);
}

void QDialogEx::ShowTitleActive(bool bActive) {
    m_pTitle->ShowActive(bActive);
}

void QDialogEx::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(Look::surface));
    painter.setPen(QColor(Look::fieldLine));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

// Buttons that were given another text keep it.
void QDialogEx::RefreshButtons() {
    m_pTitle->CloseButton()->setAccessibleName(tr("Close"));
    if (m_pBtnOK->text() == m_strOK)
        m_pBtnOK->setText(tr("OK"));
    if (m_pBtnCancel->text() == m_strCancel)
        m_pBtnCancel->setText(tr("Cancel"));
    m_strOK = tr("OK");
    m_strCancel = tr("Cancel");
}

void QDialogEx::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_bBuilt)
        RefreshButtons();
    QDialog::changeEvent(event);
}
