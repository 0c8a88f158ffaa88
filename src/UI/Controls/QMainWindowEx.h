// The frameless top-level window with a title bar that carries the menu. Derived from QDialog, as the
// program's other windows.
#pragma once

#include <QDialog>

class CFrameGrips;
class QMenuBarEx;
class QMenuEx;
class QTitleBar;

class QMainWindowEx : public QDialog {
    Q_OBJECT

public:
    // Builds the window (InitWidget); throws std::bad_alloc when that fails. Asks once which system it runs
    // on, which decides between QTitleBarUbuntu and QTitleBar.
    explicit QMainWindowEx(QWidget* parent = nullptr);
    ~QMainWindowEx() override;

    // Called by the constructor; a second call changes nothing.
    bool InitWidget();

    // Also the title that the window manager and assistive technology know.
    void SetTitleText(const QString& strTitle);
    QMenuBarEx* MenuBar() const;
    // Puts the caller's layout below the title bar and takes it over.
    void SetLayoutEx(QLayout* pLayout);
    void AddTitleBarMenu(const QString& strText, QMenuEx* pMenu);
    QTitleBar* TitleBar() const { return m_pTitleBar; }

protected Q_SLOTS:
    // Types as told by QTitleBar::SigTitleButtonClicked. The window has no edges to drag while it is
    // maximised.
    void OnTitleButtonClicked(int nType);

protected:
    void resizeEvent(QResizeEvent* event) override;
    // Escape does nothing.
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const bool m_bUbuntu;
    QTitleBar* m_pTitleBar = nullptr;
    QWidget* m_pContent = nullptr;
    CFrameGrips* m_pGrips = nullptr;
};
