#include "UI/Controls/QMessageBoxDlg.h"

#include "UI/Controls/MessageRow.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <new>

QMessageBoxDlg::QMessageBoxDlg(QWidget* parent) : QDialogEx(kTitlePlain, parent) {
    if (!QMessageBoxDlg::InitWidget())
        throw std::bad_alloc();
}

bool QMessageBoxDlg::InitWidget() {
    if (m_pText)
        return true;
    const MessageRow row = MakeMessageRow(this);
    m_pPicture = row.picture;
    m_pText = row.text;
    SetLayoutEx(row.layout);
    connect(GetOKBtn(), &QPushButton::clicked, this, &QDialog::accept);
    SetMsgText(QString(), QString(), false, 0);
    return true;
}

void QMessageBoxDlg::SetMsgText(const QString& strTitle, const QString& strText, bool bCancel, int kind) {
    m_nKind = kind;
    SetTitleText(strTitle);
    SetMessageText(*m_pText, strText);
    m_pPicture->setPixmap(MessagePicture(kind));
    m_pPicture->setAccessibleName(MessageKindName(kind));
    GetCancelBtn()->setVisible(bCancel);
    setAccessibleDescription(strText);
    RefreshWidgetInfo();
    setFixedSize(MessageDialogSize(*this));
}

void QMessageBoxDlg::RefreshWidgetInfo() {
    GetOKBtn()->setText(MessageOKText(m_nKind));
    GetCancelBtn()->setText(tr("Cancel"));
}

void QMessageBoxDlg::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_pText) {
        RefreshWidgetInfo();
        setFixedSize(MessageDialogSize(*this));
    }
    QDialogEx::changeEvent(event);
}
