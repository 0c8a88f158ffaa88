// A check box that carries an index.
#pragma once

#include <QCheckBox>

class QCheckBoxEx : public QCheckBox {
    Q_OBJECT

public:
    explicit QCheckBoxEx(QWidget* parent = nullptr);
    explicit QCheckBoxEx(const QString& text, QWidget* parent = nullptr);

    void SetIndex(int iIndex) { m_iIndex = iIndex; }
    int GetIndex() const { return m_iIndex; }

Q_SIGNALS:
    // Whenever the state changes, by the user or by a call, unless signals are blocked.
    void Toggled(int iIndex, bool bChecked);

private Q_SLOTS:
    void OnToggled(bool bChecked);

private:
    int m_iIndex = -1;
};
