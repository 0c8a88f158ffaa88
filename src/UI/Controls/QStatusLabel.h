// A short text with changing figures, in a status row. Each figure has the same room and the item never
// becomes narrower while it is shown, so nothing beside it moves.
#pragma once

#include <QLineEdit>

class QStatusLabel : public QLineEdit {
    Q_OBJECT

public:
    explicit QStatusLabel(QWidget* parent = nullptr);
    explicit QStatusLabel(const QString& text, QWidget* parent = nullptr);

    // The widest text since the item was last shown.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private Q_SLOTS:
    void OnTextChanged();

private:
    int WantedWidth() const;

    int m_nWidth = 0;
};
