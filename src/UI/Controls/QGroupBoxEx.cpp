#include "UI/Controls/QGroupBoxEx.h"

QGroupBoxEx::QGroupBoxEx(QWidget* parent) : QGroupBoxEx(QString(), parent) {}

QGroupBoxEx::QGroupBoxEx(const QString& title, QWidget* parent) : QGroupBox(title, parent) {
    connect(this, &QGroupBox::toggled, this, &QGroupBoxEx::OnToggled);
}

void QGroupBoxEx::OnToggled(bool bChecked) {
    Q_EMIT Toggled(m_iIndex, bChecked);
}
