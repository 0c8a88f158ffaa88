#include "UI/Controls/QPushButtonExColor.h"

QPushButtonExColor::QPushButtonExColor(QWidget* parent) : QPushButtonExColor(QString(), parent) {}

QPushButtonExColor::QPushButtonExColor(const QString& text, QWidget* parent) : QPushButton(text, parent) {
    setAutoDefault(false);
    connect(this, &QPushButton::clicked, this, &QPushButtonExColor::OnClicked);
}

void QPushButtonExColor::OnClicked() {
    Q_EMIT SigOnClickedButton(m_nIndex);
}
