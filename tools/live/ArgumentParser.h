#ifndef LIVE_ARGUMENT_PARSER_H
#define LIVE_ARGUMENT_PARSER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace live {

/// What the command line asks for. The defaults are those of a call without arguments.
struct Options {
    enum class Job { Show, List, Help, Version };
    enum class PacketSize { AsItIs, Optimal, Fixed };

    Job job = Job::Show;
    std::string selector; ///< empty: the first camera that is free
    uint32_t engine = 1;  ///< tagVRRenderEngine
    uint32_t interpolation = 1;
    uint32_t displayRate = 60; ///< pictures a second at most
    uint32_t buffers = 8;      ///< frame buffers inside the library
    std::optional<double> seconds;
    std::optional<uint64_t> headlessFrames;
    std::string saveFile;
    std::string screenshotFile;
    std::string xmlFile;
    PacketSize packetSize = PacketSize::AsItIs;
    uint32_t packetBytes = 0; ///< with PacketSize::Fixed
    bool dropIncomplete = false;
    bool reconnect = false;
    bool core = false; ///< through QCamera

    /// No window is wanted: frames are only fetched.
    bool Headless() const { return headlessFrames.has_value() || !saveFile.empty(); }

    /// Frames after which a run without a window ends.
    uint64_t WantedFrames() const { return headlessFrames.value_or(1); }
};

/// Options, or the reason why there are none.
struct ParsedArguments {
    Options options;
    std::string error; ///< empty: all is well
};

/// `arguments` are those behind the program's name. Long options take their value as `--name value` or
/// `--name=value`.
ParsedArguments ParseArguments(const std::vector<std::string>& arguments);

/// The text of --help.
std::string HelpText();

} // namespace live

#endif
