// The hint that the network can't keep up, with a way to adjust it. Not modal; it doesn't take the keyboard
// focus.
#pragma once

#include "UI/Controls/QDialogEx.h"

class QLabel;

class QHintAdjustDlg : public QDialogEx {
    Q_OBJECT

public:
    explicit QHintAdjustDlg(QWidget* parent = nullptr);

    void SetMsgText(const QString& strTitle, const QString& strText);

    bool InitWidget();

Q_SIGNALS:
    // True for "To Adjust", false for "Ignore"; the dialog closes afterwards. Its close button emits nothing.
    void SigBtnAccepted(bool bAdjust);

public Q_SLOTS:
    void OnBtnAdjust();
    void OnBtnIgnore();

protected:
    void changeEvent(QEvent* event) override;

private:
    void RefreshWidgetInfo();

    QLabel* m_pPicture = nullptr;
    QLabel* m_pText = nullptr;
};
