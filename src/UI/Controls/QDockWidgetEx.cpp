#include "UI/Controls/QDockWidgetEx.h"

#include "UI/Controls/CFrameGrips.h"
#include "UI/Controls/LookTokens.h"

#include <QPainter>

QDockWidgetEx::QDockWidgetEx(QWidget* parent) : QDockWidgetEx(QString(), parent) {}

QDockWidgetEx::QDockWidgetEx(const QString& title, QWidget* parent)
    : QDockWidget(title, parent), m_pGrips(new CFrameGrips(this)) {
    m_pGrips->SetEnabled(false);
    connect(this, &QDockWidget::topLevelChanged, this, &QDockWidgetEx::OnTopLevelChanged);
}

void QDockWidgetEx::OnTopLevelChanged(bool bFloating) {
    m_pGrips->SetEnabled(bFloating);
    setContentsMargins(bFloating ? QMargins(1, 1, 1, 1) : QMargins());
}

void QDockWidgetEx::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(Look::surface));
    if (isFloating()) {
        painter.setPen(QColor(Look::fieldLine));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}
