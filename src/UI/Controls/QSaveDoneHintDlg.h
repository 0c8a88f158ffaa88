// The notice that something was saved, with a link to it. It closes by itself.
#pragma once

#include <QDialog>
#include <QTimer>
#include <functional>

class QLabel;
class QPushButtonEx;

class QSaveDoneHintDlg : public QDialog {
    Q_OBJECT

public:
    explicit QSaveDoneHintDlg(QWidget* parent = nullptr);

    // Shows `strText` and keeps `strPath` for the link; the notice closes 2000 ms later, with 1 as the result
    // of exec(), which is how its caller knows that the next one may come.
    void SetMsgText(const QString& strText, const QString& strPath);
    // Message kind 0, 1 or 2 (_MESSAGE_KIND_) for its picture; at first a picture that says "done".
    void SetIcon(int kind);

    // What opens the path instead of QDesktopServices; for tests.
    void SetOpener(std::function<void(const QString& strPath)> opener);

public Q_SLOTS:
    // Opens the path with the desktop's program for it.
    void OnBtnView();

protected:
    // Escape does nothing.
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private Q_SLOTS:
    void OnTimer();

private:
    QLabel* m_pPicture = nullptr;
    QLabel* m_pText = nullptr;
    QPushButtonEx* m_pBtnView = nullptr;
    QString m_strPath;
    QTimer m_timerClose;
    std::function<void(const QString&)> m_open;
};
