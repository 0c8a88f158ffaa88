#include "Camera/DeviceIdentity.h"

#include "Common/QFunction.h"

#include <QTextCodec>
#include <cstring>

namespace {

constexpr int kItemNameBytes = 50;

QString LabelOf(const QString& user, const QString& maker, const QString& model, const QString& serial) {
    if (!user.isEmpty())
        return QString("%1(%2)").arg(user, serial);
    return QString("%1%2(%3)").arg(maker, model, serial);
}

QString UserNameOrModel(const _OV_CC_GIGE_DEVICE_INFO_& gige) {
    QString user = RecordText(gige.userDefinedName);
    if (!user.isEmpty())
        return user;
    return QString("%1 %2").arg(RecordText(gige.manufacturerName), RecordText(gige.modelName));
}

QString WithSerial(const QString& name, const _OV_CC_GIGE_DEVICE_INFO_& gige) {
    return QString("%1 (%2)").arg(name, RecordText(gige.serialNumber));
}

} // namespace

QString RecordText(const char* field, size_t size) {
    return QString::fromUtf8(field, static_cast<int>(strnlen(field, size)));
}

bool IsSameDevice(const _OV_CC_DEVICE_INFO_& a, const _OV_CC_DEVICE_INFO_& b) {
    if (a.nTLayerType != b.nTLayerType)
        return false;
    if (a.nTLayerType == OV_TLAYER_GIGE)
        return a.macHigh == b.macHigh && a.macLow == b.macLow &&
               a.transport.gige.hostInterface == b.transport.gige.hostInterface;
    // deliberate: two USB devices without a serial number are one and the same.
    if (a.nTLayerType == OV_TLAYER_USB3)
        return std::strncmp(a.transport.usb3.serialNumber, b.transport.usb3.serialNumber,
                            sizeof a.transport.usb3.serialNumber) == 0;
    return false;
}

bool IsInBootLoader(const _OV_CC_DEVICE_INFO_& info) {
    return info.nTLayerType == OV_TLAYER_USB3 && info.transport.usb3.controlInEndpoint == 0;
}

QString DeviceLabel(const _OV_CC_DEVICE_INFO_& info) {
    if (info.nTLayerType == OV_TLAYER_GIGE) {
        const _OV_CC_GIGE_DEVICE_INFO_& gige = info.transport.gige;
        return LabelOf(RecordText(gige.userDefinedName), RecordText(gige.manufacturerName),
                       RecordText(gige.modelName), RecordText(gige.serialNumber));
    }
    if (info.nTLayerType == OV_TLAYER_USB3) {
        const _OV_CC_USB3_DEVICE_INFO_& usb = info.transport.usb3;
        return LabelOf(RecordText(usb.userDefinedName), RecordText(usb.manufacturerName),
                       RecordText(usb.modelName), RecordText(usb.serialNumber));
    }
    return {};
}

QString DeviceMac(const _OV_CC_DEVICE_INFO_& info) {
    return QFunction::GetMacAddr(static_cast<uint64_t>(info.macHigh & 0xFFFF) << 32 | info.macLow);
}

QString RemoteNameOfRound(const _OV_CC_DEVICE_INFO_& info) {
    QString name = UserNameOrModel(info.transport.gige);
    if (QTextCodec* codec = QTextCodec::codecForName("GB18030"))
        name = codec->toUnicode(codec->fromUnicode(name));
    return WithSerial(name, info.transport.gige);
}

QString RemoteNameOfItem(const _OV_CC_DEVICE_INFO_& info) {
    QString name = UserNameOrModel(info.transport.gige);
    // deliberate: this road is only whole for ASCII; anything else comes out as the codecs make it.
    if (QTextCodec* codec = QTextCodec::codecForName("GB18030"))
        name = QString::fromUtf8(
            codec->fromUnicode(codec->toUnicode(name.toLatin1())).left(kItemNameBytes).constData());
    return WithSerial(name, info.transport.gige);
}
