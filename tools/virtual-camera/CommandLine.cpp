#include "CommandLine.h"

#include "Device/ModelTraits.h"
#include "Network/Socket.h"
#include "Picture/PixelFormat.h"
#include "Protocol/Wire.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>

namespace vcam {

namespace {

[[noreturn]] void Wrong(const std::string& what) {
    throw std::invalid_argument(what);
}

uint64_t Number(const std::string& text, uint64_t least, uint64_t most) {
    char* end = nullptr;
    const uint64_t value = std::strtoull(text.c_str(), &end, 0);
    if (text.empty() || *end != '\0' || text.front() == '-' || value < least || value > most)
        Wrong("\"" + text + "\" is no number from " + std::to_string(least) + " to " + std::to_string(most));
    return value;
}

uint32_t Number32(const std::string& text, uint32_t least, uint32_t most) {
    return static_cast<uint32_t>(Number(text, least, most));
}

double Real(const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(value >= 0 && value <= 1e9))
        Wrong("\"" + text + "\" is no number");
    return value;
}

std::array<uint8_t, 6> Mac(const std::string& text) {
    std::array<unsigned, 6> parts{};
    int used = 0;
    const int got = std::sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%n", &parts[0], &parts[1], &parts[2],
                                &parts[3], &parts[4], &parts[5], &used);
    if (got != 6 || static_cast<size_t>(used) != text.size())
        Wrong("\"" + text + "\" is no MAC address like 02:4b:00:00:00:01");
    std::array<uint8_t, 6> mac{};
    std::copy(parts.begin(), parts.end(), mac.begin());
    return mac;
}

uint32_t Format(const std::string& name) {
    for (const PixelFormat& format : PixelFormats()) {
        if (name == format.name)
            return format.code;
    }
    std::string known;
    for (const PixelFormat& format : PixelFormats())
        known += std::string(" ") + format.name;
    Wrong("\"" + name + "\" is none of the pixel formats" + known);
}

Model ModelOf(const std::string& name) {
    std::string known;
    for (const ModelTraits& traits : kModels) {
        if (name == traits.option)
            return traits.model;
        known += std::string(" ") + traits.option;
    }
    Wrong("\"" + name + "\" is none of the models" + known);
}

XmlFault XmlFaultOf(const std::string& name) {
    static const std::vector<std::pair<const char*, XmlFault>> kNames = {
        {"truncated", XmlFault::Truncated}, {"not-xml", XmlFault::NotXml},
        {"huge", XmlFault::Huge},           {"http", XmlFault::HttpLocation},
        {"bad-zip", XmlFault::BadZip},      {"no-location", XmlFault::NoLocation},
        {"too-long", XmlFault::TooLong},    {"cyclic", XmlFault::Cyclic},
    };
    for (const auto& [known, fault] : kNames) {
        if (name == known)
            return fault;
    }
    Wrong("--broken-xml takes truncated, not-xml, huge, http, bad-zip, no-location, too-long or cyclic");
}

struct State {
    Config config;
    uint32_t count = 1;
    ProgramOptions options;
};

struct Option {
    const char* name;
    const char* argument; // nullptr: takes none
    const char* help;
    std::function<void(State&, const std::string&)> apply;
};

using Text = const std::string&;

