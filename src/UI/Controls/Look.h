// Gives an application its look. The program, the gallery and the tests of widgets all go through here.
#pragma once

#include <QColor>
#include <QString>

class QApplication;
class QFontMetrics;

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

// Contrast of two opaque colours as in WCAG 2.1 (relative luminance): 1 to 21.
double Contrast(const QColor& a, const QColor& b);

// Width of `text` when each figure takes as much room as the widest, so that it only depends on their number.
int FigureWidth(const QFontMetrics& metrics, const QString& text);

} // namespace Look
