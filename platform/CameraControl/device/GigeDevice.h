// A GigE Vision camera through Aravis.
#ifndef KOLT_CAMERA_CONTROL_GIGE_DEVICE_H
#define KOLT_CAMERA_CONTROL_GIGE_DEVICE_H

#include <cstdint>
#include <memory>
#include <string_view>

#include "device/AravisBase.h"
#include "device/AravisDevice.h"

namespace kolt::cc {

// Schemas before 1.1 were written for devices whose registers are numbers, not bytes: accesses of 4 bytes go
// by READREG and WRITEREG, and their bytes stand in the device's own order.
bool wantsRegisterAccess(std::string_view xml);

class GigeDevice final : public AravisBase {
public:
    // As openDevice().
    static std::unique_ptr<GigeDevice> open(const OpenRequest& request, std::uint32_t& status);

    std::uint32_t readMemory(std::uint64_t address, std::uint8_t* destination, std::size_t length) override;
    std::uint32_t writeMemory(std::uint64_t address, const std::uint8_t* source, std::size_t length) override;
    void closeStreamChannel() override;
    std::int32_t optimalPacketSize() override;
    std::int32_t packetSize() override;
    Control askControl() override;

protected:
    std::shared_ptr<FrameSource> ownStream(const StreamSettings& settings, const StreamShape& shape,
                                           const FrameSource::Hooks& hooks) override;
    void prepareStream(const StreamSettings& settings) override;
    void tuneStream(ArvStream* stream, const StreamSettings& settings, const StreamShape& shape) override;
    std::size_t packetData() override;

private:
    using AravisBase::AravisBase;

    std::uint64_t ticksPerSecond();
    // The size that neither camera nor this host's network can exceed; 0 when it isn't known.
    std::uint32_t largestThinkableSize();
    // That size, when a test packet of it arrives; else 0. Leaves the camera's packet size as it was.
    std::uint32_t tryLargestSize();
    std::uint32_t takeExclusiveControl();
    std::uint32_t readRegister(std::uint64_t address, std::uint32_t& value);
    std::uint32_t writeRegister(std::uint64_t address, std::uint32_t value);
    std::uint32_t readAsRegister(std::uint64_t address, std::uint8_t* destination);
    std::uint32_t writeAsRegister(std::uint64_t address, const std::uint8_t* source, bool bigEndian);
    std::uint32_t writeAligned(std::uint64_t address, const std::uint8_t* source, std::size_t length);
    ArvGvDevice* gv() const { return ARV_GV_DEVICE(arv()); }

    std::uint32_t ip_ = 0;      // the camera's
    std::uint32_t localIp_ = 0; // of this host, as the camera sees it
    bool registerAccess_ = false;
    bool bigEndian_ = true;
    std::uint32_t privilege_ = 0; // what the control channel privilege register holds while it is ours
    std::uint32_t heartbeat_ = 0; // the camera's heartbeat time-out, ms
};

} // namespace kolt::cc

#endif
