// The styled radio button.
#pragma once

#include <QRadioButton>

class QRadioButtonEx : public QRadioButton {
    Q_OBJECT

public:
    explicit QRadioButtonEx(QWidget* parent = nullptr);
    explicit QRadioButtonEx(const QString& text, QWidget* parent = nullptr);
};
