// Features of the transport layer: the control and the stream channel.
#include "Device/BootstrapRegisters.h"
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

namespace vcam {

using namespace feature;

void DeviceModel::DefineTransport(FeatureBuilder& build) {
    build.Category("TransportLayerControl");
    RegisterHooks payload;
    payload.beforeRead = [this] {
        m_memory.Set32(kPayloadSize, static_cast<uint32_t>(PayloadBytes(Settings())));
    };
    build.Integer("PayloadSize", kPayloadSize, 0, Access::ReadOnly, payload)
        .Tip("Bytes of a frame.", "The most that a frame can have, chunks included.")
        .Unit("B")
        .Visible("Expert")
        .Volatile();
    build.Integer("TLParamsLocked", kTLParamsLocked, 0, Access::ReadWrite)
        .Tip("Set by the client while it takes frames.", "What must not change then is locked.")
        .Visible("Invisible")
        .Range(0, 1);
}

void DeviceModel::DefineControlNodes(FeatureBuilder& build) {
    constexpr auto readOnly = Access::ReadOnly;
    constexpr auto readWrite = Access::ReadWrite;
    build.Category("TransportLayerControl");
    build.MaskedInteger("GevVersionMajor", bootstrap::kVersion, readOnly, 16, 31)
        .Tip("Version of the stream protocol's standard, in front of the point.")
        .Visible("Expert");
    build.MaskedInteger("GevVersionMinor", bootstrap::kVersion, readOnly, 0, 15)
        .Tip("Version of the stream protocol's standard, behind the point.")
        .Visible("Expert");
    build.IntegerNodes("GevHeartbeatTimeout", bootstrap::kHeartbeatTimeout, readWrite)
        .Tip("The control is lost after so long a silence of the client.")
        .Unit("ms")
        .Visible("Guru")
        .Range(bootstrap::kMinHeartbeatMs, 0xFFFFFFFF);
    build.MaskedInteger("GevGVCPHeartbeatDisable", bootstrap::kGvcpConfiguration, readWrite, 0, 0)
        .Tip("1: the control is never lost by silence.")
        .Visible("Guru");
    build.IntegerNodes("GevCCP", bootstrap::kControlPrivilege, readWrite)
        .Tip("Privilege of the client: 0 none, 1 exclusive, 2 control.")
        .Visible("Guru")
        .Range(0, 3)
        .Volatile();
    build.IntegerNodes("GevTimestampTickFrequency", bootstrap::kTickFrequencyHigh, readOnly, 8)
        .Tip("Ticks of the timestamp in a second.")
        .Unit("Hz")
        .Visible("Expert");
}

void DeviceModel::DefineStreamNodes(FeatureBuilder& build) {
    constexpr auto readWrite = Access::ReadWrite;
    build.Category("TransportLayerControl");
    build.Integer("GevStreamChannelSelector", kStreamChannelSelector, 0, readWrite)
        .Tip("The stream channel that the features below belong to.", "The camera has one.")
        .Visible("Expert")
        .Range(0, 0);
    build.IntegerNodes("GevSCPHostPort", bootstrap::kStreamHostPort, readWrite)
        .Tip("Port that the stream goes to.", "0 closes the channel.")
        .Visible("Guru")
        .Range(0, 65535)
        .Volatile();
    build.IntegerNodes("GevSCDA", bootstrap::kStreamDestination, readWrite)
        .Tip("Address that the stream goes to.")
        .As("IPV4Address")
        .Visible("Expert")
        .Volatile();
    build.IntegerNodes("GevSCSP", bootstrap::kStreamSourcePort, Access::ReadOnly)
        .Tip("Port that the stream comes from.")
        .Visible("Expert")
        .Volatile();
    const auto packetSize = [](Feature size) {
        size.Tip("Bytes of a stream packet, IP and UDP headers included.",
                 "Larger packets cost less, if the network carries them.")
            .Unit("B")
            .Range(bootstrap::kMinPacketSize, bootstrap::kMaxPacketSize, 4)
            .Visible("Expert")
            .Face("pIsLocked", "TLParamsLocked");
    };
    Feature size = build.MaskedInteger("GevSCPSPacketSize", bootstrap::kStreamPacketSize, readWrite, 0, 15);
    packetSize(size);
    size.Volatile();
    packetSize(build.IntegerOf("DeviceStreamChannelPacketSize", "GevSCPSPacketSize_Val"));
    build.MaskedInteger("GevSCPSDoNotFragment", bootstrap::kStreamPacketSize, readWrite, 30, 30)
        .Tip("1: stream packets are not to be fragmented.")
        .Visible("Guru")
        .Volatile();
    build.MaskedInteger("GevSCPSFireTestPacketBit", bootstrap::kStreamPacketSize, readWrite, 31, 31)
        .Tip("Sends one packet of the size set.")
        .Visible("Invisible")
        .Volatile();
    build.Xml().List("TransportLayerControl", "GevSCPSFireTestPacket");
    build.Xml()
        .Node("Command", "GevSCPSFireTestPacket")
        .Add("ToolTip", "Sends one packet of the size set.")
        .Add("Description", "Sends one packet of the size set. Whether it arrives tells whether the network "
                            "carries the size.")
        .Add("DisplayName", DisplayNameOf("GevSCPSFireTestPacket"))
        .Add("Visibility", "Guru")
        .Add("pValue", "GevSCPSFireTestPacketBit_Val")
        .Add("CommandValue", 1);
    build.IntegerNodes("GevSCPD", bootstrap::kStreamPacketDelay, readWrite)
        .Tip("Pause between two packets, in ticks of the timestamp.")
        .Visible("Expert")
        .Range(0, 10000000);
    for (const char* selected : {"GevSCPHostPort", "GevSCDA", "GevSCSP", "GevSCPSPacketSize",
                                 "GevSCPSDoNotFragment", "GevSCPSFireTestPacket", "GevSCPD"})
        build.Xml().Find("GevStreamChannelSelector")->Add("pSelected", selected);
}

} // namespace vcam
