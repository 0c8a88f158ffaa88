#include "UI/Controls/QPushButtonEx.h"

QPushButtonEx::QPushButtonEx(QWidget* parent) : QPushButtonEx(QString(), parent) {}

QPushButtonEx::QPushButtonEx(const QString& text, QWidget* parent) : QPushButton(text, parent) {
    setAutoDefault(false);
    connect(this, &QPushButton::clicked, this, &QPushButtonEx::OnClicked);
}

void QPushButtonEx::OnClicked() {
    Q_EMIT SigOnClickedButton(m_nIndex);
}
