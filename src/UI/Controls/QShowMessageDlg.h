// A message with details that can be shown: the dialog behind QFunction::ShowMessage.
#pragma once

#include "UI/Controls/QDialogEx.h"

class QLabel;
class QTextEdit;
class QPushButtonEx;

class QShowMessageDlg : public QDialogEx {
    Q_OBJECT

public:
    explicit QShowMessageDlg(QWidget* parent = nullptr);

    // `kind` as for QMessageBoxDlg::SetMsgText. Without a detail there is no details button.
    void SetInfo(const QString& strText, const QString& strDetail, const QString& strTitle, int kind);

    bool InitWidget();

public Q_SLOTS:
    // Shows or hides the details; the dialog's fixed height goes with them.
    void OnBtnDetails();

protected:
    void changeEvent(QEvent* event) override;

private:
    void RefreshWidgetInfo();
    void ShowDetails(bool bShow);

    QLabel* m_pPicture = nullptr;
    QLabel* m_pText = nullptr;
    QPushButtonEx* m_pBtnDetails = nullptr;
    QTextEdit* m_pDetail = nullptr;
    bool m_bDetailsShown = false;
    int m_nKind = 0;
};
