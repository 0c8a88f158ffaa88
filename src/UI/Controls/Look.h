// Gives an application its look. The program, the gallery and the tests of widgets all go through here.
#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>

class QApplication;
class QFontMetrics;
class QPainter;
class QRect;

namespace Look {

// Before the application object: what can't be changed any more once it exists (scaling of high-resolution
// screens).
void BeforeApplication();

// After it, once: fonts, palette, style sheet, and the presenter of QFunction::ShowMessage. Main thread.
void Apply(QApplication& application);

// The style sheet with the tokens put in.
QString StyleSheet();

// Colour of a token by name, invalid for an unknown one.
QColor Colour(const QString& token);

// The picture of a resource path, null when there is none, at the resolution of the screen: made from
// "name@2x.png" where the screen has more than one pixel to a point, so that it is sharp at 150 % too. (A
// QPixmap of the path is the single one.)
QPixmap Picture(const QString& path);

// Contrast of two opaque colours as in WCAG 2.1 (relative luminance): 1 to 21.
double Contrast(const QColor& a, const QColor& b);

// Width of `text` when each figure takes as much room as the widest, so that it only depends on their number.
int FigureWidth(const QFontMetrics& metrics, const QString& text);

// Draws one line of text in `room`, at its left and vertically in the middle, each figure in a cell of equal
// width (Qt 5 can't ask a face for its tabular figures). Elided at the right when it doesn't fit. Pen and
// font are the painter's.
void DrawFigures(QPainter& painter, const QRect& room, const QString& text);

} // namespace Look
