#include "ArgumentParser.h"

#include "FileKind.h"

#include <charconv>
#include <functional>

namespace live {
namespace {

/// Takes the value over; an error text when it does not fit.
using Setter = std::function<std::string(Options&, const std::string& value)>;

struct Option {
    const char* name;
    const char* valueName; ///< null: a switch
    const char* help;
    Setter set;
};

template<typename Number>
bool ReadNumber(const std::string& text, Number& number) {
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

template<typename Number>
std::string SetNumber(const std::string& text, Number least, Number most, Number& number) {
    Number value{};
    if (!ReadNumber(text, value) || !(value >= least && value <= most)) {
        auto shown = [](Number n) {
            std::string s = std::to_string(n);
            return s.find('.') == std::string::npos ? s : s.substr(0, s.find('.') + 2);
        };
        return "wants a number from " + shown(least) + " to " + shown(most);
    }
    number = value;
    return {};
}

std::string SetJob(Options& options, Options::Job job) {
    // The first of several wins: `--help --list` explains itself.
    if (options.job == Options::Job::Show)
        options.job = job;
    return {};
}

std::string SetPacketSize(Options& options, const std::string& text) {
    if (text == "auto") {
        options.packetSize = Options::PacketSize::Optimal;
        return {};
    }
    if (!SetNumber<uint32_t>(text, 220, 16260, options.packetBytes).empty() || options.packetBytes % 4 != 0)
        return "wants 'auto' or a multiple of 4 from 220 to 16260 (bytes, IP header included)";
    options.packetSize = Options::PacketSize::Fixed;
    return {};
}

std::string SetFile(std::string& file, const std::string& text, bool screenshot) {
    if (text.empty())
        return "wants a file name";
    if (!FileKindOf(text))
        return "wants a name that ends in " + FileKindNames();
    if (screenshot && !IsPictureOfScreen(*FileKindOf(text)))
        return "wants a name that ends in .png or .ppm";
    file = text;
    return {};
}

const std::vector<Option>& Table() {
    static const std::vector<Option> table = {
        {"list", nullptr, "list the cameras that can be seen, with all that they tell of themselves, and end",
         [](Options& o, const std::string&) { return SetJob(o, Options::Job::List); }},
        {"camera", "SELECTOR",
         "which camera: its IP address, serial number, user-defined name or MAC address,\n"
         "or its number in --list; an IP address that is not listed is tried as a remote camera",
         [](Options& o, const std::string& v) {
             o.selector = v;
             return std::string(v.empty() ? "wants an address, a name or a number" : "");
         }},
        {"headless", "N", "fetch N frames without a window; the exit code tells whether they came",
         [](Options& o, const std::string& v) {
             uint64_t n = 0;
             std::string error = SetNumber<uint64_t>(v, 1, 1000000000000, n);
             if (error.empty())
                 o.headlessFrames = n;
             return error;
         }},
        {"seconds", "N",
         "end after N seconds; with --headless or --save the time in which the frames must\n"
         "come (otherwise: 5 seconds without a frame end the run)",
         [](Options& o, const std::string& v) {
             double s = 0;
             std::string error = SetNumber<double>(v, 0.1, 1e7, s);
             if (error.empty())
                 o.seconds = s;
             return error;
         }},
        {"save", "FILE",
         "write one frame (the last one with --headless) and end, without a window:\n"
         ".bmp .jpg (the media library's encoders), .png .ppm (converted to RGB or grey),\n"
         ".pgm (the sensor's own values, 8 to 16 bits), .raw (the bytes as they came)",
         [](Options& o, const std::string& v) { return SetFile(o.saveFile, v, false); }},
        {"screenshot", "FILE", "write what the window shows (.png or .ppm) before it closes",
         [](Options& o, const std::string& v) { return SetFile(o.screenshotFile, v, true); }},
        {"xml", "FILE", "write the camera's GenICam XML",
         [](Options& o, const std::string& v) {
             o.xmlFile = v;
             return std::string(v.empty() ? "wants a file name" : "");
         }},
        {"packet-size", "N|auto", "stream packet size in bytes, or the largest that reaches this host whole",
         SetPacketSize},
        {"buffers", "N", "frame buffers inside the library (1 to 1000, default 8)",
         [](Options& o, const std::string& v) { return SetNumber<uint32_t>(v, 1, 1000, o.buffers); }},
        {"drop-incomplete", nullptr, "drop frames of which a packet was lost instead of showing them",
         [](Options& o, const std::string&) {
             o.dropIncomplete = true;
             return std::string();
         }},
        {"reconnect", nullptr, "when the camera is lost, wait until it is back instead of ending",
         [](Options& o, const std::string&) {
             o.reconnect = true;
             return std::string();
         }},
        {"core", nullptr,
         "show the picture through the main program's camera core (QCamera), with settings of its\n"
         "own, instead of the C contract alone",
         [](Options& o, const std::string&) {
             o.core = true;
             return std::string();
         }},
        {"engine", "1|2", "render engine: 1 OpenGL where there is hardware for it (default), 2 software",
         [](Options& o, const std::string& v) { return SetNumber<uint32_t>(v, 1, 2, o.engine); }},
        {"interpolation", "0|1|2", "Bayer colours: 0 nearest, 1 bilinear (default), 2 Hamilton-Adams",
         [](Options& o, const std::string& v) { return SetNumber<uint32_t>(v, 0, 2, o.interpolation); }},
        {"display-rate", "N", "pictures a second shown at most (1 to 1000, default 60)",
         [](Options& o, const std::string& v) { return SetNumber<uint32_t>(v, 1, 1000, o.displayRate); }},
        {"help", nullptr, "this text",
         [](Options& o, const std::string&) { return SetJob(o, Options::Job::Help); }},
        {"version", nullptr, "the version, and which platform libraries were loaded from where",
         [](Options& o, const std::string&) { return SetJob(o, Options::Job::Version); }},
    };
    return table;
}

const Option* Find(const std::string& name) {
    for (const Option& option : Table())
        if (name == option.name)
            return &option;
    return nullptr;
}

/// What the single options cannot see.
std::string CheckTogether(const Options& options) {
    if (!options.screenshotFile.empty() && options.Headless())
        return "--screenshot wants a window: leave out --headless and --save";
    if (options.reconnect && options.Headless())
        return "--reconnect is for the window: leave out --headless and --save";
    if (options.core && options.Headless())
        return "--core wants a window: leave out --headless and --save";
    if (options.core && options.reconnect)
        return "--core does not reconnect: leave out --reconnect";
    if (options.core && options.displayRate != 30 && options.displayRate != 60)
        return "--core shows 30 or 60 pictures a second: --display-rate 30 or 60";
    return {};
}

std::string Instead(const std::string& value) {
    return value.empty() ? "" : ", not '" + value + "'";
}

std::string Padded(const std::string& text, size_t width) {
    return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

} // namespace

ParsedArguments ParseArguments(const std::vector<std::string>& arguments) {
    ParsedArguments parsed;
    auto fail = [&parsed](const std::string& text) {
        parsed.error = text;
        return parsed;
    };
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "-h") {
            SetJob(parsed.options, Options::Job::Help);
            continue;
        }
        if (argument.rfind("--", 0) != 0)
            return fail("unexpected argument '" + argument + "'");
        const size_t equals = argument.find('=');
        const std::string name = argument.substr(2, equals == std::string::npos ? equals : equals - 2);
        const Option* option = Find(name);
        if (option == nullptr)
            return fail("unknown option '--" + name + "'");
        std::string value;
        if (option->valueName == nullptr && equals != std::string::npos)
            return fail("--" + name + " takes no value");
        if (option->valueName != nullptr) {
            if (equals == std::string::npos && i + 1 == arguments.size())
                return fail("--" + name + " wants a value: " + option->valueName);
            value = equals == std::string::npos ? arguments[++i] : argument.substr(equals + 1);
        }
        std::string error = option->set(parsed.options, value);
        if (!error.empty())
            return fail("--" + name + " " + error.append(Instead(value)));
    }
    parsed.error = CheckTogether(parsed.options);
    return parsed;
}

std::string HelpText() {
    constexpr size_t column = 24;
    std::string text = "kolt_live: shows the live picture of a camera, with one line of figures a second.\n\n"
                       "usage: kolt_live [OPTION...]\n\n";
    for (const Option& option : Table()) {
        std::string left = "  --" + std::string(option.name);
        if (option.valueName != nullptr)
            left += " " + std::string(option.valueName);
        text += Padded(left, column - 1) + " ";
        for (const char* c = option.help; *c != '\0'; ++c)
            text += *c == '\n' ? "\n" + std::string(column, ' ') : std::string(1, *c);
        text += "\n";
    }
    text +=
        "\nIn the window: q or Esc ends, r and l turn the picture.\n"
        "With --core a fault that plain kolt_live does not have is one of the main program's camera core.\n"
        "The figures: frames in all and per second, megabytes per second received, pictures shown per\n"
        "second, packets lost and sent again, frames in error, frames for which no buffer was free (all of\n"
        "them since the start), and the processor time of this program (100 % is one core).\n"
        "\nexit codes: 0 done, 1 a call failed, 2 wrong arguments, 3 no such camera, 4 the camera was lost,\n"
        "5 fewer frames came than were wanted\n";
    return text;
}

} // namespace live
