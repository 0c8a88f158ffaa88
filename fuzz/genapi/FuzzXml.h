#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzz {

// All three make a node map and try everything of every node, over a port in memory that holds what the input
// left over and gives up after many accesses. They abort on any exception but GenericException and on all
// that WalkNodeMap calls a surprise.

// The input is an XML.
void FuzzXml(const std::uint8_t* data, std::size_t size);
// The input is a zip archive with an XML.
void FuzzZippedXml(const std::uint8_t* data, std::size_t size);
// The input chooses kinds, properties and references of up to 24 nodes: always well formed, rarely sensible.
void FuzzGraph(const std::uint8_t* data, std::size_t size);

} // namespace fuzz
