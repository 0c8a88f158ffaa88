// A slider that says when a change by mouse is over.
#pragma once

#include <QSlider>

class QSliderEx : public QSlider {
    Q_OBJECT

public:
    explicit QSliderEx(QWidget* parent = nullptr);
    explicit QSliderEx(Qt::Orientation orientation, QWidget* parent = nullptr);

Q_SIGNALS:
    // At each mouse release on the slider, before the base class sees it.
    void SigSaveParam();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
};
