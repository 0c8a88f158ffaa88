// The magnifier button inside a search field. The field's Enter and changes stay signals of the field.
#pragma once

#include <QPushButton>

class QLineEditEx;

class QSearchWidget : public QPushButton {
    Q_OBJECT

public:
    // Stands at the right end of `pEdit`, whose child it becomes, and keeps 20 pixels of its text free.
    explicit QSearchWidget(QLineEditEx* pEdit);
};
