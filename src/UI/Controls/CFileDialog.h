// The dialog in which files and folders are chosen: Qt's own, in the look of the program, with its icons, a
// title area and a question before a file is replaced. Never the desktop's dialog, so that it looks and
// behaves the same everywhere.
#pragma once

#include "UI/Controls/CWindowDrag.h"

#include <QFileDialog>

class CDialogTitle;

class CFileDialog : public QFileDialog {
    Q_OBJECT

public:
    // Opens in `folder`, or where the last dialog ended when that doesn't exist. `filter` as Qt writes it:
    // "Images (*.bmp);;RawData (*.raw)".
    CFileDialog(QWidget* parent, const QString& title, const QString& folder,
                const QString& filter = QString());

    // These run a dialog and give the chosen path, empty when it was cancelled. Main thread; they return when
    // the dialog is closed.

    // `proposed` is a path whose folder is shown and whose last part stands in the field. Asks before an
    // existing file is chosen; appends no extension.
    static QString GetSaveFileName(QWidget* parent, const QString& title, const QString& proposed,
                                   const QString& filter);
    // Of an existing file.
    static QString GetOpenFileName(QWidget* parent, const QString& title, const QString& folder,
                                   const QString& filter);
    // Of an existing folder.
    static QString GetExistingDirectory(QWidget* parent, const QString& title, const QString& folder);

protected:
    // Puts the question before a file is replaced.
    void accept() override;
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void Arrange();
    bool MayReplace();
    QString Run();

    CDialogTitle* m_pTitle = nullptr;
    CWindowDrag m_drag;
};
