// A label of plain text that wraps within its height; the last line that has room ends in an ellipsis where
// the text goes on, and the tool tip then has the whole text.
#pragma once

#include <QLabel>

class QWrappedTextLabel : public QLabel {
    Q_OBJECT

public:
    // `lineHeight` in pixels: the same for all scripts, while a font that steps in for some letters may have
    // taller lines.
    explicit QWrappedTextLabel(int lineHeight, QWidget* parent = nullptr);

    // The lines as they are shown now.
    QStringList GetShownLines() const;
    bool IsCut() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QStringList Lines(bool& isCut) const;

    int m_lineHeight;
};
