#include "UI/Controls/QFolderSelectWidget.h"

#include "UI/Controls/CFileDialog.h"
#include "UI/Controls/LookTokens.h"
#include "UI/Controls/QImageButton.h"
#include "UI/Controls/QLineEditEx.h"

#include <QEvent>
#include <QHBoxLayout>

QFolderSelectWidget::QFolderSelectWidget(QWidget* parent)
    : QWidget(parent), m_pEdit(new QLineEditEx(this)), m_pButton(new QImageButton(this)) {
    m_pButton->SetBtnImageSet(":/ORV/Resources/function btn/folder");
    m_pButton->setFixedSize(28, Look::fieldHeight);
    m_pButton->setToolTip(tr("Open Directory"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(m_pEdit, 1);
    layout->addWidget(m_pButton);
    setFocusProxy(m_pEdit);
    connect(m_pButton, &QPushButton::clicked, this, &QFolderSelectWidget::OnBtnSelectFolder);
}

QString QFolderSelectWidget::GetText() const {
    return m_pEdit->text();
}

void QFolderSelectWidget::SetText(const QString& strFolder) {
    m_pEdit->setText(strFolder);
}

void QFolderSelectWidget::OnBtnSelectFolder() {
    const QString folder = CFileDialog::GetExistingDirectory(this, tr("Open Directory"), m_pEdit->text());
    if (!folder.isEmpty())
        m_pEdit->setText(folder);
}

void QFolderSelectWidget::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        m_pButton->setToolTip(tr("Open Directory"));
    QWidget::changeEvent(event);
}
