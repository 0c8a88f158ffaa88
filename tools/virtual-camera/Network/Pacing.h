// When packets and frames may leave. Plain arithmetic on points in time.
#ifndef VCAM_NETWORK_PACING_H
#define VCAM_NETWORK_PACING_H

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace vcam {

// Packets of one frame: each takes its time on the link and is followed by the delay that the client asked
// for. Waking for each packet would cost more than sending it, so those due within one quantum leave
// together.
class PacketPacer {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::nanoseconds kQuantum{250000};

    // linkSpeedMbps 0: packets take no time on the link.
    PacketPacer(Clock::time_point start, uint32_t packetBytes, uint32_t linkSpeedMbps, uint64_t delayNs)
        : m_start(start)
        , m_perPacket(delayNs + (linkSpeedMbps > 0 ? uint64_t{packetBytes} * 8000 / linkSpeedMbps : 0)) {}

    Clock::time_point Due(uint32_t packet) const {
        return m_start + std::chrono::nanoseconds(m_perPacket * packet);
    }
    // How many packets from `packet` on may leave at `now`; at least one when it is due, 0 when it is not.
    uint32_t Allowed(uint32_t packet, Clock::time_point now, uint32_t most) const {
        if (m_perPacket == 0)
            return most;
        const Clock::time_point due = Due(packet);
        if (due > now)
            return 0;
        const auto room = std::chrono::nanoseconds(now - due) + kQuantum;
        const uint64_t count = static_cast<uint64_t>(room.count()) / m_perPacket;
        return static_cast<uint32_t>(std::clamp<uint64_t>(count, 1, most));
    }

private:
    Clock::time_point m_start;
    uint64_t m_perPacket; // nanoseconds
};

// Frames of a free run at a steady rate. A frame that comes late does not move those after it, but no burst
// makes up for whole frames that were missed.
class FramePacer {
public:
    using Clock = std::chrono::steady_clock;

    void Restart(Clock::time_point now) { m_next = now; }
    Clock::time_point Next() const { return m_next; }
    // A frame begins now.
    void Begin(Clock::time_point now, double periodUs) {
        const auto period = std::chrono::nanoseconds(static_cast<int64_t>(periodUs * 1000.0));
        m_next += period;
        if (m_next + period < now)
            m_next = now;
    }

private:
    Clock::time_point m_next{};
};

} // namespace vcam

#endif