std::vector<Option> CameraOptions() {
    return {
        {"--address", "A", "IPv4 address to answer at (127.0.0.1); with --count the first one",
         [](State& s, Text t) { s.config.address = t; }},
        {"--interface", "IF", "network interface; an address that it lacks is added, and removed at the end",
         [](State& s, Text t) { s.config.interface = t; }},
        {"--mask", "M", "subnet mask (that of the interface)", [](State& s, Text t) { s.config.mask = t; }},
        {"--gateway", "A", "default gateway (0.0.0.0)", [](State& s, Text t) { s.config.gateway = t; }},
        {"--count", "N", "so many cameras; addresses, serial numbers and MACs count up",
         [](State& s, Text t) { s.count = Number32(t, 1, 250); }},
        {"--serial", "S", "serial number (VC000001)", [](State& s, Text t) { s.config.serial = t; }},
        {"--mac", "MAC", "MAC address (made from serial number and address)",
         [](State& s, Text t) { s.config.mac = Mac(t); }},
        {"--model", "KIND", "colour, mono, linescan or small",
         [](State& s, Text t) { s.config.model = ModelOf(t); }},
        {"--model-name", "NAME", "model name", [](State& s, Text t) { s.config.modelName = t; }},
        {"--user-name", "NAME", "user-defined name", [](State& s, Text t) { s.config.userName = t; }},
        {"--pixel-format", "NAME", "pixel format at the start (Mono8)",
         [](State& s, Text t) { s.config.pixelFormat = Format(t); }},
        {"--width", "N", "columns of the sensor (1920)",
         [](State& s, Text t) { s.config.sensorWidth = Number32(t, 64, 16384); }},
        {"--height", "N", "rows of the sensor (1080)",
         [](State& s, Text t) { s.config.sensorHeight = Number32(t, 64, 16384); }},
        {"--fps", "F", "frames a second at the start (30)",
         [](State& s, Text t) { s.config.frameRate = Real(t); }},
        {"--link-speed", "MBPS", "packets leave no faster than so many Mbit/s (2500); 0: as fast as they go",
         [](State& s, Text t) { s.config.linkSpeedMbps = Number32(t, 0, 1000000); }},
        {"--max", nullptr, "frame after frame as fast as possible",
         [](State& s, Text) { s.config.unpaced = true; }},
        {"--mtu", "N", "swallow packets above so many bytes, as a narrow path does",
         [](State& s, Text t) { s.config.mtu = Number32(t, 0, 65535); }},
        {"--zip", nullptr, "serve the XML zipped", [](State& s, Text) { s.config.zippedXml = true; }},
    };
}

std::vector<Option> FaultOptions() {
    return {
        {"--seed", "N", "of the generator that chooses packets (1)",
         [](State& s, Text t) { s.config.seed = Number(t, 0, UINT64_MAX); }},
        {"--loss", "N", "lose so many of 1000 packets",
         [](State& s, Text t) { s.config.faults.lossPerMille = Number32(t, 0, 1000); }},
        {"--lose-resends", nullptr, "lose packets that are sent again as well",
         [](State& s, Text) { s.config.faults.resendsLoseToo = true; }},
        {"--lose-payload-only", nullptr, "never lose a leader or trailer",
         [](State& s, Text) { s.config.faults.losePayloadOnly = true; }},
        {"--no-resend", nullptr, "do not send packets again",
         [](State& s, Text) { s.config.faults.ignoreResend = true; }},
        {"--silent-after", "S", "be dead after so many seconds",
         [](State& s, Text t) {
             s.options.silentAfter = std::chrono::milliseconds(static_cast<int64_t>(Real(t) * 1000));
         }},
        {"--no-stream", nullptr, "answer, but send no frame",
         [](State& s, Text) { s.config.faults.streamSilent = true; }},
        {"--deny-control", nullptr, "let nobody control the camera",
         [](State& s, Text) { s.config.faults.denyControl = true; }},
        {"--refuse-writes", nullptr, "refuse each write of a feature",
         [](State& s, Text) { s.config.faults.refuseWrites = true; }},
        {"--answer-delay", "MS", "take so long for each register access, and announce it by PENDING_ACK",
         [](State& s, Text t) { s.config.faults.answerDelayMs = Number32(t, 0, 60000); }},
        {"--no-pending", nullptr, "with --answer-delay: announce nothing",
         [](State& s, Text) { s.config.faults.announcePending = false; }},
        {"--change-width", "N", "send frames of this width whatever is set",
         [](State& s, Text t) { s.config.faults.changedWidth = Number32(t, 0, 16384); }},
        {"--change-height", "N", "send frames of this height whatever is set",
         [](State& s, Text t) { s.config.faults.changedHeight = Number32(t, 0, 16384); }},
        {"--extra-bytes", "N", "append so many bytes to each frame",
         [](State& s, Text t) { s.config.faults.extraBytes = Number32(t, 0, 1u << 24); }},
        {"--duplicate", "N", "send so many of 1000 packets twice",
         [](State& s, Text t) { s.config.faults.duplicatePerMille = Number32(t, 0, 1000); }},
        {"--reorder", "N", "send so many of 1000 packets behind the next one",
         [](State& s, Text t) { s.config.faults.reorderPerMille = Number32(t, 0, 1000); }},
        {"--broken-xml", "KIND", "truncated, not-xml, huge, http, bad-zip, no-location, too-long or cyclic",
         [](State& s, Text t) { s.config.faults.xml = XmlFaultOf(t); }},
    };
}

