#include "UI/Controls/MessageRow.h"

#include "Common/QFunction.h"
#include "UI/Controls/Look.h"

#include <QCoreApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLayout>

constexpr int kPictureSize = 32;
constexpr int kTextMin = 240;
constexpr int kTextMax = 400;

MessageRow MakeMessageRow(QWidget* parent) {
    MessageRow row{new QHBoxLayout, new QLabel(parent), new QLabel(parent)};
    row.layout->setContentsMargins(20, 20, 20, 12);
    row.layout->setSpacing(16);
    row.picture->setFixedSize(kPictureSize, kPictureSize);
    row.picture->setObjectName("messagePicture");
    row.text->setObjectName("messageText");
    row.text->setTextFormat(Qt::PlainText);
    row.text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    row.text->setWordWrap(true);
    row.text->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    row.layout->addWidget(row.picture, 0, Qt::AlignTop);
    row.layout->addWidget(row.text, 1);
    return row;
}

void SetMessageText(QLabel& label, const QString& text) {
    label.setText(text);
    label.ensurePolished();
    const QFontMetrics metrics = label.fontMetrics();
    const int natural = metrics.size(0, text).width() + 1;
    const int width = qBound(kTextMin, natural, kTextMax);
    // One very long word may be wider than the text's room: it is broken anywhere rather than cut.
    const QRect room = metrics.boundingRect(QRect(0, 0, width, 10000), Qt::TextWordWrap, text);
    label.setFixedWidth(std::min(std::max(width, room.width() + 1), 2 * kTextMax));
    label.setMinimumHeight(std::max(kPictureSize, label.heightForWidth(label.minimumWidth())));
}

QPixmap MessagePicture(int kind) {
    switch (kind) {
    case MESSAGE_ERROR:
        return Look::Picture(":/ORV/Resources/Hint/error.png");
    case MESSAGE_WARNING:
        return Look::Picture(":/ORV/Resources/Hint/warning.png");
    default:
        return Look::Picture(":/ORV/Resources/Hint/figure.png");
    }
}

QString MessageKindName(int kind) {
    switch (kind) {
    case MESSAGE_ERROR:
        return QCoreApplication::translate("MessageRow", "Error");
    case MESSAGE_WARNING:
        return QCoreApplication::translate("MessageRow", "Warning");
    default:
        return QCoreApplication::translate("MessageRow", "Information");
    }
}

QString MessageOKText(int kind) {
    return kind == MESSAGE_WARNING ? QCoreApplication::translate("MessageRow", " OK ")
                                   : QCoreApplication::translate("MessageRow", "OK");
}

QSize MessageDialogSize(QDialog& dialog) {
    dialog.setMinimumSize(0, 0);
    dialog.setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    dialog.ensurePolished();
    // From the inside out: each layout hands its new hint to the one around it only when it is activated.
    const QList<QWidget*> parts = dialog.findChildren<QWidget*>();
    for (auto part = parts.crbegin(); part != parts.crend(); ++part)
        if (QLayout* layout = (*part)->layout())
            layout->activate();
    dialog.layout()->activate();
    return dialog.layout()->totalSizeHint();
}
