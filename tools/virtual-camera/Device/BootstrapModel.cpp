// The registers that GigE Vision prescribes.
#include "Device/BootstrapRegisters.h"
#include "Device/DeviceModel.h"
#include "Device/FeatureRegisters.h"

namespace vcam {

using namespace bootstrap;

void DeviceModel::DefineBootstrap(FeatureBuilder& build) {
    RegisterMemory& memory = build.Memory();
    constexpr auto readOnly = Access::ReadOnly;
    memory.Define32(kVersion, 0x00020000, readOnly);
    memory.Define32(kDeviceMode, 0x80000001, readOnly); // big endian, names in UTF-8
    memory.Define32(kMacHigh, Get16(m_mac.data()), readOnly);
    memory.Define32(kMacLow, vcam::Get32(m_mac.data() + 2), readOnly);
    memory.DefineString(kManufacturerName, 32, m_config.manufacturer, readOnly);
    memory.DefineString(kModelName, 32, m_config.modelName, readOnly);
    memory.DefineString(kDeviceVersion, 32, m_config.deviceVersion, readOnly);
    memory.DefineString(kManufacturerInfo, 48, m_config.manufacturerInfo, readOnly);
    memory.DefineString(kSerialNumber, 16, m_config.serial, readOnly);
    RegisterHooks kept;
    kept.written = [this] { KeepNetwork(); };
    memory.DefineString(kUserName, 16, m_config.userName, Access::ReadWrite, kept);
    memory.DefineString(kFirstUrl, kUrlLength, "", readOnly);
    memory.DefineString(kSecondUrl, kUrlLength, "", readOnly);
    // The discovery record is a copy of what begins at 0, so the holes in it read as zero.
    for (const uint32_t hole : {0x0018u, 0x0028u, 0x0038u})
        memory.Define(hole, Bytes(12), readOnly);
}

void DeviceModel::DefineBootstrapNetwork(FeatureBuilder& build) {
    RegisterMemory& memory = build.Memory();
    constexpr auto readOnly = Access::ReadOnly;
    memory.Define32(kIpCapability, kPersistentIpBit | kDhcpBit | kLinkLocalBit, readOnly);
    RegisterHooks linkLocalAlways; // a device may not give it up
    linkLocalAlways.written = [this, &memory] {
        const uint32_t all = kPersistentIpBit | kDhcpBit | kLinkLocalBit;
        memory.Set32(kIpConfiguration, (memory.Get32(kIpConfiguration) & all) | kLinkLocalBit);
        KeepNetwork();
    };
    memory.Define32(kIpConfiguration, kDhcpBit | kLinkLocalBit, Access::ReadWrite, linkLocalAlways);
    memory.Define32(kCurrentIp, 0, readOnly);
    memory.Define32(kCurrentMask, 0, readOnly);
    memory.Define32(kCurrentGateway, 0, readOnly);
    memory.Define32(kInterfaceCount, 1, readOnly);
    RegisterHooks kept;
    kept.written = [this] { KeepNetwork(); };
    memory.Define32(kPersistentIp, 0, Access::ReadWrite, kept);
    memory.Define32(kPersistentMask, 0, Access::ReadWrite, kept);
    memory.Define32(kPersistentGateway, 0, Access::ReadWrite, kept);
    memory.Define32(kLinkSpeed, m_config.linkSpeedMbps > 0 ? m_config.linkSpeedMbps : 100000, readOnly);
    memory.Define32(kActiveLinkCount, 1, readOnly);
    memory.Define32(kPhysicalLinkCapability, 1, readOnly); // a single link
    memory.Define32(kPhysicalLinkConfiguration, 0, readOnly);
}

void DeviceModel::DefineBootstrapControl(FeatureBuilder& build) {
    RegisterMemory& memory = build.Memory();
    constexpr auto readOnly = Access::ReadOnly;
    memory.Define32(kMessageChannelCount, 0, readOnly);
    memory.Define32(kStreamChannelCount, 1, readOnly);
    memory.Define32(kActionSignalCount, 0, readOnly);
    memory.Define32(kGvspCapability, 1u << 31, readOnly); // the stream's source port can be told
    memory.Define32(kMessageCapability, 0, readOnly);
    memory.Define32(kGvcpCapability,
                    kHasUserName | kHasSerialNumber | kHasHeartbeatDisable | kHasLinkSpeed |
                        kHasPrimaryApplication | kHasPendingAck | kHasPacketResend | kHasWriteMemory |
                        kHasConcatenation,
                    readOnly);
    RegisterHooks atLeast;
    atLeast.check = InRange(kMinHeartbeatMs, 0xFFFFFFFF);
    memory.Define32(kHeartbeatTimeout, 3000, Access::ReadWrite, atLeast);
    memory.Define32(kTickFrequencyHigh, static_cast<uint32_t>(kTickFrequency >> 32), readOnly);
    memory.Define32(kTickFrequencyLow, static_cast<uint32_t>(kTickFrequency), readOnly);
    RegisterHooks timestamp;
    timestamp.written = [this] { SetTimestampLatch(); };
    memory.Define32(kTimestampControl, 0, Access::WriteOnly, timestamp);
    memory.Define32(kTimestampHigh, 0, readOnly);
    memory.Define32(kTimestampLow, 0, readOnly);
    memory.Define32(kDiscoveryDelay, 0, readOnly);
    memory.Define32(kGvcpConfiguration, 0, Access::ReadWrite);
    memory.Define32(kPendingTimeout, 5000, readOnly);
    memory.Define32(kControlSwitchoverKey, 0, Access::WriteOnly);
    // The three below belong to the control channel, which keeps them up to date.
    memory.Define32(kControlPrivilege, 0, Access::ReadWrite);
    memory.Define32(kPrimaryPort, 0, readOnly);
    memory.Define32(kPrimaryAddress, 0, readOnly);
}

void DeviceModel::SetNetwork(uint32_t address, uint32_t mask, uint32_t gateway) {
    m_memory.Set32(kCurrentIp, address);
    m_memory.Set32(kCurrentMask, mask);
    m_memory.Set32(kCurrentGateway, gateway);
}

void DeviceModel::SetTimestampLatch() {
    const uint32_t order = m_memory.Get32(kTimestampControl);
    const auto now =
        std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count();
    if ((order & 2) != 0) {
        const uint64_t ticks = Ticks();
        m_memory.Set32(kTimestampHigh, static_cast<uint32_t>(ticks >> 32));
        m_memory.Set32(kTimestampLow, static_cast<uint32_t>(ticks));
    }
    if ((order & 1) != 0)
        m_tickZero = now;
}

void DeviceModel::DefineStreamChannel(FeatureBuilder& build) {
    RegisterMemory& memory = build.Memory();
    RegisterHooks port;
    port.written = [this] {
        if (m_stream == nullptr)
            return;
        if ((m_memory.Get32(kStreamHostPort) & 0xFFFF) == 0)
            m_stream->AbortAcquisition();
        m_stream->SettingsChanged();
    };
    memory.Define32(kStreamHostPort, 0, Access::ReadWrite, port);

    RegisterHooks size;
    size.check = [this](const Bytes& proposed) {
        const uint32_t value = vcam::Get32(proposed.data());
        const uint32_t bytes = value & kPacketSizeMask;
        const bool resized = bytes != (m_memory.Get32(kStreamPacketSize) & kPacketSizeMask);
        if (resized && m_stream != nullptr && m_stream->IsAcquiring())
            return Status::WriteProtect;
        return bytes >= kMinPacketSize && bytes <= kMaxPacketSize && bytes % 4 == 0
                   ? Status::Success
                   : Status::InvalidParameter;
    };
    size.written = [this] {
        const uint32_t value = m_memory.Get32(kStreamPacketSize);
        m_memory.Set32(kStreamPacketSize, value & ~kFireTestPacketBit);
        if ((value & kFireTestPacketBit) != 0 && m_stream != nullptr)
            m_stream->FireTestPacket();
    };
    memory.Define32(kStreamPacketSize, 1500 | kDoNotFragmentBit, Access::ReadWrite, size);

    RegisterHooks plain;
    plain.written = Changed();
    memory.Define32(kStreamPacketDelay, 0, Access::ReadWrite, plain);
    memory.Define32(kStreamDestination, 0, Access::ReadWrite, plain);
    memory.Define32(kStreamSourcePort, 0, Access::ReadOnly);
    memory.Define32(kStreamCapability, 0, Access::ReadOnly);
    memory.Define32(kStreamConfiguration, 0, Access::ReadOnly);
}

} // namespace vcam
