// A table of one control per row and one state per column.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

class QGridLayout;

class StateTable : public QWidget {
public:
    enum State { kNormal, kHover, kPressed, kFocus, kDisabled, kStates };

    explicit StateTable(QWidget* parent = nullptr);

    // Adds a row: `make` is called once for each state, and the control is put into it.
    void Add(const QString& name, const std::function<QWidget*()>& make);
    // A row whose cells are told one by one; null leaves a cell empty.
    void AddRow(const QString& name, const std::vector<QWidget*>& cells);

    // Gives each control of the focus column the focus, and each of the hover column the pointer, in turn,
    // and leaves a picture of it in its place, since only one can have them at a time. For screenshots.
    void FreezeStates();

private:
    static void Freeze(QWidget& control);

    QGridLayout* m_layout;
    int m_row = 0;
    std::vector<QWidget*> m_focused;
    std::vector<QWidget*> m_hovered;
};
