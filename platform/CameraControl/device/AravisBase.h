// What GigE Vision and USB3 Vision devices of Aravis share.
#ifndef KOLT_CAMERA_CONTROL_ARAVIS_BASE_H
#define KOLT_CAMERA_CONTROL_ARAVIS_BASE_H

#include <functional>
#include <memory>
#include <vector>

#include <arv.h>

#include "device/FeatureMap.h"
#include "device/GlibPtr.h"
#include "device/Log.h"
#include "device/TransportDevice.h"

namespace kolt::cc {

class AravisBase : public TransportDevice {
public:
    ~AravisBase() override;

    std::uint32_t readMemory(std::uint64_t address, std::uint8_t* destination, std::size_t length) override;
    std::uint32_t writeMemory(std::uint64_t address, const std::uint8_t* source, std::size_t length) override;
    std::uint32_t executeCommand(const char* feature) override;
    std::uint32_t payloadSize(std::size_t& bytes) override;
    std::uint32_t openStream(const StreamSettings& settings, FrameSource::Hooks hooks,
                             std::shared_ptr<FrameSource>& stream) override;
    void closeStreamChannel() override {}
    std::int32_t optimalPacketSize() override { return 0; }
    std::int32_t packetSize() override { return 0; }
    Control askControl() override;
    const std::vector<std::uint8_t>& xml() const override { return xml_; }

protected:
    // Without controlLost Aravis is not asked to tell.
    AravisBase(GObjectPtr<ArvDevice> device, const Logger& log, std::function<void()> controlLost);

    // A stream that is not Aravis'; null: none.
    virtual std::shared_ptr<FrameSource> ownStream(const StreamSettings&, const StreamShape&,
                                                   const FrameSource::Hooks&) {
        return nullptr;
    }
    // Before and after the making of Aravis' stream.
    virtual void prepareStream(const StreamSettings&) {}
    virtual void tuneStream(ArvStream*, const StreamSettings&, const StreamShape&) {}
    // Data bytes of a full packet; 0: no packets.
    virtual std::size_t packetData() { return 0; }

    ArvDevice* arv() const { return device_.get(); }
    const Logger& log() const { return log_; }
    void takeXml(std::vector<std::uint8_t> xml) { xml_ = std::move(xml); }
    void copyXmlOfAravis();

private:
    FrameGeometry geometry();

    GObjectPtr<ArvDevice> device_;
    Logger log_;
    gulong lossHandler_ = 0;
    std::vector<std::uint8_t> xml_; // settled before the first use of a feature
    FeatureMap features_;
};

} // namespace kolt::cc

#endif
