// A group box that carries an index.
#pragma once

#include <QGroupBox>

class QGroupBoxEx : public QGroupBox {
    Q_OBJECT

public:
    explicit QGroupBoxEx(QWidget* parent = nullptr);
    explicit QGroupBoxEx(const QString& title, QWidget* parent = nullptr);

    void SetIndex(int iIndex) { m_iIndex = iIndex; }
    int GetIndex() const { return m_iIndex; }

Q_SIGNALS:
    // Whenever the check of a checkable box changes, by the user or by a call, unless signals are blocked.
    void Toggled(int iIndex, bool bChecked);

private Q_SLOTS:
    void OnToggled(bool bChecked);

private:
    int m_iIndex = -1;
};
