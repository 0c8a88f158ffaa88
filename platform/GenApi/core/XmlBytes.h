#pragma once
/// The bytes of a camera's XML, from a file or from memory, zipped or not.
#include <cstddef>
#include <string>

#include "GenApi/Types.h"

namespace genapi {

/// More than any camera has; what claims to be larger is refused before memory is taken for it.
constexpr std::size_t maxXmlBytes = std::size_t{256} << 20;

/// All throw RuntimeException. Of an archive, the first file with the ending ".xml" counts, or else the first
/// file.
std::string readFile(const std::string& path);
std::string unpack(GenApi_3_0::EContentType_t type, std::string bytes);

} // namespace genapi
