// Finds text that a window can't show: for the gallery and for tests of windows in both languages.
#pragma once

#include <QStringList>

class QWidget;

namespace Look {

// One line for each visible label, button, box, combo box, group title and menu entry below `window` (or
// itself) that has less room than its text wants: class, object name, text, room and want. Labels that elide
// on purpose (QStaticLabel) are left out. The window has to be shown and laid out.
QStringList ClippedTexts(const QWidget& window);

} // namespace Look
