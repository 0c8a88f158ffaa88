#include "UI/Controls/QPushButtonEx.h"

#include "UI/Controls/LookTokens.h"

#include <QKeyEvent>

QPushButtonEx::QPushButtonEx(QWidget* parent) : QPushButtonEx(QString(), parent) {}

QPushButtonEx::QPushButtonEx(const QString& text, QWidget* parent) : QPushButton(text, parent) {
    setAutoDefault(false);
    connect(this, &QPushButton::clicked, this, &QPushButtonEx::OnClicked);
}

void QPushButtonEx::OnClicked() {
    Q_EMIT SigOnClickedButton(m_nIndex);
}

void QPushButtonEx::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !event->isAutoRepeat())
        click();
    else
        QPushButton::keyPressEvent(event);
}

QSize QPushButtonEx::sizeHint() const {
    return QPushButton::sizeHint().expandedTo(QSize(64, Look::buttonHeight));
}
