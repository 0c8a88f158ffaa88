// A label for names and titles: when its text doesn't fit on its line it is elided in the middle, and the
// whole text is the tool tip. Texts that wrap and rich text are drawn as QLabel does.
#pragma once

#include <QLabel>

class QStaticLabel : public QLabel {
    Q_OBJECT

public:
    explicit QStaticLabel(QWidget* parent = nullptr);
    explicit QStaticLabel(const QString& text, QWidget* parent = nullptr);

    // Room for a few letters: the label gives way before others are pushed out.
    QSize minimumSizeHint() const override;

    // What the label shows now: the text or its elided form.
    QString GetShownText() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    // The tool tip of an elided text, when the label has none of its own.
    bool event(QEvent* event) override;

private:
    bool IsElidable() const;
};
