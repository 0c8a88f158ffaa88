// Push buttons that carry an index: one slot of the receiver serves a whole row of them.
#pragma once

#include <QPushButton>

// The plain one.
class QPushButtonEx : public QPushButton {
    Q_OBJECT

public:
    explicit QPushButtonEx(QWidget* parent = nullptr);
    explicit QPushButtonEx(const QString& text, QWidget* parent = nullptr);

    void SetIndex(int nIndex) { m_nIndex = nIndex; }
    int GetIndex() const { return m_nIndex; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    // At each click, after clicked().
    void SigOnClickedButton(int nIndex);

protected:
    // Return and Enter click the button that has the focus, not the default button of its dialog.
    void keyPressEvent(QKeyEvent* event) override;

private Q_SLOTS:
    void OnClicked();

private:
    int m_nIndex = -1;
};
