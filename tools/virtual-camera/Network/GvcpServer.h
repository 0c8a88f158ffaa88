// Answers GVCP at one address, on a thread of its own that sleeps until a datagram, a deadline or the end
// comes.
#ifndef VCAM_NETWORK_GVCPSERVER_H
#define VCAM_NETWORK_GVCPSERVER_H

#include "Network/ControlChannel.h"
#include "Network/HostNetwork.h"
#include "Network/StreamSender.h"

namespace vcam {

// Where the camera answers.
struct Site {
    std::string interface;
    uint32_t address = 0;
    uint32_t mask = 0;
    uint32_t gateway = 0;
    bool loopback = false;
    bool added = false; // by the camera, so it takes the address away again
};

class GvcpServer {
public:
    GvcpServer(DeviceModel& model, StreamSender& stream, FaultPanel& faults, CounterBoard& counters);
    ~GvcpServer();

    void Start(const Site& site);
    void Stop();
    uint32_t Address() const { return m_address.load(); }
    bool IsControlled() const { return m_controlled.load(); }

private:
    struct Datagram {
        Bytes bytes;
        Peer from;
    };
    struct Delayed { // a command whose answer waits on purpose
        Clock::time_point due;
        Datagram datagram;
    };

    void Run();
    int TimeoutMs() const;
    void Receive(int socket);
    void Handle(const Datagram& datagram);
    bool Postpone(const Datagram& datagram, const GvcpCommand& command);
    void Execute(const Datagram& datagram);
    void RunDelayed();
    void CheckHeartbeat();
    void Answer(const GvcpCommand& command, const Peer& to, Bytes answer);
    void AnswerNearby(const Peer& to, const Bytes& answer, bool broadcastAllowed);

    void Discover(const GvcpCommand& command, const Peer& from);
    void ForceIp(const GvcpCommand& command, const Peer& from);
    void ReadRegisters(const GvcpCommand& command, const Peer& from);
    void WriteRegisters(const GvcpCommand& command, const Peer& from);
    void ReadMemory(const GvcpCommand& command, const Peer& from);
    void WriteMemory(const GvcpCommand& command, const Peer& from);
    Status Read(const Peer& from, uint32_t address, uint8_t* to, size_t length);
    Status Write(const Peer& from, uint32_t address, const uint8_t* data, size_t length, size_t& written);
    Status WritePrivilege(const Peer& from, uint32_t value);
    void ShowOwner();

    void Open(const Site& site);
    void LeaveInterface();
    void Settle(Site& site);
    void Return(const Site& from, const Site& to);
    Status Move(uint32_t address, uint32_t mask, uint32_t gateway);

    DeviceModel& m_model;
    StreamSender& m_stream;
    FaultPanel& m_faults;
    CounterBoard& m_counters;
    std::atomic<uint32_t> m_address{0};
    std::atomic<bool> m_controlled{false};

    // The thread's own.
    Site m_site;
    std::optional<Site>
        m_displaced;      // an address of the host's own that FORCEIP took away; put back at the end
    Descriptor m_control; // bound to the camera's address
    std::vector<Descriptor>
        m_broadcasts; // bound to broadcast addresses, which a bound socket does not hear otherwise
    ControlChannel m_channel;
    std::vector<Delayed> m_delayed;
    Datagram m_lastWrite; // a repeated write is answered, not executed again
    Bytes m_lastWriteAnswer;

    Descriptor m_end; // eventfd
    std::thread m_thread;
};

} // namespace vcam

#endif
