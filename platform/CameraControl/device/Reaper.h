// Destroys in the background what may take seconds to go: the remains of a device that died while it was
// open.
#ifndef KOLT_CAMERA_CONTROL_REAPER_H
#define KOLT_CAMERA_CONTROL_REAPER_H

#include <chrono>
#include <functional>

namespace kolt::cc {

// Runs the job (it joins threads, frees objects; it doesn't throw) on a thread of the library, which exists
// only while there is such work. Returns at once; without a thread to be had it runs the job in place.
void reap(std::function<void()> job);

// Waits until all that was handed over is gone. False when some of it is still there. At the end of the
// process it is called with kReapAtExit; what is left then ends with the process, and touches nothing that
// has gone (the library is never unloaded, and its own state is never destroyed).
bool waitReaped(std::chrono::milliseconds limit);

constexpr std::chrono::milliseconds kReapAtExit{300};

} // namespace kolt::cc

#endif
