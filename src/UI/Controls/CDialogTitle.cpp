#include "UI/Controls/CDialogTitle.h"

#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QStaticLabel.h"

#include <QHBoxLayout>
#include <QStyle>
#include <QVariant>

CDialogTitle::CDialogTitle(const QString& name, bool ubuntu, QWidget* parent)
    : QWidget(parent), m_pLabel(new QStaticLabel(this)), m_pBtnClose(new QImageButton(this)) {
    setObjectName(name);
    setAttribute(Qt::WA_StyledBackground);
    setFixedHeight(Look::dialogTitleHeight);
    m_pLabel->setObjectName("dialogTitleText");
    m_pLabel->setTextFormat(Qt::PlainText);
    m_pBtnClose->setObjectName("dialogClose");
    m_pBtnClose->SetBtnImageSet(":/ORV/Resources/dialog/close");
    m_pBtnClose->setFixedSize(32, Look::dialogTitleHeight - 4);
    m_pBtnClose->setFocusPolicy(Qt::NoFocus);

    auto* layout = new QHBoxLayout(this);
    layout->setSpacing(8);
    if (ubuntu) {
        layout->setContentsMargins(2, 0, 12, 0);
        layout->addWidget(m_pBtnClose);
        layout->addWidget(m_pLabel, 1);
    } else {
        layout->setContentsMargins(16, 0, 2, 0);
        layout->addWidget(m_pLabel, 1);
        layout->addWidget(m_pBtnClose);
    }
    ShowActive(true);
}

void CDialogTitle::SetText(const QString& text) {
    m_pLabel->setText(text);
}

void CDialogTitle::ShowActive(bool active) {
    if (property("active") == active)
        return;
    setProperty("active", active);
    const QString set = ":/ORV/Resources/dialog/close";
    m_pBtnClose->SetBtnImage(set + (active ? ".png" : "_dis.png"), set + "_hov.png", set + "_sel.png",
                             set + "_dis.png");
    for (QWidget* widget : {static_cast<QWidget*>(this), static_cast<QWidget*>(m_pLabel)}) {
        widget->style()->unpolish(widget);
        widget->style()->polish(widget);
    }
}
