// The texts that a window shows, with what they take and what they have. Used by TextFit.h.
#pragma once

#include <QSize>
#include <QString>
#include <vector>

class QWidget;

namespace kolt::test {

struct ShownText {
    QString where; // one text of one control; the same after its text has changed
    QString text;
    QString toolTip;
    QSize needed;
    QSize room;
};

// Of all visible controls in `window`, itself included. What kinds of controls: see TextFit.h.
std::vector<ShownText> CollectShownTexts(QWidget& window);

} // namespace kolt::test
