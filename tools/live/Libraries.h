#ifndef LIVE_LIBRARIES_H
#define LIVE_LIBRARIES_H

#include <string>

namespace live {

/// The text of --version: this program's version, and for each platform library the file from which it was
/// loaded (another maker's may stand in its place).
std::string VersionText();

} // namespace live

#endif
