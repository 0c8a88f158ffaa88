// Tells the program's name and version.
#pragma once

#include "UI/Controls/QDialogEx.h"

class QLabel;

class QAboutDlg : public QDialogEx {
    Q_OBJECT

public:
    explicit QAboutDlg(QWidget* parent = nullptr);

    bool InitWidget();

    // The date of this build as digits ("20180328"). The dialog shows the date of the release instead.
    static QString GetSoftwareBuildDate();
    // "Mar 28 2018" to "20180328"; empty for what is not such a date.
    static QString ConvertDateFormat(const QString& strDate);

protected:
    void changeEvent(QEvent* event) override;

private:
    void RefreshWidgetInfo();

    QLabel* m_pNameCaption = nullptr;
    QLabel* m_pName = nullptr;
    QLabel* m_pVersionCaption = nullptr;
    QLabel* m_pVersion = nullptr;
};
