// A question or a message: picture, text, OK, and Cancel where there is a choice.
#pragma once

#include "UI/Controls/QDialogEx.h"

class QLabel;

class QMessageBoxDlg : public QDialogEx {
    Q_OBJECT

public:
    explicit QMessageBoxDlg(QWidget* parent = nullptr);

    // `bCancel` shows the Cancel button. `kind`: 0 information, 1 error, 2 warning (_MESSAGE_KIND_); anything
    // else is shown as information. OK ends exec() with 1, all else with 0. The dialog takes the size that
    // the text wants.
    void SetMsgText(const QString& strTitle, const QString& strText, bool bCancel, int kind);

    bool InitWidget();

protected:
    void changeEvent(QEvent* event) override;

private:
    void RefreshWidgetInfo();

    QLabel* m_pPicture = nullptr;
    QLabel* m_pText = nullptr;
    int m_nKind = 0;
};
