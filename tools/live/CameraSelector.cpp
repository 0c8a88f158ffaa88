#include "CameraSelector.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace live {
namespace {

std::string Upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(c == '-' ? ':' : std::toupper(c)); });
    return text;
}

bool IsNamedBy(const DeviceRecord& device, const std::string& selector) {
    if (IsGige(device)) {
        const auto address = IpFromText(selector);
        if (address && *address == device.transport.gige.currentIp)
            return true;
        if (Upper(selector) == MacText(device))
            return true;
    }
    return selector == SerialOf(device) || selector == UserNameOf(device);
}

size_t NumberIn(const std::string& selector) {
    size_t number = 0;
    const char* end = selector.data() + selector.size();
    const auto read = std::from_chars(selector.data(), end, number);
    return read.ec == std::errc() && read.ptr == end ? number : 0;
}

Selection Found(const DeviceRecord& device) {
    Selection selection;
    selection.device = device;
    if (OnForeignSubnet(device))
        selection.note = "the camera's address " + IpText(device.transport.gige.currentIp) +
                         " is not in the subnet of the interface " +
                         IpText(device.transport.gige.hostInterface) +
                         ": opening it will fail unless there is a route. Give the interface or the camera "
                         "another address";
    return selection;
}

Selection Missing(const std::string& error) {
    Selection selection;
    selection.error = error;
    return selection;
}

Selection FirstFree(const std::vector<DeviceRecord>& devices,
                    const std::function<bool(const DeviceRecord&)>& isFree) {
    if (devices.empty())
        return Missing(
            "no camera found\n  hint: is it on, is its cable in, does its network interface have an "
            "address, does a firewall drop UDP port 3956? For USB3 Vision: has this user the right "
            "to open it (scripts/install-host puts the udev rule in place)?");
    const auto free = std::find_if(devices.begin(), devices.end(), isFree);
    return Found(free == devices.end() ? devices.front() : *free);
}

Selection OneOf(const std::vector<DeviceRecord>& matches, const std::string& selector) {
    const DeviceRecord& first = matches.front();
    const bool one = std::all_of(matches.begin(), matches.end(),
                                 [&first](const DeviceRecord& d) { return SameCamera(first, d); });
    if (!one) {
        std::string error = "'" + selector + "' names several cameras:";
        for (const DeviceRecord& device : matches)
            error += "\n  " + TitleOf(device) + (IsGige(device) ? "  " + MacText(device) : "");
        return Missing(error);
    }
    const auto near = std::find_if_not(matches.begin(), matches.end(), OnForeignSubnet);
    Selection selection = Found(near == matches.end() ? first : *near);
    if (matches.size() > 1 && selection.note.empty())
        selection.note = "the camera is seen on several interfaces; taking the one at " +
                         IpText(selection.device.transport.gige.hostInterface);
    return selection;
}

} // namespace

Selection SelectCamera(const std::vector<DeviceRecord>& devices, const std::string& selector,
                       const std::function<bool(const DeviceRecord&)>& isFree) {
    if (selector.empty())
        return FirstFree(devices, isFree);
    std::vector<DeviceRecord> matches;
    std::copy_if(devices.begin(), devices.end(), std::back_inserter(matches),
                 [&selector](const DeviceRecord& d) { return IsNamedBy(d, selector); });
    if (!matches.empty())
        return OneOf(matches, selector);
    const size_t number = NumberIn(selector);
    if (number >= 1 && number <= devices.size())
        return Found(devices[number - 1]);
    if (const auto address = IpFromText(selector)) {
        Selection selection;
        selection.device = RemoteRecord(*address);
        selection.remote = true;
        return selection;
    }
    return Missing("no camera is called '" + selector + "' (" + std::to_string(devices.size()) +
                   " in sight)\n  hint: kolt_live --list shows addresses, serial numbers and names");
}

} // namespace live
