// The styled tree: rows of one height, names too long for their column elided in the middle and told by the
// tool tip.
#pragma once

#include <QTreeWidget>

class QHelpEvent;

class QTreeWidgetEx : public QTreeWidget {
    Q_OBJECT

public:
    explicit QTreeWidgetEx(QWidget* parent = nullptr);

protected:
    // Shows the whole text of an elided item that has no tool tip of its own.
    bool viewportEvent(QEvent* event) override;

private:
    bool ShowElidedText(const QHelpEvent& event);
};
