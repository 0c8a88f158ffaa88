// The class of a second small picture. No object of it is made and its operations do nothing yet.
#pragma once

#include <QPointF>
#include <QWidget>

class QSubPrevWidget : public QWidget {
    Q_OBJECT

public:
    explicit QSubPrevWidget(QWidget* parent = nullptr);

    // Deliberate: all of them are empty.
    static void* SubDisplayThread(void*) { return nullptr; }
    static void SubDisplayCallBack(void*) {}
    void StartPreview(long) {}
    void StopPreview() {}
    void DisplayZoomToFit() {}
    void CheckDisplayRectValue(float&) {}
};
