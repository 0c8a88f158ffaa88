// The title bar of a dock: its title, which follows the dock's window title, and a close button. Dragging it
// moves the dock.
#pragma once

#include <QWidget>

class QDockWidget;
class QImageButton;
class QStaticLabel;

class QDockTitleBar : public QWidget {
    Q_OBJECT

public:
    // Becomes the title bar of `pDock`; without one a bar to be given to QDockWidget::setTitleBarWidget
    // later.
    explicit QDockTitleBar(QDockWidget* pDock = nullptr);

    // For a bar whose dock has another title, or none yet.
    void SetTitleText(const QString& strTitle);

    // A dock asks for the hint, not for the fixed height.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

public Q_SLOTS:
    // Closes the dock.
    void OnBtnClose();

protected:
    void changeEvent(QEvent* event) override;

private:
    QStaticLabel* m_pTitle = nullptr;
    QImageButton* m_pBtnClose = nullptr;
};
