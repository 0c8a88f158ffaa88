#include "virtual-camera/FuzzCommands.h"

#include "Network/GvcpResponder.h"

#include <algorithm>
#include <cstdlib>

namespace fuzz {

namespace {

using namespace vcam;

class Answers final : public GvcpResponder::Outlet {
public:
    void Send(const Peer&, const Bytes& answer, bool) override {
        const bool sound = answer.size() >= kGvcpHeaderLength &&
                           Get16(answer.data() + 4) == answer.size() - kGvcpHeaderLength &&
                           answer.size() <= kGvcpHeaderLength + kGvcpMaxPayload;
        if (!sound)
            std::abort();
    }
    Status Move(uint32_t, uint32_t mask, uint32_t) override {
        return mask == 0 ? Status::InvalidParameter : Status::Success;
    }
    void Reboot() override {}
    void RequestResend(const ResendRequest&) override {}
};

Config SmallCamera() {
    Config config;
    config.sensorWidth = 64;
    config.sensorHeight = 64;
    return config;
}

// Made once, since making its XML takes longer than all else; each run finds it as the first did.
struct Device {
    FaultPanel faults;
    CounterBoard counters;
    DeviceModel model{SmallCamera(), faults, counters};
    const std::map<uint32_t, Bytes> fresh = model.Memory().Contents();
};

} // namespace

void FuzzVirtualCamera(const uint8_t* data, size_t size) {
    static Device device;
    device.faults.Set({});
    device.model.Memory().Restore(device.fresh);
    Answers answers;
    GvcpResponder responder(device.model, device.faults, device.counters, answers);
    Clock::time_point now{};
    const uint8_t* const end = data + size;
    while (end - data >= 3) {
        const Peer from{0x7F000001, static_cast<uint16_t>(1000 + (data[0] & 3))};
        now += std::chrono::milliseconds(10 * (data[0] >> 2));
        const size_t length = std::min<size_t>(Get16(data + 1), static_cast<size_t>(end - data - 3));
        responder.Receive(Bytes(data + 3, data + 3 + length), from, now);
        responder.Work(now);
        responder.NextDeadline();
        data += 3 + length;
    }
    if (PayloadBytes(device.model.Settings()) == 0) // whatever was written, the settings still make a picture
        std::abort();
}

} // namespace fuzz
