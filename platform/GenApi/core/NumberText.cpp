#include "core/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace genapi {

namespace {

constexpr std::string_view blanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool equalsIgnoringCase(std::string_view text, std::string_view small) {
    return std::equal(text.begin(), text.end(), small.begin(), small.end(),
                      [](char given, char wanted) { return given == wanted || given == wanted - 'a' + 'A'; });
}

template<class T>
bool parseWhole(std::string_view digits, int base, T& value) {
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
    return result.ec == std::errc() && result.ptr == digits.data() + digits.size();
}

bool isHexadecimal(std::string_view text) {
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

bool parseHexadecimal(std::string_view text, std::int64_t& value) {
    std::uint64_t bits = 0;
    if (!parseWhole(text.substr(2), 16, bits))
        return false;
    value = static_cast<std::int64_t>(bits);
    return true;
}

/// `count` numbers of up to 255 between separators, most significant first.
bool parseParts(std::string_view text, char separator, int base, int count, std::int64_t& value) {
    std::uint64_t bits = 0;
    for (int i = 0; i < count; ++i) {
        const std::size_t end = i + 1 < count ? text.find(separator) : text.size();
        std::uint8_t part = 0;
        if (end == std::string_view::npos || !parseWhole(text.substr(0, end), base, part))
            return false;
        bits = bits << 8 | part;
        text.remove_prefix(std::min(text.size(), end + 1));
    }
    value = static_cast<std::int64_t>(bits);
    return true;
}

template<class T, class Parse>
bool parseList(std::string_view text, std::vector<T>& values, Parse parse) {
    constexpr std::string_view separators = " \t\r\n,;";
    for (std::size_t begin = text.find_first_not_of(separators); begin != std::string_view::npos;) {
        const std::size_t end = std::min(text.find_first_of(separators, begin), text.size());
        T value{};
        if (!parse(text.substr(begin, end - begin), value))
            return false;
        values.push_back(value);
        begin = text.find_first_not_of(separators, end);
    }
    return !values.empty();
}

} // namespace

bool parseInteger(std::string_view text, std::int64_t& value) {
    text = trimmed(text);
    if (isHexadecimal(text))
        return parseHexadecimal(text, value);
    if (!text.empty() && text.front() == '-' && isHexadecimal(text.substr(1))) {
        const bool fits = parseHexadecimal(text.substr(1), value) && value >= 0;
        value = fits ? -value : 0;
        return fits;
    }
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    const std::size_t point = text.find('.');
    if (point != std::string_view::npos) {
        if (text.find_first_not_of('0', point + 1) != std::string_view::npos)
            return false;
        text = text.substr(0, point);
    }
    if (text.empty() || text.front() == '+')
        return false;
    if (parseWhole(text, 10, value))
        return true;
    std::uint64_t bits = 0; // an unsigned number with the top bit set
    if (!parseWhole(text, 10, bits))
        return false;
    value = static_cast<std::int64_t>(bits);
    return true;
}

bool parseFloat(std::string_view text, double& value) {
    text = trimmed(text);
    if (isHexadecimal(text)) {
        std::int64_t integer = 0;
        if (!parseHexadecimal(text, integer))
            return false;
        value = static_cast<double>(integer);
        return true;
    }
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

bool parseBoolean(std::string_view text, bool& value) {
    text = trimmed(text);
    for (const std::string_view yes : {"1", "true", "yes", "on"})
        if (equalsIgnoringCase(text, yes)) {
            value = true;
            return true;
        }
    for (const std::string_view no : {"0", "false", "no", "off"})
        if (equalsIgnoringCase(text, no)) {
            value = false;
            return true;
        }
    return false;
}

bool parseInteger(std::string_view text, GenApi_3_0::ERepresentation representation, std::int64_t& value) {
    text = trimmed(text);
    if (representation == GenApi_3_0::IPV4Address && parseParts(text, '.', 10, 4, value))
        return true;
    if (representation == GenApi_3_0::MACAddress && parseParts(text, ':', 16, 6, value))
        return true;
    return parseInteger(text, value);
}

bool parseIntegers(std::string_view text, std::vector<std::int64_t>& values) {
    return parseList(text, values,
                     [](std::string_view item, std::int64_t& value) { return parseInteger(item, value); });
}

bool parseFloats(std::string_view text, std::vector<double>& values) {
    // Lists are sorted, in which a NaN has no place.
    return parseList(text, values, parseFloat) &&
           std::none_of(values.begin(), values.end(), [](double value) { return std::isnan(value); });
}

std::string formatInteger(std::int64_t value, GenApi_3_0::ERepresentation representation) {
    const auto bits = static_cast<std::uint64_t>(value);
    std::array<char, 32> text{};
    char* const begin = text.data();
    char* const end = begin + text.size();
    if (representation == GenApi_3_0::HexNumber) {
        text[0] = '0';
        text[1] = 'x';
        return {begin, std::to_chars(begin + 2, end, bits, 16).ptr};
    }
    const int parts = representation == GenApi_3_0::IPV4Address && bits >> 32 == 0  ? 4
                      : representation == GenApi_3_0::MACAddress && bits >> 48 == 0 ? 6
                                                                                    : 0;
    if (parts == 0)
        return {begin, std::to_chars(begin, end, value).ptr};
    char* position = begin;
    for (int part = parts - 1; part >= 0; --part) {
        const auto byte = static_cast<unsigned>(bits >> (8 * part) & 0xFF);
        if (parts == 6 && byte < 16)
            *position++ = '0';
        position = std::to_chars(position, end, byte, parts == 6 ? 16 : 10).ptr;
        if (part > 0)
            *position++ = parts == 6 ? ':' : '.';
    }
    return {begin, position};
}

std::string formatFloat(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

std::string formatFloat(double value, GenApi_3_0::EDisplayNotation notation, std::int64_t precision) {
    const std::chars_format format = notation == GenApi_3_0::fnFixed        ? std::chars_format::fixed
                                     : notation == GenApi_3_0::fnScientific ? std::chars_format::scientific
                                                                            : std::chars_format::general;
    std::array<char, 400> text{}; // 309 digits, a sign, a point and the fraction
    const int digits = static_cast<int>(std::clamp<std::int64_t>(precision, 0, 64));
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value, format, digits).ptr};
}

std::string formatBytes(const std::uint8_t* bytes, std::size_t length) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text = "0x";
    text.reserve(2 + 2 * length);
    for (std::size_t i = 0; i < length; ++i) {
        text.push_back(digits[bytes[i] >> 4]);
        text.push_back(digits[bytes[i] & 15]);
    }
    return text;
}

bool parseBytes(std::string_view text, std::vector<std::uint8_t>& bytes) {
    text = trimmed(text);
    if (isHexadecimal(text))
        text.remove_prefix(2);
    if (text.empty() || text.size() % 2 != 0)
        return false;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        std::uint8_t byte = 0;
        if (!parseWhole(text.substr(i, 2), 16, byte))
            return false;
        bytes.push_back(byte);
    }
    return true;
}

bool roundToInteger(double value, std::int64_t& rounded) {
    const double nearest = std::round(value);
    // 2^63 itself is a double; the largest integer isn't.
    if (!(nearest >= -9223372036854775808.0 && nearest < 9223372036854775808.0))
        return false;
    rounded = static_cast<std::int64_t>(nearest);
    return true;
}

} // namespace genapi
