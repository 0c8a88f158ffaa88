// A line edit for a folder, with a button that opens the folder dialog.
#pragma once

#include <QWidget>

class QImageButton;
class QLineEditEx;

class QFolderSelectWidget : public QWidget {
    Q_OBJECT

public:
    explicit QFolderSelectWidget(QWidget* parent = nullptr);

    QString GetText() const;
    void SetText(const QString& strFolder);
    QLineEditEx* GetLineEdit() const { return m_pEdit; }

public Q_SLOTS:
    // Asks for a folder, starting at the current text. A cancelled dialog leaves the text as it was.
    void OnBtnSelectFolder();

protected:
    void changeEvent(QEvent* event) override;

private:
    QLineEditEx* m_pEdit = nullptr;
    QImageButton* m_pButton = nullptr;
};
