#pragma once
/// Numbers as the XML and people write them. Independent of the locale.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "GenApi/Types.h"

namespace genapi {

/// Decimal with an optional sign, or hexadecimal behind "0x" as the bit pattern of up to 64 bits; a fraction
/// of zeros is accepted. False for anything else, what doesn't fit included.
bool parseInteger(std::string_view text, std::int64_t& value);
/// Decimal with fraction and exponent, hexadecimal integers, and "INF", "-INF", "NaN".
bool parseFloat(std::string_view text, double& value);
/// 1/0, true/false, yes/no, on/off; small or capital letters.
bool parseBoolean(std::string_view text, bool& value);
/// parseInteger, and "a.b.c.d" and "aa:bb:cc:dd:ee:ff" where the representation is one of these.
bool parseInteger(std::string_view text, GenApi_3_0::ERepresentation representation, std::int64_t& value);
/// Numbers divided by blanks, commas or semicolons; no NaN among them.
bool parseIntegers(std::string_view text, std::vector<std::int64_t>& values);
bool parseFloats(std::string_view text, std::vector<double>& values);

std::string formatInteger(std::int64_t value,
                          GenApi_3_0::ERepresentation representation = GenApi_3_0::PureNumber);
/// The shortest text that reads back as the same number.
std::string formatFloat(double value);
std::string formatFloat(double value, GenApi_3_0::EDisplayNotation notation, std::int64_t precision);

/// "0x" and two digits for each byte.
std::string formatBytes(const std::uint8_t* bytes, std::size_t length);
bool parseBytes(std::string_view text, std::vector<std::uint8_t>& bytes);

/// The nearest integer, the larger magnitude of two; false when it doesn't fit, or for a NaN.
bool roundToInteger(double value, std::int64_t& rounded);

} // namespace genapi
