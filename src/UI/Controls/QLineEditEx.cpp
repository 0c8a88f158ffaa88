#include "UI/Controls/QLineEditEx.h"

#include "UI/Controls/LookTokens.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>

QLineEditEx::QLineEditEx(QWidget* parent) : QLineEditEx(QString(), parent) {}

QLineEditEx::QLineEditEx(const QString& text, QWidget* parent) : QLineEdit(text, parent) {}

void QLineEditEx::keyPressEvent(QKeyEvent* event) {
    // A receiver may rebuild the panel and delete the field.
    const QPointer<QLineEditEx> self(this);
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        Q_EMIT SigEnterKeyPress(text());
        if (self)
            Q_EMIT SigEnterKeyPress();
    }
    if (self)
        QLineEdit::keyPressEvent(event);
}

void QLineEditEx::focusOutEvent(QFocusEvent* event) {
    // The field's own context menu only borrows the focus.
    if (event->reason() != Qt::PopupFocusReason)
        m_bClicked = false;
    const QPointer<QLineEditEx> self(this);
    QLineEdit::focusOutEvent(event);
    if (self)
        Q_EMIT SigFocusOutEvent(text());
    if (self)
        Q_EMIT SigFocusOutEvent();
}

void QLineEditEx::mousePressEvent(QMouseEvent* event) {
    const bool first = !m_bClicked;
    const bool selected = hasSelectedText();
    QLineEdit::mousePressEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    m_bClicked = true;
    m_bSelectedByClick = first && !selected;
    m_ptPress = event->pos();
    if (m_bSelectedByClick)
        selectAll();
}

void QLineEditEx::mouseMoveEvent(QMouseEvent* event) {
    // A hand that trembles during the click must not shrink the selection to a few letters.
    if (m_bSelectedByClick && (event->buttons() & Qt::LeftButton) &&
        (event->pos() - m_ptPress).manhattanLength() < QApplication::startDragDistance()) {
        event->accept();
        return;
    }
    m_bSelectedByClick = false;
    QLineEdit::mouseMoveEvent(event);
}

QSize QLineEditEx::sizeHint() const {
    return QLineEdit::sizeHint().expandedTo(QSize(0, Look::fieldHeight));
}

QSize QLineEditEx::minimumSizeHint() const {
    return QLineEdit::minimumSizeHint().expandedTo(QSize(0, Look::fieldHeight));
}
