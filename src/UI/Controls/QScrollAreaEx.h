// The styled scroll area: no frame, its content as wide as the view.
#pragma once

#include <QScrollArea>

class QScrollAreaEx : public QScrollArea {
    Q_OBJECT

public:
    explicit QScrollAreaEx(QWidget* parent = nullptr);
};
