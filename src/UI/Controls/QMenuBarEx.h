// The styled menu bar. It always stands in its window, also on desktops that show menus elsewhere.
#pragma once

#include <QMenuBar>

class QMenuBarEx : public QMenuBar {
    Q_OBJECT

public:
    explicit QMenuBarEx(QWidget* parent = nullptr);
};
