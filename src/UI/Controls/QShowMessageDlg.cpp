#include "UI/Controls/QShowMessageDlg.h"

#include "UI/Controls/MessageRow.h"
#include "UI/Controls/QPushButtonEx.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QTextEdit>
#include <QVBoxLayout>
#include <new>

constexpr int kDetailHeight = 120;

QShowMessageDlg::QShowMessageDlg(QWidget* parent) : QDialogEx(kTitlePlain, parent) {
    if (!QShowMessageDlg::InitWidget())
        throw std::bad_alloc();
}

bool QShowMessageDlg::InitWidget() {
    if (m_pText)
        return true;
    const MessageRow row = MakeMessageRow(this);
    m_pPicture = row.picture;
    m_pText = row.text;
    m_pDetail = new QTextEdit(this);
    m_pDetail->setObjectName("messageDetail");
    m_pDetail->setReadOnly(true);
    m_pDetail->setFixedHeight(kDetailHeight);
    m_pDetail->setAccessibleName(tr("Details"));
    auto* detail = new QHBoxLayout;
    detail->setContentsMargins(20, 0, 20, 4);
    detail->addWidget(m_pDetail);
    auto* content = new QVBoxLayout;
    content->setContentsMargins(0, 0, 0, 0);
    content->setSpacing(0);
    content->addLayout(row.layout);
    content->addLayout(detail);
    SetLayoutEx(content);

    m_pBtnDetails = new QPushButtonEx(this);
    m_pBtnDetails->setObjectName("detailsButton");
    GetBtnLayout()->insertWidget(0, m_pBtnDetails);
    GetCancelBtn()->hide();
    connect(GetOKBtn(), &QPushButton::clicked, this, &QDialog::accept);
    connect(m_pBtnDetails, &QPushButton::clicked, this, &QShowMessageDlg::OnBtnDetails);
    SetInfo(QString(), QString(), QString(), 0);
    return true;
}

void QShowMessageDlg::SetInfo(const QString& strText, const QString& strDetail, const QString& strTitle,
                              int kind) {
    m_nKind = kind;
    SetTitleText(strTitle);
    SetMessageText(*m_pText, strText);
    m_pPicture->setPixmap(MessagePicture(kind));
    m_pPicture->setAccessibleName(MessageKindName(kind));
    m_pDetail->setPlainText(strDetail);
    m_pBtnDetails->setVisible(!strDetail.isEmpty());
    setAccessibleDescription(strText);
    ShowDetails(false);
}

void QShowMessageDlg::OnBtnDetails() {
    ShowDetails(!m_bDetailsShown);
}

void QShowMessageDlg::ShowDetails(bool bShow) {
    m_bDetailsShown = bShow;
    m_pDetail->setVisible(bShow);
    RefreshWidgetInfo();
    setFixedSize(MessageDialogSize(*this));
}

void QShowMessageDlg::RefreshWidgetInfo() {
    m_pBtnDetails->setText(m_bDetailsShown ? tr("Hide Details") : tr("Show Details"));
    GetOKBtn()->setText(MessageOKText(m_nKind));
}

void QShowMessageDlg::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_pText) {
        m_pDetail->setAccessibleName(tr("Details"));
        ShowDetails(m_bDetailsShown);
    }
    QDialogEx::changeEvent(event);
}
