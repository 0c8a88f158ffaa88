// What the message dialogs have in common: a picture for the kind of message, beside a text that wraps.
#pragma once

#include <QPixmap>
#include <QSize>
#include <QString>

class QDialog;
class QHBoxLayout;
class QLabel;
class QWidget;

struct MessageRow {
    QHBoxLayout* layout;
    QLabel* picture;
    QLabel* text;
};

MessageRow MakeMessageRow(QWidget* parent);

// The text as it is, plain, in as many lines as it needs in a dialog of a readable width.
void SetMessageText(QLabel& label, const QString& text);

// By message kind; an unknown kind counts as 0, information.
QPixmap MessagePicture(int kind);
QString MessageKindName(int kind);
// " OK " for a warning, "OK" for the others.
QString MessageOKText(int kind);

// The size that the dialog's content wants, at least that of a small dialog.
QSize MessageDialogSize(QDialog& dialog);
