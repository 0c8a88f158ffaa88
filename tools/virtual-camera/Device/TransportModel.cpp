// Features of the transport layer and of chunk data.
#include "Device/BootstrapRegisters.h"
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

#include <cstdio>

namespace vcam {

using namespace feature;

void DeviceModel::DefineTransport(FeatureBuilder& build) {
    build.Category("TransportLayerControl");
    RegisterHooks payload;
    payload.beforeRead = [this] {
        m_memory.Set32(kPayloadSize, static_cast<uint32_t>(PayloadBytes(Settings())));
    };
    build.Integer("PayloadSize", kPayloadSize, 0, Access::ReadOnly, payload)
        .Tip("Bytes of a frame.")
        .Unit("B")
        .Visible("Expert")
        .Volatile();
    build.Integer("TLParamsLocked", kTLParamsLocked, 0, Access::ReadWrite, {{}, OneOf({0, 1}), {}})
        .Tip("Set by the client while it takes frames: what must not change then is locked.")
        .Visible("Invisible")
        .Range(0, 1);
}

void DeviceModel::DefineTransportNodes(FeatureBuilder& build) {
    constexpr auto readOnly = Access::ReadOnly;
    constexpr auto readWrite = Access::ReadWrite;
    const auto address = [&build](const char* name, uint32_t at, Access access, const char* tip) {
        return build.IntegerNodes(name, at, access)
            .Tip(tip)
            .Face("Representation", "IPV4Address")
            .Visible("Expert");
    };
    build.IntegerNodes("GevVersion", bootstrap::kVersion, readOnly)
        .Tip("Version of GigE Vision.")
        .Visible("Expert");
    build.IntegerNodes("GevMACAddress", bootstrap::kMacHigh, readOnly, 8)
        .Tip("MAC address.")
        .Face("Representation", "MACAddress")
        .Visible("Expert");
    address("GevCurrentIPAddress", bootstrap::kCurrentIp, readOnly, "IP address now.");
    address("GevCurrentSubnetMask", bootstrap::kCurrentMask, readOnly, "Subnet mask now.");
    address("GevCurrentDefaultGateway", bootstrap::kCurrentGateway, readOnly, "Gateway now.");
    address("GevPersistentIPAddress", bootstrap::kPersistentIp, readWrite, "IP address that is kept.");
    address("GevPersistentSubnetMask", bootstrap::kPersistentMask, readWrite, "Subnet mask that is kept.");
    address("GevPersistentDefaultGateway", bootstrap::kPersistentGateway, readWrite, "Gateway that is kept.");
    build.IntegerNodes("GevHeartbeatTimeout", bootstrap::kHeartbeatTimeout, readWrite)
        .Tip("The control is lost after so long a silence of the client.")
        .Unit("ms")
        .Visible("Guru")
        .Node()
        .Add("Min", bootstrap::kMinHeartbeatMs);
    build.MaskedInteger("GevGVCPHeartbeatDisable", bootstrap::kGvcpConfiguration, readWrite, 0, 0)
        .Tip("1: the control is never lost by silence.")
        .Visible("Guru");
    build.IntegerNodes("GevCCP", bootstrap::kControlPrivilege, readWrite)
        .Tip("Privilege of the client: 0 none, 1 exclusive, 2 control.")
        .Visible("Guru")
        .Volatile();
    build.IntegerNodes("GevSCPHostPort", bootstrap::kStreamHostPort, readWrite)
        .Tip("Port that the stream goes to.")
        .Visible("Guru")
        .Volatile();
    address("GevSCDA", bootstrap::kStreamDestination, readWrite, "Address that the stream goes to.")
        .Volatile();
    build.MaskedInteger("GevSCPSPacketSize", bootstrap::kStreamPacketSize, readWrite, 0, 15)
        .Tip("Bytes of a stream packet, IP and UDP headers included.")
        .Unit("B")
        .Range(bootstrap::kMinPacketSize, bootstrap::kMaxPacketSize, 4)
        .Visible("Expert")
        .Locked()
        .Volatile();
    build.MaskedInteger("GevSCPSDoNotFragment", bootstrap::kStreamPacketSize, readWrite, 30, 30)
        .Tip("1: stream packets are not to be fragmented.")
        .Visible("Guru")
        .Volatile();
    Feature fire =
        build.MaskedInteger("GevSCPSFireTestPacketBit", bootstrap::kStreamPacketSize, readWrite, 31, 31);
    fire.Tip("Sends one packet of the size set.").Visible("Invisible").Volatile();
    build.Xml().List("TransportLayerControl", "GevSCPSFireTestPacket");
    build.Xml()
        .Node("Command", "GevSCPSFireTestPacket")
        .Add("ToolTip", "Sends one packet of the size set.")
        .Add("Visibility", "Guru")
        .Add("pValue", "GevSCPSFireTestPacketBit_Val")
        .Add("CommandValue", 1);
    build.IntegerNodes("GevSCPD", bootstrap::kStreamPacketDelay, readWrite)
        .Tip("Pause between two packets, in ticks of the timestamp.")
        .Visible("Expert")
        .Range(0, 10000000);
    build.IntegerNodes("GevLinkSpeed", bootstrap::kLinkSpeed, readOnly)
        .Tip("Speed of the link.")
        .Unit("Mbps")
        .Visible("Expert");
    build.IntegerNodes("GevTimestampTickFrequency", bootstrap::kTickFrequencyHigh, readOnly, 8)
        .Tip("Ticks of the timestamp in a second.")
        .Unit("Hz")
        .Visible("Expert");
}

void DeviceModel::DefineChunks(FeatureBuilder& build) {
    build.Category("ChunkDataControl");
    RegisterHooks idle;
    idle.check = WhileIdle();
    idle.written = Changed();
    build.Boolean("ChunkModeActive", kChunkModeActive, false, Access::ReadWrite, idle)
        .Tip("Facts about a frame follow its picture.")
        .Locked();
    struct ChunkFeature {
        const char* name;
        const char* selector;
        bool isFloat;
        const char* tip;
    };
    static constexpr ChunkFeature kChunks[] = {
        {"ChunkFrameID", "FrameID", false, "Number of the frame."},
        {"ChunkTimestamp", "Timestamp", false, "Ticks at the start of the exposure."},
        {"ChunkExposureTime", "ExposureTime", true, "Exposure time in microseconds."},
        {"ChunkGain", "Gain", true, "Gain in decibels."},
    };
    std::vector<EnumValue> entries;
    for (uint32_t chunk = 0; chunk < kChunkCount; ++chunk)
        entries.push_back({kChunks[chunk].selector, chunk});
    build.Enumeration("ChunkSelector", kChunkSelector, 0, Access::ReadWrite, entries)
        .Tip("The chunk that ChunkEnable belongs to.")
        .Face("pSelected", "ChunkEnable");
    Feature enable = build.Boolean("ChunkEnable", kChunkEnable, true, Access::ReadWrite, idle);
    enable.Tip("Whether the chunk is sent.").Locked();
    enable.RegisterNode().Index("ChunkSelector_Val", 4);
    for (uint32_t chunk = 1; chunk < kChunkCount; ++chunk)
        build.Memory().Define32(kChunkEnable + 4 * chunk, 1, Access::ReadWrite,
                                {{}, All({OneOf({0, 1}), idle.check}), idle.written});
    // Their values lie in the frame, behind a port of their own.
    for (uint32_t chunk = 0; chunk < kChunkCount; ++chunk) {
        const std::string name = kChunks[chunk].name;
        const bool isFloat = kChunks[chunk].isFloat;
        build.Xml().List("ChunkDataControl", name);
        build.Xml()
            .Node(isFloat ? "Float" : "Integer", name)
            .Add("ToolTip", kChunks[chunk].tip)
            .Add("pValue", name + "_Val");
        XmlNode& value = build.Xml().Node(isFloat ? "FloatReg" : "IntReg", name + "_Val");
        value.Add("Address", "0").Add("Length", 8).Add("AccessMode", "RO").Add("pPort", name + "Port");
        value.Add("Cachable", "NoCache").Add("Endianess", "BigEndian");
        if (!isFloat)
            value.Add("Sign", "Unsigned");
        char id[16];
        std::snprintf(id, sizeof id, "%08X", kFirstChunkId + chunk);
        build.Xml().Node("Port", name + "Port").Add("ChunkID", id);
    }
}

} // namespace vcam
