// Who controls the camera: the rules of the control channel privilege and its heartbeat. Plain state; time
// comes from the caller. Not for several threads at once.
#ifndef VCAM_NETWORK_CONTROLCHANNEL_H
#define VCAM_NETWORK_CONTROLCHANNEL_H

#include "Device/BootstrapRegisters.h"
#include "Network/Socket.h"
#include "Protocol/GvcpCodec.h"

#include <chrono>
#include <optional>

namespace vcam {

class ControlChannel {
public:
    using Clock = std::chrono::steady_clock;

    // A write of the privilege register.
    Status Claim(const Peer& peer, uint32_t value, Clock::time_point now) {
        if (m_owner && !(*m_owner == peer))
            return Status::AccessDenied;
        if ((value & (bootstrap::kExclusiveBit | bootstrap::kControlBit)) == 0) {
            m_owner.reset();
            m_value = 0;
            return Status::Success;
        }
        m_owner = peer;
        m_value = (value & bootstrap::kExclusiveBit) != 0 ? bootstrap::kExclusiveBit : bootstrap::kControlBit;
        m_heard = now;
        return Status::Success;
    }
    uint32_t Value() const { return m_value; }
    std::optional<Peer> Owner() const { return m_owner; }
    bool Owns(const Peer& peer) const { return m_owner && *m_owner == peer; }
    // Under exclusive access nobody else reads either.
    bool MayRead(const Peer& peer) const { return Owns(peer) || (m_value & bootstrap::kExclusiveBit) == 0; }
    bool MayWrite(const Peer& peer) const { return Owns(peer); }
    // Every command of the owner is a sign of life.
    void Heard(const Peer& peer, Clock::time_point now) {
        if (Owns(peer))
            m_heard = now;
    }
    // When the control is lost unless the owner is heard before.
    std::optional<Clock::time_point> Deadline(std::chrono::milliseconds timeout) const {
        if (!m_owner)
            return std::nullopt;
        return m_heard + timeout;
    }
    void Release() {
        m_owner.reset();
        m_value = 0;
    }

private:
    std::optional<Peer> m_owner;
    uint32_t m_value = 0;
    Clock::time_point m_heard{};
};

} // namespace vcam

#endif
