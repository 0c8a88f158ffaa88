#include "UI/Controls/QAboutDlg.h"

#include "UI/Controls/Look.h"
#include "UI/Controls/MessageRow.h"

#include <QDate>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>
#include <new>

QAboutDlg::QAboutDlg(QWidget* parent) : QDialogEx(kTitlePlain, parent) {
    if (!QAboutDlg::InitWidget())
        throw std::bad_alloc();
}

bool QAboutDlg::InitWidget() {
    if (m_pName)
        return true;
    auto* mark = new QLabel(this);
    mark->setPixmap(Look::Picture(":/ORV/Resources/logo_large.png"));
    const auto caption = [this] {
        auto* label = new QLabel(this);
        label->setObjectName("caption");
        return label;
    };
    m_pNameCaption = caption();
    m_pName = new QLabel(this);
    m_pVersionCaption = caption();
    m_pVersion = new QLabel(this);
    auto* facts = new QGridLayout;
    facts->setHorizontalSpacing(12);
    facts->setVerticalSpacing(8);
    facts->addWidget(m_pNameCaption, 0, 0);
    facts->addWidget(m_pName, 0, 1);
    facts->addWidget(m_pVersionCaption, 1, 0);
    facts->addWidget(m_pVersion, 1, 1);
    facts->setColumnStretch(1, 1);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(24, 24, 32, 16);
    row->setSpacing(24);
    row->addWidget(mark);
    row->addLayout(facts, 1);
    SetLayoutEx(row);
    GetCancelBtn()->hide();
    connect(GetOKBtn(), &QPushButton::clicked, this, &QDialog::accept);
    RefreshWidgetInfo();
    return true;
}

void QAboutDlg::RefreshWidgetInfo() {
    SetTitleText(tr("About"));
    m_pNameCaption->setText(tr("Name:"));
    m_pName->setText(tr("KOLT CAPTURE(Linux)"));
    m_pVersionCaption->setText(tr("Version:"));
    m_pVersion->setText(tr("V%1 build%2").arg("1.0.0", "20170327"));
    setFixedSize(MessageDialogSize(*this));
}

void QAboutDlg::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_pName)
        RefreshWidgetInfo();
    QDialogEx::changeEvent(event);
}

QString QAboutDlg::GetSoftwareBuildDate() {
    return ConvertDateFormat(__DATE__);
}

QString QAboutDlg::ConvertDateFormat(const QString& strDate) {
    // The compiler pads the day with a blank.
    return QLocale::c().toDate(strDate.simplified(), "MMM d yyyy").toString("yyyyMMdd");
}
