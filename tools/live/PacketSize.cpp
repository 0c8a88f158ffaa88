#include "PacketSize.h"

#include "Camera/Boundary/OvCameraControl.h"

#include <GenApi/IPort.h>

#include <array>
#include <exception>

namespace live {
namespace {

/// GigE Vision: stream channel packet size of channel 0. Registers are big-endian; the size is the low half.
constexpr int64_t packetSizeRegister = 0x0D04;
constexpr uint32_t fireTestPacket = UINT32_C(0x80000000);
constexpr uint32_t sizeMask = 0xFFFF;

uint32_t ReadRegister(GenApi_3_0::IPort& port) {
    std::array<uint8_t, 4> bytes{};
    port.Read(bytes.data(), packetSizeRegister, bytes.size());
    return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
           static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

void WriteRegister(GenApi_3_0::IPort& port, uint32_t value) {
    const std::array<uint8_t, 4> bytes = {static_cast<uint8_t>(value >> 24),
                                          static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8),
                                          static_cast<uint8_t>(value)};
    port.Write(bytes.data(), packetSizeRegister, bytes.size());
}

template<typename Work>
std::string WithPort(void* device, Work work) {
    auto* port = static_cast<GenApi_3_0::IPort*>(OV_CC_GetTlProxy(device));
    if (port == nullptr)
        return "OV_CC_GetTlProxy gave no port";
    try {
        work(*port);
    } catch (const std::exception& exception) {
        return exception.what();
    }
    return {};
}

} // namespace

std::string ReadPacketSize(void* device, uint32_t& bytes) {
    return WithPort(device, [&bytes](GenApi_3_0::IPort& port) { bytes = ReadRegister(port) & sizeMask; });
}

std::string WritePacketSize(void* device, uint32_t& bytes) {
    return WithPort(device, [&bytes](GenApi_3_0::IPort& port) {
        const uint32_t kept = ReadRegister(port) & ~sizeMask & ~fireTestPacket;
        WriteRegister(port, kept | (bytes & sizeMask));
        bytes = ReadRegister(port) & sizeMask;
    });
}

} // namespace live
