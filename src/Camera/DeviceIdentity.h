// What a device record tells: which device it is, and what it is called.
#pragma once

#include "Camera/Boundary/OvCameraControl.h"

#include <QString>
#include <cstddef>

// The text of a field that need not be terminated, as UTF-8.
QString RecordText(const char* field, size_t size);
template<size_t N>
QString RecordText(const char (&field)[N]) {
    return RecordText(field, N);
}

// The matching rule between detection rounds. GigE: MAC and host interface; the IP address is no part of it,
// so that a camera whose address changed stays the same one, while one that was plugged into another port of
// the host is a new one. USB: the serial number. Devices of different or other transports never match.
bool IsSameDevice(const _OV_CC_DEVICE_INFO_& a, const _OV_CC_DEVICE_INFO_& b);

// A USB camera in its boot loader: no camera yet.
bool IsInBootLoader(const _OV_CC_DEVICE_INFO_& info);

// "name(serial)", or "manufacturermodel(serial)" where the user gave no name; empty for another transport.
QString DeviceLabel(const _OV_CC_DEVICE_INFO_& info);

// "AA:BB:CC:DD:EE:FF".
QString DeviceMac(const _OV_CC_DEVICE_INFO_& info);

// The names of a GigE camera that was added by its address, made of a record that it has just given: "name
// (serial)" or "manufacturer model (serial)". The detection thread and the tree bring the name through the
// GB18030 codec in different ways, each of which is kept.
QString RemoteNameOfRound(const _OV_CC_DEVICE_INFO_& info);
QString RemoteNameOfItem(const _OV_CC_DEVICE_INFO_& info);
