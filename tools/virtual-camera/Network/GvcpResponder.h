// What a camera does with each GVCP command: rights, register access, slow answers, heartbeat. It knows no
// sockets; time comes from the caller, answers and orders leave by `Outlet`. Not for several threads at once.
#ifndef VCAM_NETWORK_GVCPRESPONDER_H
#define VCAM_NETWORK_GVCPRESPONDER_H

#include "Device/DeviceModel.h"
#include "Network/ControlChannel.h"

#include <vector>

namespace vcam {

class GvcpResponder {
public:
    class Outlet {
    public:
        virtual ~Outlet() = default;
        // With leave to broadcast it is for the outlet to judge whether the peer can be reached otherwise.
        virtual void Send(const Peer& to, const Bytes& answer, bool broadcastAllowed) = 0;
        // The camera's own address from now on; all stays as it was unless Success is returned.
        virtual Status Move(uint32_t address, uint32_t mask, uint32_t gateway) = 0;
        // The camera starts again: to the persistent address if there is one, else to where it was first.
        virtual void Reboot() = 0;
        virtual void RequestResend(const ResendRequest& request) = 0;
    };

    GvcpResponder(DeviceModel& model, FaultPanel& faults, CounterBoard& counters, Outlet& outlet);

    void Receive(Bytes datagram, const Peer& from, Clock::time_point now);
    // Whatever has become due: answers that were held back, the loss of control.
    void Work(Clock::time_point now);
    // When Work is wanted next, if nothing is received before.
    std::optional<Clock::time_point> NextDeadline() const;
    bool IsControlled() const { return m_channel.Owner().has_value(); }

private:
    struct Datagram {
        Bytes bytes;
        Peer from;
    };
    struct Delayed { // a command whose answer waits on purpose
        Clock::time_point due;
        Datagram datagram;
    };

    bool Postpone(const Datagram& datagram, const GvcpCommand& command, Clock::time_point now);
    void Execute(const Datagram& datagram, Clock::time_point now);
    void CheckHeartbeat(Clock::time_point now);
    void CheckReset(Clock::time_point now);
    std::optional<Clock::time_point> HeartbeatDeadline() const;
    void Answer(const GvcpCommand& command, const Peer& to, const Bytes& answer);

    void Discover(const GvcpCommand& command, const Peer& from);
    void ForceIp(const GvcpCommand& command, const Peer& from);
    void ReadRegisters(const GvcpCommand& command, const Peer& from);
    void WriteRegisters(const GvcpCommand& command, const Peer& from, Clock::time_point now);
    void ReadMemory(const GvcpCommand& command, const Peer& from);
    void WriteMemory(const GvcpCommand& command, const Peer& from, Clock::time_point now);
    Status Read(const Peer& from, uint32_t address, uint8_t* to, size_t length);
    Status Write(const Peer& from, uint32_t address, const uint8_t* data, size_t length, size_t& written,
                 Clock::time_point now);
    Status WritePrivilege(const Peer& from, uint32_t value, Clock::time_point now);
    void ShowOwner();

    DeviceModel& m_model;
    FaultPanel& m_faults;
    CounterBoard& m_counters;
    Outlet& m_outlet;
    ControlChannel m_channel;
    std::vector<Delayed> m_delayed;
    Clock::time_point m_bootedAt{}; // before, nothing is answered
    Datagram m_lastWrite;           // a repeated write is answered, not executed again
    Bytes m_lastWriteAnswer;
};

} // namespace vcam

#endif
