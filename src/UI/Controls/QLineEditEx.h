// A line edit that tells when a text is meant to be taken: on Enter and on leaving the field.
#pragma once

#include <QLineEdit>

class QLineEditEx : public QLineEdit {
    Q_OBJECT

public:
    explicit QLineEditEx(QWidget* parent = nullptr);
    explicit QLineEditEx(const QString& text, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    // Return or Enter, before the base class handles the key (so before returnPressed and editingFinished).
    void SigEnterKeyPress(QString strText);
    void SigEnterKeyPress();
    // The keyboard focus has left the field.
    void SigFocusOutEvent(QString strText);
    void SigFocusOutEvent();
    // For derived fields that save by themselves; this class does not emit it.
    void SigSave(QString strText);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    // The first click into a field without a selection selects all; later clicks place the cursor.
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    bool m_bClicked = false;         // since the field has the focus
    bool m_bSelectedByClick = false; // by the press that still lasts
    QPoint m_ptPress;
};
