#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzz {

// Each aborts where a promise of the code under test is broken.

// An acknowledge of any command: 1 byte that chooses the command, 2 of the request's id, 4 of address, 2 of
// count, the datagram.
void FuzzGvcp(const std::uint8_t* data, std::size_t size);

// What devices tell of themselves: 1 byte that chooses between a GigE Vision record, USB3 Vision descriptors,
// a USB string and the kernel's list of neighbours; the bytes.
void FuzzRecords(const std::uint8_t* data, std::size_t size);

// The URL text up to the first line feed, and what is stored where it points to.
void FuzzXml(const std::uint8_t* data, std::size_t size);

} // namespace fuzz
