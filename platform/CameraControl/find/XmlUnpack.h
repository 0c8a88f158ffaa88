// The XML out of what a device stores: plain text, or one file in a zip archive. Untrusted.
#ifndef KOLT_CAMERA_CONTROL_XML_UNPACK_H
#define KOLT_CAMERA_CONTROL_XML_UNPACK_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kolt::cc {

// Replaces xml by the plain text, without the padding behind it. What is an archive is told by its content,
// not by its name. From an archive the first entry that is called "*.xml" is taken, otherwise its first file.
// OV_STATUS_PACKET: neither XML nor an archive that can be read to its end, or more than maxBytes unpacked.
// OV_STATUS_NOT_SUPPORTED: an encrypted archive, or a compression that we don't have.
// On failure xml is empty.
std::uint32_t unpackXml(const std::vector<std::uint8_t>& stored, std::size_t maxBytes,
                        std::vector<std::uint8_t>& xml);

} // namespace kolt::cc

#endif
