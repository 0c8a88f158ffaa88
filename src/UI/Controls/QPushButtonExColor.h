// The coloured push button, for the one action that a page or dialog is about.
#pragma once

#include <QPushButton>

class QPushButtonExColor : public QPushButton {
    Q_OBJECT

public:
    explicit QPushButtonExColor(QWidget* parent = nullptr);
    explicit QPushButtonExColor(const QString& text, QWidget* parent = nullptr);

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
    // Adds the focus ring, which is light inside the colour.
    void paintEvent(QPaintEvent* event) override;

private Q_SLOTS:
    void OnClicked();

private:
    int m_nIndex = -1;
};
