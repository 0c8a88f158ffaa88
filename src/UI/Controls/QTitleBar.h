// The title bar of QMainWindowEx: the program's mark, the menu, the title, and the buttons to minimise,
// maximise and close.
#pragma once

#include <QPoint>
#include <QRect>
#include <QWidget>

class QHBoxLayout;
class QImageButton;
class QMenuBarEx;
class QMenuEx;
class QStaticLabel;

class QTitleBar : public QWidget {
    Q_OBJECT

public:
    enum ButtonSide { kButtonsRight, kButtonsLeft };

    // What SigTitleButtonClicked tells.
    enum ButtonType { kMaximise = 0, kRestore = 1, kMinimise = 2, kClose = 3 };

    // Throws std::bad_alloc when it can't be built.
    explicit QTitleBar(QWidget* parent = nullptr, ButtonSide side = kButtonsRight);

    void SetTitleText(const QString& strTitle);
    QMenuBarEx* MenuBar() const { return m_pMenuBar; }
    // Adds `pMenu` at the right end of the menu bar under `strText`; the menu stays the caller's.
    void AddTitleBarMenu(const QString& strText, QMenuEx* pMenu);

    // The bar's own state: the window is never maximised through the window manager, but takes the available
    // part of its screen and keeps the geometry to go back to.
    bool IsMaximized() const { return m_bMaximized; }

Q_SIGNALS:
    // 0 maximise, 1 restore, 2 minimise, 3 close; emitted before the window follows.
    void SigTitleButtonClicked(int nType);

public Q_SLOTS:
    void OnClickedMinSize();
    void OnClickedMaxSize();
    void OnClickedClose();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private:
    bool InitWidget(ButtonSide side);
    QImageButton* MakeButton(const char* picture, const char* name);
    void RefreshWidgetInfo();
    void ShowMaximizeState();
    void PlaceTitle();

    QMenuBarEx* m_pMenuBar = nullptr;
    QStaticLabel* m_pTitle = nullptr;
    QImageButton* m_pBtnMin = nullptr;
    QImageButton* m_pBtnMax = nullptr;
    QImageButton* m_pBtnClose = nullptr;
    ButtonSide m_side;
    bool m_bMaximized = false;
    QRect m_rcNormal;
    bool m_bDragging = false;
    QPoint m_ptPress;  // global position of the press
    QPoint m_ptWindow; // the window's at that time
};
