// The texts of the device tree's items, made of device records and networks. Main thread.
#pragma once

#include "Camera/Boundary/OvCameraControl.h"
#include "UI/MainWindow/NetworkGroups.h"

#include <QString>

namespace DeviceTexts {

// "name[address]".
QString Group(const QString& interfaceName, const _Struct_IP_GROUP& address);
QString GroupToolTip(const QString& groupText, const QString& mac, const _Struct_IP_GROUP& address);

// The tool tips of a new item and of one that a later round updates differ in the widths of two columns.
enum class Round { First, Later };
QString GigeToolTip(const _OV_CC_DEVICE_INFO_& info, Round round);
QString UsbToolTip(const _OV_CC_DEVICE_INFO_& info);

// Behind the name of a camera that can't be reached.
QString Unreachable();

// The UTF-8 form of a name, cut between two characters to at most `bytes`.
QByteArray CutUtf8(const QString& name, int bytes);

} // namespace DeviceTexts
