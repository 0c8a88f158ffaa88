#include "UI/Controls/QDockTitleBar.h"

#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QStaticLabel.h"

#include <QDockWidget>
#include <QEvent>
#include <QHBoxLayout>

QDockTitleBar::QDockTitleBar(QDockWidget* pDock) : QWidget(pDock) {
    setObjectName("dockTitle");
    setAttribute(Qt::WA_StyledBackground);
    setFixedHeight(Look::dockTitleHeight);
    m_pTitle = new QStaticLabel(this);
    m_pTitle->setObjectName("dockTitleText");
    m_pTitle->setTextFormat(Qt::PlainText);
    m_pBtnClose = new QImageButton(this);
    m_pBtnClose->setObjectName("dockClose");
    m_pBtnClose->SetBtnImageSet(":/ORV/Resources/dialog/dock_close");
    m_pBtnClose->setFixedSize(24, 24);
    m_pBtnClose->setFocusPolicy(Qt::NoFocus);
    m_pBtnClose->setToolTip(tr("Close"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 0, 4, 1);
    layout->setSpacing(4);
    layout->addWidget(m_pTitle, 1);
    layout->addWidget(m_pBtnClose);
    connect(m_pBtnClose, &QPushButton::clicked, this, &QDockTitleBar::OnBtnClose);
    if (pDock) {
        SetTitleText(pDock->windowTitle());
        connect(pDock, &QWidget::windowTitleChanged, this, &QDockTitleBar::SetTitleText);
        pDock->setTitleBarWidget(this);
    }
}

void QDockTitleBar::SetTitleText(const QString& strTitle) {
    m_pTitle->setText(strTitle);
}

void QDockTitleBar::OnBtnClose() {
    if (auto* dock = qobject_cast<QDockWidget*>(parentWidget()))
        dock->close();
}

void QDockTitleBar::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        m_pBtnClose->setToolTip(tr("Close"));
    QWidget::changeEvent(event);
}

QSize QDockTitleBar::sizeHint() const {
    return {QWidget::sizeHint().width(), Look::dockTitleHeight};
}
