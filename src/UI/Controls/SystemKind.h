// Which system the program runs on, as far as the look cares.
#pragma once

#include <QString>
#include <functional>

// Runs "uname -a" and looks for "Ubuntu" in its output, case sensitively. Waits up to 30000 ms each for the
// start and the end of the process; false when it doesn't start or end.
bool IsUbuntuSystem();

// Replaces the run of "uname -a" by `probe`, which returns its output; an empty function brings the process
// back. For tests and the gallery. Main thread.
void SetSystemProbe(std::function<QString()> probe);
