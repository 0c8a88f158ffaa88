// A copy of this system that only the test sees: all that is written goes to memory, and the network is one
// of its own. Packages are really installed in it, by dpkg, with their scripts.
#pragma once

#include "support/ChildProcess.h"

#include <string>

namespace packaging_test {

/// The package that the fixture made of this build.
std::string Package();

/// Runs shell lines in this system's own root, as root, where $R is the root of the copy and $P the package
/// inside of it. At hand:
///   inside COMMAND...       runs a command in the copy
///   as_user COMMAND...      the same, as a user without rights, with a home of his own (/tmp/home)
///   left_over               lists what stands in the copy and not in this system, without the registers and
///   caches
///                           of the system's own tools; what was there and is gone counts too
/// The first command that fails ends it.
kolt::test::Finished InACopyOfTheSystem(const std::string& lines);

} // namespace packaging_test
