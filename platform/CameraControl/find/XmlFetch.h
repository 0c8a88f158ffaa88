// The camera's GenICam XML: where it lies, fetched and unzipped.
#ifndef KOLT_CAMERA_CONTROL_XML_FETCH_H
#define KOLT_CAMERA_CONTROL_XML_FETCH_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace kolt::cc {

// Reads device memory; any address and length. Returns an OV status.
using MemoryReader =
    std::function<std::uint32_t(std::uint64_t address, std::uint8_t* destination, std::size_t length)>;

// Fetches the XML that the URL registers of a GigE Vision device point to: the first URL, and where that
// gives nothing the second. "Local:" is read from the device's memory, "File:" from a regular file of this
// host; "http:" is not fetched (OV_STATUS_NOT_SUPPORTED). Zipped or plain; the result is the plain text
// without padding. OV_STATUS_PACKET: what the device gives is malformed, cut or absurdly large; else the
// reader's own status. On failure xml is empty.
// OV_STATUS_NETWORK also when patience is over before everything was read.
std::uint32_t fetchXml(const MemoryReader& read, std::vector<std::uint8_t>& xml,
                       std::chrono::milliseconds patience = std::chrono::seconds(60));

} // namespace kolt::cc

#endif
