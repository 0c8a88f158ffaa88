// A button drawn from up to four pictures, with an optional check state of its own and an optional drop-down
// menu.
#pragma once

#include <QColor>
#include <QPixmap>
#include <QPushButton>
#include <QTimer>

class QAdAction;
class QMenuEx;

class QImageButton : public QPushButton {
    Q_OBJECT

public:
    explicit QImageButton(QWidget* parent = nullptr);

    // Resource paths; an empty one is drawn as the normal picture. A file "name@2x.png" beside "name.png"
    // serves screens of high resolution.
    void SetBtnImage(const QString& strNormal, const QString& strHover = QString(),
                     const QString& strPressed = QString(), const QString& strDisabled = QString());
    // The four pictures of one set: `strBase` with ".png", "_hov.png", "_sel.png" and "_dis.png".
    void SetBtnImageSet(const QString& strBase);

    // The check state is the button's own, not that of QAbstractButton: a button group of tool buttons, which
    // is exclusive, must not switch one off when another is switched on.
    void SetCheckable(bool bCheckable);
    // Without effect on a button without a check state. Emits nothing.
    void SetCheck(bool bChecked);
    bool IsChecked() const { return m_bChecked; }
    bool IsCheckable() const { return m_bCheckable; }

    void SetBtnIndex(int iBtnIndex) { m_iBtnIndex = iBtnIndex; }
    int GetBtnIndex() const { return m_iBtnIndex; }
    // Colour of the text, and of the text under the pointer, pressed or checked.
    void SetBtnTextColor(const QColor& colour);
    void SetOnBtnTextColor(const QColor& colour);

    // Adds an entry to the drop-down menu, which is made on first use. `nMenuIndex` names it in the calls
    // below.
    QAdAction* AddMenu(const QString& strText, bool bCheckable, int nMenuIndex);
    // Takes an own menu; the caller keeps it. Null removes the menu. Its QAdActions are reported by
    // SigMenuTriggered.
    void SetMenu(QMenu* pMenu);
    // Nothing happens for an unknown index; GetMenuCheckd is then false.
    void SetMenuChecked(int nMenuIndex, bool bChecked);
    bool GetMenuCheckd(int nMenuIndex) const;
    void SetMenuActionEnable(int nMenuIndex, bool bEnable);

    // Drops presses and releases of the mouse for the next 200 ms, so that a double click doesn't start one
    // operation twice. A further call starts the time anew.
    void ControlClickEvent();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    // The state is the new one; false without a check state.
    void SigButtonClicked(int iBtnIndex, bool bChecked);
    void SigButtonPressed(int iBtnIndex);
    void SigButtonReleased(int iBtnIndex);
    void SigMenuTriggered(int nBtnIndex, int nMenuIndex, long lID, bool bChecked);

protected:
    // Return and Enter click the button that has the focus.
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private Q_SLOTS:
    void OnButtonClicked();
    void OnButtonPressed();
    void OnButtonReleased();
    void OnMenuTriggered(int nMenuIndex, long lID, bool bChecked);
    void OnBlockTimer();

private:
    enum Picture { kNormal, kHover, kPressed, kDisabled, kPictures };

    QAdAction* FindAction(int nMenuIndex) const;
    const QPixmap& CurrentPicture() const;
    QSize PictureSize() const;

    QPixmap m_pictures[kPictures];
    QColor m_clrText;
    QColor m_clrOnText;
    int m_iBtnIndex = -1;
    bool m_bCheckable = false;
    bool m_bChecked = false;
    bool m_bBlocked = false;
    QTimer m_timerBlock;
    QMenuEx* m_pOwnMenu = nullptr;
};
