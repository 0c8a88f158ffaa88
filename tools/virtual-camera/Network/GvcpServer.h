// Answers GVCP at one address, on a thread of its own that sleeps until a datagram, a deadline or the end
// comes.
#ifndef VCAM_NETWORK_GVCPSERVER_H
#define VCAM_NETWORK_GVCPSERVER_H

#include "Network/GvcpResponder.h"
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

class GvcpServer final : private GvcpResponder::Outlet {
public:
    GvcpServer(DeviceModel& model, StreamSender& stream, FaultPanel& faults, CounterBoard& counters);
    ~GvcpServer() override;

    void Start(const Site& site);
    void Stop();
    // Looks for what the device wants done. Any thread, between Start and Stop.
    void Wake();
    uint32_t Address() const { return m_address.load(); }
    bool IsControlled() const { return m_controlled.load(); }

private:
    void Send(const Peer& to, const Bytes& answer, bool broadcastAllowed) override;
    Status Move(uint32_t address, uint32_t mask, uint32_t gateway) override;
    void Reboot() override;
    void RequestResend(const ResendRequest& request) override;

    void Run();
    int TimeoutMs() const;
    void Receive(int socket);
    void Open(const Site& site);
    void LeaveInterface();
    void Settle(Site& site);
    void Return(const Site& from, const Site& to);

    DeviceModel& m_model;
    StreamSender& m_stream;
    std::atomic<uint32_t> m_address{0};
    std::atomic<bool> m_controlled{false};

    // The thread's own.
    Site m_site;
    Site m_first; // where it started
    // An address of the host's own that FORCEIP took away; put back at the end.
    std::optional<Site> m_displaced;
    Descriptor m_control; // bound to the camera's address
    // Bound to broadcast addresses, which a socket bound to the camera's does not hear.
    std::vector<Descriptor> m_broadcasts;
    bool m_moved = false; // the sockets are others since the last look
    GvcpResponder m_responder;

    Descriptor m_end;  // eventfd
    Descriptor m_wake; // eventfd
    std::thread m_thread;
};

} // namespace vcam

#endif
