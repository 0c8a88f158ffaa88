// Where a camera says that its GenICam XML lies. Nothing here does I/O.
//
// A URL register holds at most 512 bytes of text:
//   Local:[///]<file name>;<address>;<length>[?SchemaVersion=<x.y.z>]    in device memory; both numbers
//   hexadecimal File:[///]<path>[?SchemaVersion=<x.y.z>]                             a file of the host
//   http://...                                                           on the maker's server
// Cameras write it in any case, with blanks or quotes around it, with "0x" before the numbers, without the
// NUL.
#ifndef KOLT_CAMERA_CONTROL_XML_LOCATION_H
#define KOLT_CAMERA_CONTROL_XML_LOCATION_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kolt::cc {

// More than this is no description of a camera but a fault. The largest in the field have about 10 MB.
constexpr std::size_t kMaxXmlBytes = std::size_t{64} << 20;
// As stored in the device, zipped or not.
constexpr std::size_t kMaxStoredXmlBytes = std::size_t{32} << 20;

struct XmlLocation {
    enum class Kind { none, local, file, remote };

    Kind kind = Kind::none;    // none: empty, or not to be understood
    std::string name;          // local: the file's name; file: its path, percent escapes resolved
    std::uint64_t address = 0; // local
    std::uint64_t length = 0;  // local; not 0
};

// The text ends at its first NUL or at the end of what is given. Every field is whole or the kind is none.
XmlLocation parseXmlLocation(std::string_view text);

} // namespace kolt::cc

#endif
