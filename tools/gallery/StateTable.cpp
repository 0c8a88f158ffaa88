#include "StateTable.h"

#include "UI/Controls/QImageButton.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCursor>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QLabel>
#include <QSlider>

static void PutInto(StateTable::State state, QWidget& control) {
    switch (state) {
    case StateTable::kPressed:
        if (auto* button = qobject_cast<QAbstractButton*>(&control))
            button->setDown(true);
        else if (auto* slider = qobject_cast<QSlider*>(&control))
            slider->setSliderDown(true);
        break;
    case StateTable::kDisabled:
        control.setEnabled(false);
        break;
    default:
        break;
    }
}

StateTable::StateTable(QWidget* parent) : QWidget(parent), m_layout(new QGridLayout(this)) {
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setHorizontalSpacing(20);
    m_layout->setVerticalSpacing(12);
    const char* const names[kStates] = {"Normal", "Hover", "Pressed", "Focus", "Disabled"};
    for (int state = 0; state < kStates; ++state) {
        auto* label = new QLabel(names[state], this);
        label->setObjectName("caption");
        m_layout->addWidget(label, 0, state + 1);
    }
    m_layout->setColumnMinimumWidth(0, 180);
    m_layout->setColumnStretch(kStates + 1, 1);
}

void StateTable::Add(const QString& name, const std::function<QWidget*()>& make) {
    std::vector<QWidget*> cells;
    for (int state = 0; state < kStates; ++state) {
        QWidget* control = make();
        PutInto(static_cast<State>(state), *control);
        cells.push_back(control);
    }
    AddRow(name, cells);
    m_focused.push_back(cells[kFocus]);
    m_hovered.push_back(cells[kHover]);
}

void StateTable::AddRow(const QString& name, const std::vector<QWidget*>& cells) {
    ++m_row;
    m_layout->addWidget(new QLabel(name, this), m_row, 0);
    int column = 0;
    for (QWidget* cell : cells) {
        ++column;
        if (cell)
            m_layout->addWidget(cell, m_row, column, Qt::AlignLeft | Qt::AlignVCenter);
    }
}

void StateTable::Freeze(QWidget& control) {
    QApplication::processEvents();
    // With what is behind it: a control alone would be drawn on its own colour.
    const QPixmap picture =
        control.window()->grab(QRect(control.mapTo(control.window(), QPoint()), control.size()));
    auto* frozen = new QLabel(control.parentWidget());
    frozen->setPixmap(picture);
    frozen->setGeometry(control.geometry());
    frozen->show();
}

void StateTable::FreezeStates() {
    for (QWidget* control : m_focused) {
        const Qt::FocusPolicy policy = control->focusPolicy();
        control->setFocusPolicy(Qt::StrongFocus);
        control->setFocus(Qt::TabFocusReason);
        Freeze(*control);
        control->setFocusPolicy(policy);
    }
    for (QWidget* control : m_hovered) {
        QCursor::setPos(control->mapToGlobal(QPoint(8, control->height() / 2)));
        QElapsedTimer clock;
        clock.start();
        while (!control->underMouse() && clock.elapsed() < 1000)
            QApplication::processEvents(QEventLoop::AllEvents, 10);
        Freeze(*control);
    }
    QCursor::setPos(window()->frameGeometry().bottomRight() + QPoint(20, 20));
    setFocusPolicy(Qt::StrongFocus);
    setFocus();
}
