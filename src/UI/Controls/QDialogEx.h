// A frameless dialog with its own title area, close button, content area and a row with OK and Cancel. The
// base of all dialogs.
#pragma once

#include "UI/Controls/CWindowDrag.h"

#include <QDialog>
#include <QPoint>

class QHBoxLayout;
class QVBoxLayout;
class CDialogTitle;
class CFrameGrips;
class QPushButton;

// How the title area looks.
enum DialogTitleStyle {
    kTitlePlain = 0,  // a strip with the title at its left
    kTitleNotice = 1, // no strip: the title stands over the content, for hints
};

class QDialogEx : public QDialog {
    Q_OBJECT

public:
    // Builds the dialog (InitWidget); throws std::bad_alloc when that fails. An unknown style is taken as
    // kTitlePlain. Asks once which system it runs on: on Ubuntu the close button stands at the left.
    explicit QDialogEx(int nTitleStyle = kTitlePlain, QWidget* parent = nullptr);
    ~QDialogEx() override;

    // Called by the constructor; a second call changes nothing.
    bool InitWidget();

    // Also the title that the window manager and assistive technology know.
    void SetTitleText(const QString& strTitle);
    // Puts the caller's layout into the content area and takes it over, with its margins as they are; the
    // layout before it is deleted, its widgets stay children of the content area.
    void SetLayoutEx(QLayout* pLayout);

    // The row of OK and Cancel, to add buttons to. OK is the one primary button of the dialog: its click is
    // the derived class's, since many dialogs check before they close. Cancel rejects.
    QHBoxLayout* GetBtnLayout() const { return m_pBtnLayout; }
    QPushButton* GetOKBtn() const { return m_pBtnOK; }
    QPushButton* GetCancelBtn() const { return m_pBtnCancel; }
    // What holds that row; hide it for a dialog without.
    QWidget* GetBottomWidget() const { return m_pBottom; }
    QWidget* GetTitleWidget() const;

    // Whether the title area drags the window; true at first.
    void SetMoveable(bool bMoveable);
    // Whether edges and corners resize the window; false at first.
    void SetResizable(bool bResizable);
    // Whether the title shows that the dialog is (not) active; true at first.
    void SetChangeTitleColor(bool bChange);

    QRect geometryEx() const { return geometry(); }
    WId winIdEx() const { return winId(); }

    using QDialog::exec;
    // True runs the dialog application-modal, false window-modal.
    int exec(bool bAppModal);

Q_SIGNALS:
    // The dialog is being dragged; its new position.
    void SigMoveDialog(QPoint qPos);

public Q_SLOTS:
    void OnClickedClose();
    void OnPressedClose(int iButtonIndex);
    void OnBtnCancel();

protected:
    // Escape does nothing: no dialog closes by it.
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    bool CreateCtrl();
    bool CreateLayout();
    bool ConnectSlot();
    void RefreshButtons();
    void SetActivateDialg();
    void SetDeactivateDilog();
    void ShowTitleActive(bool bActive);

    const int m_nTitleStyle;
    const bool m_bUbuntu;
    bool m_bBuilt = false;
    bool m_bMoveable = true;
    bool m_bChangeTitleColor = true;
    CWindowDrag m_drag;
    CDialogTitle* m_pTitle = nullptr;
    QWidget* m_pContent = nullptr;
    QWidget* m_pBottom = nullptr;
    QHBoxLayout* m_pBtnLayout = nullptr;
    QPushButton* m_pBtnOK = nullptr;
    QPushButton* m_pBtnCancel = nullptr;
    QString m_strOK; // the text in the present language
    QString m_strCancel;
    CFrameGrips* m_pGrips = nullptr;
};
