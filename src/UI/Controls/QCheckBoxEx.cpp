#include "UI/Controls/QCheckBoxEx.h"

QCheckBoxEx::QCheckBoxEx(QWidget* parent) : QCheckBoxEx(QString(), parent) {}

QCheckBoxEx::QCheckBoxEx(const QString& text, QWidget* parent) : QCheckBox(text, parent) {
    connect(this, &QCheckBox::toggled, this, &QCheckBoxEx::OnToggled);
}

void QCheckBoxEx::OnToggled(bool bChecked) {
    Q_EMIT Toggled(m_iIndex, bChecked);
}
