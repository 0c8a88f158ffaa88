#include "UI/Controls/QSearchWidget.h"

#include "UI/Controls/QLineEditEx.h"

#include <QHBoxLayout>

QSearchWidget::QSearchWidget(QLineEditEx* pEdit) : QPushButton(pEdit) {
    setFlat(true);
    setAutoDefault(false);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::NoFocus);
    setFixedSize(20, 20);
    setIconSize(QSize(16, 16));
    setIcon(QIcon(":/ORV/Resources/function btn/search.png"));
    setAccessibleName(tr("Search"));
    auto* layout = new QHBoxLayout(pEdit);
    layout->setContentsMargins(0, 0, 2, 0);
    layout->setSpacing(0);
    layout->addStretch();
    layout->addWidget(this);
    pEdit->setTextMargins(0, 0, 20, 0);
}
