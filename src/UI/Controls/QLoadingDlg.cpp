#include "UI/Controls/QLoadingDlg.h"

#include <QKeyEvent>

QLoadingDlg::QLoadingDlg(QWidget* parent) : QDialog(parent) {
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    setWindowOpacity(1.0);
    setWindowTitle(tr("Please wait"));
}

void QLoadingDlg::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        return; // deliberate: as in all dialogs
    QDialog::keyPressEvent(event);
}
