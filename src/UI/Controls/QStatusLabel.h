// A short text with changing figures, in a status row. Each figure has the same room and the item never
// becomes narrower while it is shown, so nothing beside it moves. Where room is short, the caption before the
// colon is cut and the value stays whole; the tool tip then tells the whole text.
#pragma once

#include <QLineEdit>

class QStatusLabel : public QLineEdit {
    Q_OBJECT

public:
    explicit QStatusLabel(QWidget* parent = nullptr);
    explicit QStatusLabel(const QString& text, QWidget* parent = nullptr);

    // The widest text since the item was last shown, or since the language changed.
    QSize sizeHint() const override;
    // The value and a little of the caption.
    QSize minimumSizeHint() const override;
    // The text as it is drawn into the present width.
    QString GetShownText() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private Q_SLOTS:
    void OnTextChanged();

private:
    int WantedWidth() const;
    int LeastWidth() const;

    int m_nWidth = 0;
    int m_nLeastWidth = 0;
    bool m_bNewLanguage = false; // the next text starts the widths anew
};
