#include "find/Ipv4.h"

namespace kolt::cc {

std::string toText(std::uint32_t address) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        if (shift != 24)
            text += '.';
        text += std::to_string((address >> shift) & 0xFFU);
    }
    return text;
}

std::optional<std::uint32_t> parseIpv4(std::string_view text) {
    std::uint32_t address = 0;
    unsigned part = 0;
    unsigned parts = 1;
    unsigned digits = 0;
    for (const char c : text) {
        if (c >= '0' && c <= '9') {
            part = part * 10 + static_cast<unsigned>(c - '0');
            if (++digits > 3 || part > 255)
                return std::nullopt;
        } else if (c == '.' && digits > 0 && parts < 4) {
            address = (address << 8) | part;
            part = 0;
            digits = 0;
            ++parts;
        } else {
            return std::nullopt;
        }
    }
    if (parts != 4 || digits == 0)
        return std::nullopt;
    return (address << 8) | part;
}

} // namespace kolt::cc
