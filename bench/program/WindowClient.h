// The program's main window in a process of its own, used by its action numbers; what bench_program starts.
#pragma once

#include <string>

// - "show": streams until it is ended, and says "live" when the first picture stands.
// - "connect": says ten lines "open MS start MS picture MS": the time of the call that opens, of the call
// that
//   starts, and from the first of them to the first picture drawn.
// - "latency": says "events N median US p99 US max US frames/s F" of events posted each millisecond while it
//   streams; "latency-jumbo" with large packets, "latency-idle" while a camera is open and sends nothing,
//   "latency-bare" with no window at all.
// The exit code.
int RunWindow(int argc, char** argv, const std::string& what);
