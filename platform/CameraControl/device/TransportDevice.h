// An open device as the rest of the library sees it: registers, features that streaming needs, a stream.
//
// Not thread-safe: after its making, everything is called on the device's I/O thread (IoQueue). Calls block,
// on a dead device for seconds. Nothing raises; results are OV statuses.
#ifndef KOLT_CAMERA_CONTROL_TRANSPORT_DEVICE_H
#define KOLT_CAMERA_CONTROL_TRANSPORT_DEVICE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "device/FrameSource.h"

namespace kolt::cc {

class TransportDevice {
public:
    enum class Control { held, lost, unknown }; // unknown: no answer

    TransportDevice() = default;
    // Gives control back and closes.
    virtual ~TransportDevice() = default;
    TransportDevice(const TransportDevice&) = delete;
    TransportDevice& operator=(const TransportDevice&) = delete;

    // The device's bytes as they lie in its memory. Any address and length: what the transport can't do (odd
    // addresses, long blocks) is done here.
    virtual std::uint32_t readMemory(std::uint64_t address, std::uint8_t* destination,
                                     std::size_t length) = 0;
    virtual std::uint32_t writeMemory(std::uint64_t address, const std::uint8_t* source,
                                      std::size_t length) = 0;

    virtual std::uint32_t executeCommand(const char* feature) = 0;
    // The camera's payload size as it is set now.
    virtual std::uint32_t payloadSize(std::size_t& bytes) = 0;

    virtual std::uint32_t openStream(const StreamSettings& settings, FrameSource::Hooks hooks,
                                     std::shared_ptr<FrameSource>& stream) = 0;
    // Tells the camera that nobody listens any more. After its acquisition was stopped.
    virtual void closeStreamChannel() = 0;

    // The largest packet that reaches this host, in bytes; the camera's setting is left as it was. 0: this
    // transport has no packets.
    virtual std::int32_t optimalPacketSize() = 0;
    virtual std::int32_t packetSize() = 0;

    // Asks the device whether this host still controls it.
    virtual Control askControl() = 0;

    // The GenICam XML, unzipped. May be called on any thread.
    virtual const std::vector<std::uint8_t>& xml() const = 0;
};

} // namespace kolt::cc

#endif
