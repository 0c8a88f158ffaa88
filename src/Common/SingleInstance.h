// A lock by which a program can see that another instance of it runs. The program's start doesn't take it:
// several instances may run side by side.
#pragma once

#include <string>

// Base name of the running executable; empty on failure.
std::string currentExeName();

// Takes the lock of "/var/run/<executable>.pid" and writes the process id there. False, with a line on the
// standard output, when another process holds it or the file can't be made or written. The lock lasts until
// the process ends; the file stays.
bool runSingleInstance();

// The same with another link to the executable and another pid file.
std::string ExeNameOfLink(const char* link);
bool TakePidFile(const std::string& path);
