#include "UI/Controls/QSaveDoneHintDlg.h"

#include "UI/Controls/Look.h"
#include "UI/Controls/MessageRow.h"
#include "UI/Controls/QPushButtonEx.h"

#include <QDesktopServices>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QUrl>

constexpr int kCloseMs = 2000;

QSaveDoneHintDlg::QSaveDoneHintDlg(QWidget* parent)
    : QDialog(parent)
    , m_open([](const QString& path) { QDesktopServices::openUrl(QUrl::fromLocalFile(path)); }) {
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    auto* frame = new QFrame(this);
    frame->setObjectName("notice");
    m_pPicture = new QLabel(frame);
    m_pPicture->setPixmap(Look::Picture(":/ORV/Resources/Hint/done.png"));
    m_pText = new QLabel(frame);
    m_pText->setObjectName("messageText");
    m_pText->setTextFormat(Qt::PlainText);
    m_pBtnView = new QPushButtonEx(tr("View"), frame);
    m_pBtnView->setObjectName("linkButton");
    m_pBtnView->setCursor(Qt::PointingHandCursor);
    auto* row = new QHBoxLayout(frame);
    row->setContentsMargins(20, 12, 12, 12);
    row->setSpacing(16);
    row->addWidget(m_pPicture);
    row->addWidget(m_pText, 1);
    row->addWidget(m_pBtnView);
    auto* whole = new QHBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(frame);
    whole->setSizeConstraint(QLayout::SetFixedSize);
    m_timerClose.setTimerType(Qt::PreciseTimer);
    m_timerClose.setInterval(kCloseMs);
    connect(&m_timerClose, &QTimer::timeout, this, &QSaveDoneHintDlg::OnTimer);
    connect(m_pBtnView, &QPushButton::clicked, this, &QSaveDoneHintDlg::OnBtnView);
}

void QSaveDoneHintDlg::SetMsgText(const QString& strText, const QString& strPath) {
    m_pText->setText(strText);
    m_pBtnView->setToolTip(strPath);
    setWindowTitle(strText);
    setAccessibleDescription(strPath);
    m_strPath = strPath;
    m_timerClose.start();
}

void QSaveDoneHintDlg::SetIcon(int kind) {
    m_pPicture->setPixmap(MessagePicture(kind));
    m_pPicture->setAccessibleName(MessageKindName(kind));
}

void QSaveDoneHintDlg::SetOpener(std::function<void(const QString&)> opener) {
    m_open = std::move(opener);
}

void QSaveDoneHintDlg::OnBtnView() {
    m_open(m_strPath);
}

void QSaveDoneHintDlg::OnTimer() {
    m_timerClose.stop();
    accept();
}

void QSaveDoneHintDlg::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        return; // deliberate: as in all dialogs
    QDialog::keyPressEvent(event);
}

void QSaveDoneHintDlg::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        m_pBtnView->setText(tr("View"));
    QDialog::changeEvent(event);
}
