// A combo box whose value the mouse wheel never changes.
#pragma once

#include <QComboBox>
#include <QVariant>

class QComboBoxEx : public QComboBox {
    Q_OBJECT

public:
    explicit QComboBoxEx(QWidget* parent = nullptr);

    // Selects the first item whose user data equals `value`; without one the selection stays as it is.
    void SetCurrentIndexByData(const QVariant& value);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void wheelEvent(QWheelEvent* event) override;
};
