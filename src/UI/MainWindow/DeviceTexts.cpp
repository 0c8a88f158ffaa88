#include "UI/MainWindow/DeviceTexts.h"

#include "Camera/DeviceIdentity.h"
#include "Common/QFunction.h"

#include <QCoreApplication>
#include <QStringList>

namespace DeviceTexts {

namespace {

// All texts of the tree stand in the one context of its class.
QString Model(Round round) {
    return round == Round::First ? QCoreApplication::translate("QDevListWidget", "Model:            ")
                                 : QCoreApplication::translate("QDevListWidget", "Model:           ");
}

QString GateWay(Round round) {
    return round == Round::First ? QCoreApplication::translate("QDevListWidget", "GateWay:           ")
                                 : QCoreApplication::translate("QDevListWidget", "GateWay:            ");
}

QString SerialNumber() {
    return QCoreApplication::translate("QDevListWidget", "Serial Number:    ");
}

QString Version() {
    return QCoreApplication::translate("QDevListWidget", "Version:               ");
}

} // namespace

QString Group(const QString& interfaceName, const _Struct_IP_GROUP& address) {
    return QCoreApplication::translate("QDevListWidget", "%1[%2]").arg(interfaceName, address.ipText);
}

QString GroupToolTip(const QString& groupText, const QString& mac, const _Struct_IP_GROUP& address) {
    // deliberate: the line that is called gateway shows the broadcast address.
    return QCoreApplication::translate("QDevListWidget", "%1\n\nMAC:                   %2\nIP Address:       "
                                                         "   %3\nSubnet Mask:       %4\nDefault Gateway:  %5")
        .arg(groupText, mac, address.ipText, address.maskText, address.broadcastText);
}

QString GigeToolTip(const _OV_CC_DEVICE_INFO_& info, Round round) {
    const _OV_CC_GIGE_DEVICE_INFO_& gige = info.transport.gige;
    const QStringList lines{
        DeviceLabel(info),
        QString(),
        Model(round) + RecordText(gige.modelName),
        SerialNumber() + RecordText(gige.serialNumber),
        Version() + RecordText(gige.deviceVersion),
        QCoreApplication::translate("QDevListWidget", "IP Address:         ") +
            QFunction::GetIP(gige.currentIp),
        QCoreApplication::translate("QDevListWidget", "Subnet Mask:      ") +
            QFunction::GetIP(gige.currentSubnetMask),
        GateWay(round) + QFunction::GetIP(gige.defaultGateway),
        QCoreApplication::translate("QDevListWidget", "MAC:                  ") + DeviceMac(info),
    };
    return lines.join("\r\n");
}

QString UsbToolTip(const _OV_CC_DEVICE_INFO_& info) {
    const _OV_CC_USB3_DEVICE_INFO_& usb = info.transport.usb3;
    const QStringList lines{
        DeviceLabel(info),
        QString(),
        Model(Round::Later) + RecordText(usb.modelName),
        SerialNumber() + RecordText(usb.serialNumber),
        Version() + RecordText(usb.deviceVersion),
        QCoreApplication::translate("QDevListWidget", "Vendor:    ") + RecordText(usb.vendorName),
        QCoreApplication::translate("QDevListWidget", "Device GUID:     ") + RecordText(usb.deviceGuid),
    };
    return lines.join("\r\n");
}

QString Unreachable() {
    return QCoreApplication::translate("QDevListWidget", "(Unreachable)");
}

QByteArray CutUtf8(const QString& name, int bytes) {
    QByteArray text = name.toUtf8();
    if (text.size() <= bytes)
        return text;
    // Never in the middle of a character: its following bytes begin with the bits 10.
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80)
        --bytes;
    text.truncate(bytes);
    return text;
}

} // namespace DeviceTexts
