// Ending an external tool that runs beside the program.
#pragma once

#include <QString>

// The text that EndToolProcess takes for the process id of the tool whose name stands at `nameAt` (0 or
// above) in `processList`, the output of "ps -ef".
//
// Walks backwards from the name to the nearest `1` between two blanks (a parent process id of 1) and takes
// the word before it. Without such a `1`, and for a name at the very start, it is the list's first character.
QString ToolPidText(const QString& processList, int nameAt);

// Kills the process in whose "ps -ef" line `name` is found first; the search is case sensitive and not
// anchored. 1 when the name was found, whether or not the kill succeeded, else 0. Main thread; waits for the
// two commands, each at most 30 s for its start and 30 s for its end.
int EndToolProcess(const QString& name);

// Runs "pkill -f pattern" when `name` stands anywhere in the list of processes: then 1, else 0. Waits as
// EndToolProcess does.
int EndToolByPattern(const QString& name, const QString& pattern);

// Deliberate: always 0, whatever the name. The place for a question that nothing asks so far.
int IsProcessExitOnlyOne(const QString& name);
