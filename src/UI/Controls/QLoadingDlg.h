// The wait dialog: frameless, empty, opaque. Its user runs it as a modal barrier, off the screen.
#pragma once

#include <QDialog>

class QLoadingDlg : public QDialog {
    Q_OBJECT

public:
    explicit QLoadingDlg(QWidget* parent = nullptr);

protected:
    // Escape does nothing: only the end of the work takes the barrier away.
    void keyPressEvent(QKeyEvent* event) override;
};
