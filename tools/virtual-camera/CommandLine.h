// The options of the program kolt_virtual_camera.
#ifndef VCAM_COMMANDLINE_H
#define VCAM_COMMANDLINE_H

#include "VirtualCamera.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace vcam {

struct ProgramOptions {
    bool help = false;
    bool statistics = false;     // the counters, at the end
    std::vector<Config> cameras; // with --count: addresses, serial numbers and MACs count up
    std::optional<std::chrono::milliseconds> silentAfter;
};

// Throws std::invalid_argument with a text for the user.
ProgramOptions ParseCommandLine(const std::vector<std::string>& arguments);
std::string HelpText();
std::string CounterText(const Counters& counters);

} // namespace vcam

#endif
