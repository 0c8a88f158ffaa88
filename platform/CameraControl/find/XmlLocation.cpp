#include "find/XmlLocation.h"

#include <cctype>
#include <optional>

namespace kolt::cc {

namespace {

bool isJunk(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0 || c == '"' || c == '\'';
}

std::string_view trim(std::string_view text) {
    while (!text.empty() && isJunk(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isJunk(text.back()))
        text.remove_suffix(1);
    return text;
}

// Takes the prefix (in lower case) away when it is there, in whatever case.
bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (text.size() < prefix.size())
        return false;
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(text[i])) != prefix[i])
            return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

std::optional<unsigned> hexDigit(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0');
    const int lower = std::tolower(static_cast<unsigned char>(c));
    if (lower >= 'a' && lower <= 'f')
        return static_cast<unsigned>(lower - 'a' + 10);
    return std::nullopt;
}

// The whole text, at most 16 digits.
std::optional<std::uint64_t> hexNumber(std::string_view text) {
    text = trim(text);
    takePrefix(text, "0x");
    if (text.empty() || text.size() > 16)
        return std::nullopt;
    std::uint64_t value = 0;
    for (const char c : text) {
        const auto digit = hexDigit(c);
        if (!digit)
            return std::nullopt;
        value = (value << 4) | *digit;
    }
    return value;
}

std::string withoutEscapes(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const auto high = hexDigit(text[i + 1]);
            const auto low = hexDigit(text[i + 2]);
            if (high && low) {
                result.push_back(static_cast<char>((*high << 4) | *low));
                i += 2;
                continue;
            }
        }
        result.push_back(text[i]);
    }
    return result;
}

XmlLocation parseLocal(std::string_view text) {
    while (!text.empty() && text.front() == '/')
        text.remove_prefix(1);
    const std::size_t first = text.find(';');
    if (first == std::string_view::npos)
        return {};
    const std::size_t second = text.find(';', first + 1);
    if (second == std::string_view::npos)
        return {};
    // Some append a third semicolon.
    const std::string_view rest = text.substr(second + 1);
    const auto address = hexNumber(text.substr(first + 1, second - first - 1));
    const auto length = hexNumber(rest.substr(0, rest.find(';')));
    if (!address || !length || *length == 0)
        return {};
    XmlLocation location;
    location.kind = XmlLocation::Kind::local;
    location.name = std::string(trim(text.substr(0, first)));
    location.address = *address;
    location.length = *length;
    return location;
}

XmlLocation parseFile(std::string_view text) {
    // "File:///path" has an empty host between its second and third slash.
    if (text.substr(0, 2) == "//")
        text.remove_prefix(2);
    XmlLocation location;
    location.kind = XmlLocation::Kind::file;
    location.name = withoutEscapes(trim(text));
    if (location.name.empty() || location.name.find('\0') != std::string::npos)
        return {};
    return location;
}

} // namespace

XmlLocation parseXmlLocation(std::string_view text) {
    text = trim(text.substr(0, text.find('\0')));
    // The schema's version stands behind a question mark; a camera's own file name has none.
    text = trim(text.substr(0, text.find('?')));
    if (takePrefix(text, "local:"))
        return parseLocal(text);
    if (takePrefix(text, "file:"))
        return parseFile(text);
    if (takePrefix(text, "http:") || takePrefix(text, "https:") || takePrefix(text, "ftp:")) {
        XmlLocation location;
        location.kind = XmlLocation::Kind::remote;
        return location;
    }
    return {};
}

} // namespace kolt::cc
