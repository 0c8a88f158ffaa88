// The styled dock. Afloat it has a frame and can be resized by its edges.
#pragma once

#include <QDockWidget>

class CFrameGrips;

class QDockWidgetEx : public QDockWidget {
    Q_OBJECT

public:
    explicit QDockWidgetEx(QWidget* parent = nullptr);
    explicit QDockWidgetEx(const QString& title, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private Q_SLOTS:
    void OnTopLevelChanged(bool bFloating);

private:
    CFrameGrips* m_pGrips = nullptr;
};
