// A spin box that says when a change by mouse is over.
#pragma once

#include <QSpinBox>

class QSpinBoxEx : public QSpinBox {
    Q_OBJECT

public:
    explicit QSpinBoxEx(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // At each mouse release on the box, before the base class sees it.
    void SigSaveParam();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
};
