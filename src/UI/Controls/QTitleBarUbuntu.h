// The title bar for Ubuntu: as QTitleBar, with the buttons at the left.
#pragma once

#include "UI/Controls/QTitleBar.h"

class QTitleBarUbuntu : public QTitleBar {
    Q_OBJECT

public:
    explicit QTitleBarUbuntu(QWidget* parent = nullptr);
};
