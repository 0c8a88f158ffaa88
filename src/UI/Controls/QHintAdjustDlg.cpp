#include "UI/Controls/QHintAdjustDlg.h"

#include "Common/QFunction.h"
#include "UI/Controls/MessageRow.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <new>

QHintAdjustDlg::QHintAdjustDlg(QWidget* parent) : QDialogEx(kTitleNotice, parent) {
    if (!QHintAdjustDlg::InitWidget())
        throw std::bad_alloc();
}

bool QHintAdjustDlg::InitWidget() {
    if (m_pText)
        return true;
    setModal(false);
    setAttribute(Qt::WA_ShowWithoutActivating);
    SetChangeTitleColor(false);
    const MessageRow row = MakeMessageRow(this);
    m_pPicture = row.picture;
    m_pText = row.text;
    row.layout->setContentsMargins(16, 8, 16, 8);
    m_pPicture->setPixmap(MessagePicture(MESSAGE_WARNING));
    SetLayoutEx(row.layout);
    // Both buttons tell before the dialog closes.
    disconnect(GetCancelBtn(), &QPushButton::clicked, this, &QDialogEx::OnBtnCancel);
    return connect(GetOKBtn(), &QPushButton::clicked, this, &QHintAdjustDlg::OnBtnAdjust) &&
           connect(GetCancelBtn(), &QPushButton::clicked, this, &QHintAdjustDlg::OnBtnIgnore) &&
           (SetMsgText(QString(), QString()), true);
}

void QHintAdjustDlg::SetMsgText(const QString& strTitle, const QString& strText) {
    SetTitleText(strTitle);
    SetMessageText(*m_pText, strText);
    setAccessibleDescription(strText);
    RefreshWidgetInfo();
}

void QHintAdjustDlg::OnBtnAdjust() {
    const QPointer<QHintAdjustDlg> self(this);
    Q_EMIT SigBtnAccepted(true);
    if (self)
        close();
}

void QHintAdjustDlg::OnBtnIgnore() {
    const QPointer<QHintAdjustDlg> self(this);
    Q_EMIT SigBtnAccepted(false);
    if (self)
        close();
}

void QHintAdjustDlg::RefreshWidgetInfo() {
    GetOKBtn()->setText(tr("To Adjust"));
    GetCancelBtn()->setText(tr("Ignore"));
    m_pPicture->setAccessibleName(MessageKindName(MESSAGE_WARNING));
    setFixedSize(MessageDialogSize(*this));
}

void QHintAdjustDlg::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_pText)
        RefreshWidgetInfo();
    QDialogEx::changeEvent(event);
}
