// What each item of the device tree carries: its type and its number.
#pragma once

#include "UI/MainWindow/QDevListWidget.h"

#include <QSize>
#include <QTreeWidgetItem>
#include <cstdint>

inline void SetItemData(QTreeWidgetItem& item, int type, int number) {
    item.setData(0, Qt::UserRole, QSize(type, number));
}

inline int ItemType(const QTreeWidgetItem& item) {
    return item.data(0, Qt::UserRole).toSize().width();
}

// A camera's id, or a group's address with its bits as they are.
inline int ItemNumber(const QTreeWidgetItem& item) {
    return item.data(0, Qt::UserRole).toSize().height();
}

inline bool IsCameraItem(const QTreeWidgetItem& item) {
    const int type = ItemType(item);
    return type == QDevListWidget::ITEM_GIGE_CAMERA || type == QDevListWidget::ITEM_USB_CAMERA;
}
