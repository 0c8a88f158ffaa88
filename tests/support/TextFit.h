// Does every text fit its control, in every language?
//
//     QDialog& dialog = ...;             // filled with the longest texts that it can get, shown or not
//     EXPECT_THAT(kolt::test::FindMisfitsInAllLanguages(dialog), testing::IsEmpty());
//     EXPECT_THAT(kolt::test::FindTextsThatStayEnglish(dialog, {"GigE", "USB"}), testing::IsEmpty());
//
// Link kolt_test_text_fit, run with XVFB and kolt_test_widgets_main, and set the program's style sheet first:
// it decides on fonts and paddings. Pages that are not in front (tabs, stacks) are not looked at: bring each
// to the front and check again.
//
// Looked at, where visible: labels (plain, wrapped, rich), push and tool buttons, check boxes, radio buttons,
// group boxes, all entries of combo boxes, place holders and read-only texts of line edits, spin boxes, tabs,
// menu bars, headers of tables and trees, entries of list widgets. What scrolls (text edits, trees) has room
// for everything. A text that its tool tip repeats whole may be cut: that is how long names are shown.
#pragma once

#include <QSize>
#include <QString>
#include <QStringList>
#include <ostream>
#include <vector>

class QWidget;

namespace kolt::test {

// A text that its control can't show whole. `where` is the way from the window to the control, by class and
// object name.
struct TextMisfit {
    QString language;
    QString where;
    QString text;
    QSize needed; // pixels that the text takes
    QSize room;   // pixels that it has, of what the parents don't cut off
};
std::ostream& operator<<(std::ostream& out, const TextMisfit& misfit);

// As `window` is laid out when all pending events have been handled, in the language that is installed. It
// must be visible.
std::vector<TextMisfit> FindMisfits(QWidget& window, const QString& language = {});

// In English and in Chinese, after the change of language has reached all widgets and the layouts have
// settled. Shows `window` if it isn't. The language is English before and after.
std::vector<TextMisfit> FindMisfitsInAllLanguages(QWidget& window);

// Texts which are the same under Chinese, because they don't go through tr(), have no translation, or aren't
// set again when the language changes. Texts without two Latin letters in a row and those in `names` (names
// of cameras, units, "KOLT CAPTURE") don't count.
QStringList FindTextsThatStayEnglish(QWidget& window, const QStringList& names = {});

} // namespace kolt::test
