#include "UI/Controls/QDialogEx.h"

#include "UI/Controls/CFrameGrips.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QPushButtonEx.h"
#include "UI/Controls/QPushButtonExColor.h"
#include "UI/Controls/QStaticLabel.h"
#include "UI/Controls/SystemKind.h"
#include "UI/Controls/WindowMove.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QVBoxLayout>
#include <new>

QDialogEx::QDialogEx(int nTitleStyle, QWidget* parent)
    : QDialog(parent), m_nTitleStyle(nTitleStyle), m_bUbuntu(IsUbuntuSystem()) {
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
    m_pTitle = new QWidget(this);
    m_pTitle->setObjectName(m_nTitleStyle == kTitleNotice ? "dialogNotice" : "dialogTitle");
    m_pTitle->setAttribute(Qt::WA_StyledBackground);
    m_pTitle->setFixedHeight(Look::dialogTitleHeight);
    m_pTitleLabel = new QStaticLabel(m_pTitle);
    m_pTitleLabel->setObjectName("dialogTitleText");
    m_pTitleLabel->setTextFormat(Qt::PlainText);
    m_pBtnClose = new QImageButton(m_pTitle);
    m_pBtnClose->setObjectName("dialogClose");
    m_pBtnClose->SetBtnImageSet(":/ORV/Resources/dialog/close");
    m_pBtnClose->setFixedSize(32, Look::dialogTitleHeight - 4);
    m_pBtnClose->setFocusPolicy(Qt::NoFocus);

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
    ShowTitleActive(true);
    return true;
}

bool QDialogEx::CreateLayout() {
    auto* title = new QHBoxLayout(m_pTitle);
    title->setSpacing(8);
    if (m_bUbuntu) {
        title->setContentsMargins(2, 0, 12, 0);
        title->addWidget(m_pBtnClose);
        title->addWidget(m_pTitleLabel, 1);
    } else {
        title->setContentsMargins(16, 0, 2, 0);
        title->addWidget(m_pTitleLabel, 1);
        title->addWidget(m_pBtnClose);
    }
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
    return connect(m_pBtnClose, &QPushButton::clicked, this, &QDialogEx::OnClickedClose) &&
           connect(m_pBtnClose, &QImageButton::SigButtonPressed, this, &QDialogEx::OnPressedClose) &&
           connect(m_pBtnCancel, &QPushButton::clicked, this, &QDialogEx::OnBtnCancel);
}

void QDialogEx::SetTitleText(const QString& strTitle) {
    setWindowTitle(strTitle);
    m_pTitleLabel->setText(strTitle);
}

void QDialogEx::SetLayoutEx(QLayout* pLayout) {
    delete m_pContent->layout();
    m_pContent->setLayout(pLayout);
}

void QDialogEx::SetMoveable(bool bMoveable) {
    m_bMoveable = bMoveable;
    if (!bMoveable)
        m_bDragging = false;
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
    m_bDragging = false;
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
    if (event->button() == Qt::LeftButton && m_bMoveable && m_pTitle->geometry().contains(event->pos())) {
        m_bDragging = true;
        m_ptPress = event->globalPos();
        m_ptWindow = pos();
    }
    QDialog::mousePressEvent(event);
}

void QDialogEx::mouseMoveEvent(QMouseEvent* event) {
    if (m_bDragging && !isMaximized()) {
        if (MoveBySystem(*this)) {
            m_bDragging = false;
        } else {
            move(m_ptWindow + event->globalPos() - m_ptPress);
            Q_EMIT SigMoveDialog(pos());
        }
    }
    QDialog::mouseMoveEvent(event);
}

void QDialogEx::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        m_bDragging = false;
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
    if (m_pTitle->property("active") == bActive)
        return;
    m_pTitle->setProperty("active", bActive);
    const QString set = ":/ORV/Resources/dialog/close";
    m_pBtnClose->SetBtnImage(set + (bActive ? ".png" : "_dis.png"), set + "_hov.png", set + "_sel.png",
                             set + "_dis.png");
    for (QWidget* widget : {m_pTitle, static_cast<QWidget*>(m_pTitleLabel)}) {
        widget->style()->unpolish(widget);
        widget->style()->polish(widget);
    }
}

void QDialogEx::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(Look::surface));
    painter.setPen(QColor(Look::fieldLine));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

// Buttons that were given another text keep it.
void QDialogEx::RefreshButtons() {
    m_pBtnClose->setAccessibleName(tr("Close"));
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
