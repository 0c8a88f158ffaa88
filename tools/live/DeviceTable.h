#ifndef LIVE_DEVICE_TABLE_H
#define LIVE_DEVICE_TABLE_H

#include "CameraRecord.h"

#include <string>
#include <vector>

namespace live {

/// A device and what IsDeviceAccessible said of it.
struct ListedDevice {
    DeviceRecord record;
    bool accessible = false;
};

/// The text of --list: one table for GigE Vision, one for USB3 Vision; the numbers count through both in the
/// order given, as --camera takes them.
std::string DeviceTable(const std::vector<ListedDevice>& devices);

/// How a GigE Vision camera gets its address: the bits of the bootstrap register for the current
/// configuration (persistent, DHCP, link-local) in words.
std::string IpConfigText(uint32_t ipConfigCurrent);

/// Columns that a text takes on a terminal: wide (CJK) characters take two.
size_t TerminalWidth(const std::string& utf8);

} // namespace live

#endif
