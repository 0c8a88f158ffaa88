// Addresses of the bootstrap registers that GigE Vision prescribes, as far as this camera has them.
#ifndef VCAM_DEVICE_BOOTSTRAPREGISTERS_H
#define VCAM_DEVICE_BOOTSTRAPREGISTERS_H

#include <cstdint>

namespace vcam::bootstrap {

constexpr uint32_t kVersion = 0x0000;
constexpr uint32_t kDeviceMode = 0x0004;
constexpr uint32_t kMacHigh = 0x0008;
constexpr uint32_t kMacLow = 0x000C;
constexpr uint32_t kIpCapability = 0x0010;
constexpr uint32_t kIpConfiguration = 0x0014;
constexpr uint32_t kCurrentIp = 0x0024;
constexpr uint32_t kCurrentMask = 0x0034;
constexpr uint32_t kCurrentGateway = 0x0044;
constexpr uint32_t kManufacturerName = 0x0048;
constexpr uint32_t kModelName = 0x0068;
constexpr uint32_t kDeviceVersion = 0x0088;
constexpr uint32_t kManufacturerInfo = 0x00A8;
constexpr uint32_t kSerialNumber = 0x00D8;
constexpr uint32_t kUserName = 0x00E8;
constexpr uint32_t kFirstUrl = 0x0200;
constexpr uint32_t kSecondUrl = 0x0400;
constexpr uint32_t kUrlLength = 512;
constexpr uint32_t kInterfaceCount = 0x0600;
constexpr uint32_t kPersistentIp = 0x064C;
constexpr uint32_t kPersistentMask = 0x065C;
constexpr uint32_t kPersistentGateway = 0x066C;
constexpr uint32_t kLinkSpeed = 0x0670;
constexpr uint32_t kMessageChannelCount = 0x0900;
constexpr uint32_t kStreamChannelCount = 0x0904;
constexpr uint32_t kActionSignalCount = 0x0908;
constexpr uint32_t kActiveLinkCount = 0x0910;
constexpr uint32_t kGvspCapability = 0x092C;
constexpr uint32_t kMessageCapability = 0x0930;
constexpr uint32_t kGvcpCapability = 0x0934;
constexpr uint32_t kHeartbeatTimeout = 0x0938;
constexpr uint32_t kTickFrequencyHigh = 0x093C;
constexpr uint32_t kTickFrequencyLow = 0x0940;
constexpr uint32_t kTimestampControl = 0x0944;
constexpr uint32_t kTimestampHigh = 0x0948;
constexpr uint32_t kTimestampLow = 0x094C;
constexpr uint32_t kDiscoveryDelay = 0x0950;
constexpr uint32_t kGvcpConfiguration = 0x0954;
constexpr uint32_t kPendingTimeout = 0x0958;
constexpr uint32_t kControlSwitchoverKey = 0x095C;
constexpr uint32_t kPhysicalLinkCapability = 0x0964;
constexpr uint32_t kPhysicalLinkConfiguration = 0x0968;
constexpr uint32_t kControlPrivilege = 0x0A00;
constexpr uint32_t kPrimaryPort = 0x0A04;
constexpr uint32_t kPrimaryAddress = 0x0A14;
constexpr uint32_t kStreamHostPort = 0x0D00;
constexpr uint32_t kStreamPacketSize = 0x0D04;
constexpr uint32_t kStreamPacketDelay = 0x0D08;
constexpr uint32_t kStreamDestination = 0x0D18;
constexpr uint32_t kStreamSourcePort = 0x0D1C;
constexpr uint32_t kStreamCapability = 0x0D20;
constexpr uint32_t kStreamConfiguration = 0x0D24;

constexpr uint32_t kPersistentIpBit = 1; // of both IP registers
constexpr uint32_t kDhcpBit = 2;
constexpr uint32_t kLinkLocalBit = 4;
constexpr uint32_t kFireTestPacketBit = 0x80000000;
constexpr uint32_t kDoNotFragmentBit = 0x40000000;
constexpr uint32_t kPacketSizeMask = 0x0000FFFF;
constexpr uint32_t kHeartbeatDisableBit = 1;
constexpr uint32_t kExclusiveBit = 1;
constexpr uint32_t kControlBit = 2;

// GVCP capability.
constexpr uint32_t kHasUserName = 1u << 31;
constexpr uint32_t kHasSerialNumber = 1u << 30;
constexpr uint32_t kHasHeartbeatDisable = 1u << 29;
constexpr uint32_t kHasLinkSpeed = 1u << 28;
constexpr uint32_t kHasPrimaryApplication = 1u << 27;
constexpr uint32_t kHasPendingAck = 1u << 5;
constexpr uint32_t kHasPacketResend = 1u << 2;
constexpr uint32_t kHasWriteMemory = 1u << 1;
constexpr uint32_t kHasConcatenation = 1u << 0;

constexpr uint32_t kMinHeartbeatMs = 500;
constexpr uint32_t kMinPacketSize = 576;
constexpr uint32_t kMaxPacketSize = 16384;
constexpr uint64_t kTickFrequency = 1000000000;

} // namespace vcam::bootstrap

#endif
