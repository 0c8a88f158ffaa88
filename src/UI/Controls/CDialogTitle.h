// The title area of a frameless dialog: its text and the button that closes it, at the side where the system
// has it.
#pragma once

#include <QWidget>

class QImageButton;
class QStaticLabel;

class CDialogTitle : public QWidget {
    Q_OBJECT

public:
    // `name` chooses the rules of the style sheet. On Ubuntu the button stands at the left.
    CDialogTitle(const QString& name, bool ubuntu, QWidget* parent);

    void SetText(const QString& text);
    QImageButton* CloseButton() const { return m_pBtnClose; }
    // Whether it looks like the title of the active window.
    void ShowActive(bool active);

private:
    QStaticLabel* m_pLabel = nullptr;
    QImageButton* m_pBtnClose = nullptr;
};
