// The styled menu.
#pragma once

#include <QMenu>

class QMenuEx : public QMenu {
    Q_OBJECT

public:
    explicit QMenuEx(QWidget* parent = nullptr);
    explicit QMenuEx(const QString& title, QWidget* parent = nullptr);
};
