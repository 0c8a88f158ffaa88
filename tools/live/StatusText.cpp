#include "StatusText.h"

#include "Camera/Boundary/OvStatus.h"

#include <array>
#include <cstdio>

namespace live {
namespace {

struct Entry {
    uint32_t status;
    const char* meaning;
    const char* hint;
};

constexpr std::array<Entry, 28> entries = {{
    {OV_STATUS_OK, "success", ""},
    {OV_STATUS_INVALID_HANDLE, "the handle is null, unknown or already destroyed",
     "this is a fault of the calling program, not of the camera"},
    {OV_STATUS_NOT_SUPPORTED, "this camera or library has no such thing",
     "look with --list whether the device is a camera in its boot loader; for a USB camera, whether the "
     "library "
     "was built with USB"},
    {OV_STATUS_BUFFER_FULL, "the frame is larger than the buffer",
     "lower the camera's Width, Height or the bits of its PixelFormat"},
    {OV_STATUS_CALL_ORDER, "not allowed in the present state",
     "this is a fault of the calling program, not of the camera"},
    {OV_STATUS_INVALID_PARAMETER, "a parameter is wrong",
     "this is a fault of the calling program, or --camera names an address that no camera can have"},
    {OV_STATUS_RESOURCE, "memory, a thread, a descriptor or a file was not to be had",
     "look at 'free -h', 'ulimit -n' and 'df'; fewer --buffers need less memory"},
    {OV_STATUS_NO_DATA, "no frame arrived in time",
     "is the camera waiting for a trigger (TriggerMode On)? Does a firewall drop its UDP packets? Try "
     "--packet-size 1500: larger packets need an MTU as large on the whole way"},
    {OV_STATUS_PRECONDITION, "the environment changed: the device is lost or busy",
     "check cable and power, then look with --list whether the camera is still there"},
    {OV_STATUS_VERSION, "the versions of library, driver and camera do not go together",
     "look with --version which libraries were loaded, and from where"},
    {OV_STATUS_UNKNOWN, "a fault that the library cannot name", ""},
    {OV_STATUS_GENICAM_GENERIC, "GenICam: general error", ""},
    {OV_STATUS_GENICAM_ARGUMENT, "GenICam: invalid argument", ""},
    {OV_STATUS_GENICAM_RANGE, "GenICam: value out of range", ""},
    {OV_STATUS_GENICAM_PROPERTY, "GenICam: property error in the camera's XML",
     "keep the XML with --xml and look at the node that is named"},
    {OV_STATUS_GENICAM_RUNTIME, "GenICam: run-time error", ""},
    {OV_STATUS_GENICAM_LOGICAL, "GenICam: logical error in the camera's XML",
     "keep the XML with --xml and look at the node that is named"},
    {OV_STATUS_GENICAM_ACCESS, "GenICam: the feature is not readable or writable now", ""},
    {OV_STATUS_GENICAM_TIMEOUT, "GenICam: time-out", "is the camera still reachable (--list)?"},
    {OV_STATUS_GENICAM_DYNAMIC_CAST, "GenICam: the feature is of another type", ""},
    {OV_STATUS_GVCP_NOT_IMPLEMENTED, "the camera does not know that command",
     "the device may be no camera, or have an old firmware"},
    {OV_STATUS_INVALID_ADDRESS, "the camera has no register at that address",
     "the camera's XML and firmware may not belong together"},
    {OV_STATUS_WRITE_PROTECTED, "the register is read-only now",
     "some features can only be written while no frames are being sent"},
    {OV_STATUS_ACCESS_DENIED, "access denied: another program or host has control of the camera",
     "end the other KOLT CAPTURE or kolt_live on this computer, or whatever uses the camera on another one; "
     "if that program crashed, the camera frees itself when its heartbeat time-out has run out (some "
     "seconds)"},
    {OV_STATUS_BUSY, "the camera did not answer the opening in time",
     "it may be starting up: wait some seconds and look with --list"},
    {OV_STATUS_PACKET, "the camera's answer is malformed or does not fit the question",
     "a capture with tshark (filter 'gvcp') shows what it sends"},
    {OV_STATUS_NETWORK, "no answer over the network",
     "is the cable in and the camera on? Is its address in the subnet of the interface (--list)? Does a "
     "firewall "
     "drop UDP port 3956?"},
    {OV_STATUS_IP_CONFLICT, "the camera's address is taken by another device",
     "give one of the two another address"},
}};

const Entry* Find(uint32_t status) {
    for (const Entry& entry : entries)
        if (entry.status == status)
            return &entry;
    return nullptr;
}

} // namespace

std::string MeaningOf(uint32_t status) {
    const Entry* entry = Find(status);
    return entry == nullptr ? "a status that the contract does not name" : entry->meaning;
}

std::string HintFor(uint32_t status) {
    const Entry* entry = Find(status);
    return entry == nullptr ? "look with --version which libraries were loaded, and from where" : entry->hint;
}

std::string Describe(const Failure& failure) {
    std::string text = std::string(failure.call) + ": ";
    if (failure.status == OV_STATUS_OK)
        return text + "failed, and the library gives no reason";
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "0x%08X", failure.status);
    text += MeaningOf(failure.status) + " (status " + code.data() + ")";
    const std::string hint = HintFor(failure.status);
    return hint.empty() ? text : text + "\n  hint: " + hint;
}

} // namespace live