std::vector<Option> OtherOptions() {
    return {
        {"--statistics", nullptr, "print the counters at the end",
         [](State& s, Text) { s.options.statistics = true; }},
        {"--help", nullptr, "print this and end", [](State& s, Text) { s.options.help = true; }},
    };
}

// "VC0009" becomes "VC0010": the digits at the end count, in their width.
std::string CountUp(const std::string& text, uint32_t by) {
    if (by == 0)
        return text;
    size_t digits = 0;
    while (digits < text.size() && digits < 9 && text[text.size() - 1 - digits] >= '0' &&
           text[text.size() - 1 - digits] <= '9')
        ++digits;
    const std::string head = text.substr(0, text.size() - digits);
    const uint64_t number = digits == 0 ? 0 : std::strtoull(text.c_str() + head.size(), nullptr, 10);
    std::string tail = std::to_string(number + by);
    if (tail.size() < digits)
        tail.insert(0, digits - tail.size(), '0');
    return head + tail;
}

Config Nth(const Config& first, uint32_t index) {
    Config config = first;
    config.serial = CountUp(first.serial, index);
    uint32_t address = 0;
    if (!ParseDotted(first.address, address))
        Wrong("\"" + first.address + "\" is no IPv4 address");
    config.address = Dotted(address + index);
    if (first.mac != std::array<uint8_t, 6>{})
        Put32(config.mac.data() + 2, Get32(first.mac.data() + 2) + index);
    return config;
}

} // namespace

ProgramOptions ParseCommandLine(const std::vector<std::string>& arguments) {
    std::vector<Option> known = CameraOptions();
    for (const auto& more : {FaultOptions(), OtherOptions()})
        known.insert(known.end(), more.begin(), more.end());
    State state;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& given = arguments[i];
        const auto option =
            std::find_if(known.begin(), known.end(), [&given](const Option& o) { return given == o.name; });
        if (option == known.end())
            Wrong("unknown option \"" + given + "\", see --help");
        if (option->argument == nullptr) {
            option->apply(state, "");
            continue;
        }
        if (++i == arguments.size())
            Wrong(given + " wants a value");
        try {
            option->apply(state, arguments[i]);
        } catch (const std::invalid_argument& error) {
            Wrong(given + ": " + error.what());
        }
    }
    for (uint32_t index = 0; index < state.count; ++index)
        state.options.cameras.push_back(Nth(state.config, index));
    return state.options;
}

std::string HelpText() {
    std::string text = "kolt_virtual_camera: GigE Vision cameras in software\n";
    const auto list = [&text](const char* title, const std::vector<Option>& options) {
        text += std::string("\n") + title + "\n";
        for (const Option& option : options) {
            std::string left = std::string("  ") + option.name;
            if (option.argument != nullptr)
                left += std::string(" ") + option.argument;
            left.resize(std::max<size_t>(left.size() + 2, 24), ' ');
            text += left + option.help + "\n";
        }
    };
    list("Camera", CameraOptions());
    list("Faults on demand (also while it runs, by the registers in VendorRegisters.h)", FaultOptions());
    list("Other", OtherOptions());
    return text +
           "\nPrints \"ready\" and the addresses when the cameras answer; ends at SIGINT or SIGTERM.\n";
}

std::string CounterText(const Counters& c) {
    const auto pair = [](const char* name, uint64_t value) {
        return std::string(name) + "=" + std::to_string(value);
    };
    return pair("frames", c.framesCompleted) + ' ' + pair("aborted", c.framesAborted) + ' ' +
           pair("packets", c.packetsSent) + ' ' + pair("dropped", c.packetsDropped) + ' ' +
           pair("missing", c.packetsMissing) + ' ' + pair("resend-requests", c.resendRequests) + ' ' +
           pair("resent", c.packetsResent) + ' ' + pair("unavailable", c.packetsUnavailable) + ' ' +
           pair("too-big", c.packetsTooBig) + ' ' + pair("send-errors", c.sendErrors) + ' ' +
           pair("bytes", c.bytesSent) + ' ' + pair("commands", c.commands) + ' ' +
           pair("heartbeats-expired", c.heartbeatsExpired);
}

} // namespace vcam
