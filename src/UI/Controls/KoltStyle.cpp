#include "UI/Controls/KoltStyle.h"

#include "UI/Controls/LookTokens.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>
#include <algorithm>

CKoltStyle::CKoltStyle() : QProxyStyle(QStyleFactory::create("Fusion")) {}

void CKoltStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
    // The base style's line under tabs, which main windows ask for: it only shows where the tabs end.
    if (element == PE_FrameTabBarBase)
        return;
    if (element != PE_FrameFocusRect) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    // The current row of a list with the focus: lines above and below, which join over the columns.
    if (qobject_cast<const QAbstractItemView*>(widget)) {
        const QRect room = option->rect;
        painter->fillRect(room.left(), room.top(), room.width(), 1, QColor(Look::accent));
        painter->fillRect(room.left(), room.bottom(), room.width(), 1, QColor(Look::accent));
    }
}

QSize CKoltStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                   const QWidget* widget) const {
    QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    if (type == CT_ItemViewItem)
        result.setHeight(std::max(result.height(), Look::rowHeight));
    return result;
}

int CKoltStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                          QStyleHintReturn* data) const {
    switch (hint) {
    case SH_ComboBox_Popup:
    case SH_DialogButtonBox_ButtonsHaveIcons:
        return 0;
    case SH_ToolTip_WakeUpDelay:
        return 500;
    default:
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

int CKoltStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
    case PM_SmallIconSize:
    case PM_ListViewIconSize:
        return 16;
    case PM_ToolBarItemMargin:
        return 6;
    case PM_ToolBarFrameWidth:
        return 0;
    case PM_ToolBarItemSpacing:
        return 4;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}
