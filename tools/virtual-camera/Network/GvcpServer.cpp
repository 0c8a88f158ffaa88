#include "Network/GvcpServer.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace vcam {

GvcpServer::GvcpServer(DeviceModel& model, StreamSender& stream, FaultPanel& faults, CounterBoard& counters)
    : m_model(model), m_stream(stream), m_responder(model, faults, counters, *this) {}

GvcpServer::~GvcpServer() {
    Stop();
}

void GvcpServer::Start(const Site& site) {
    Open(site);
    m_first = site;
    Reboot();
    m_end = Descriptor(eventfd(0, EFD_CLOEXEC));
    m_wake = Descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!m_end || !m_wake)
        throw std::system_error(errno, std::generic_category(), "make an event descriptor");
    m_thread = std::thread([this] { Run(); });
}

namespace {
void Signal(const Descriptor& event) {
    const uint64_t one = 1;
    while (write(event.Get(), &one, sizeof one) < 0 && errno == EINTR) {
    }
}
} // namespace

void GvcpServer::Wake() {
    Signal(m_wake);
}

void GvcpServer::Stop() {
    if (m_thread.joinable()) {
        Signal(m_end);
        m_thread.join();
    }
    m_control.Close();
    m_broadcasts.clear();
    try {
        LeaveInterface();
        if (m_displaced)
            AddHostAddress(m_displaced->interface, m_displaced->address, m_displaced->mask);
    } catch (const std::system_error&) { // the interface went first
    }
    m_displaced.reset();
}

// Takes the camera's address off the interface if the camera had put it there.
void GvcpServer::LeaveInterface() {
    if (m_site.added)
        RemoveHostAddress(m_site.interface, m_site.address, m_site.mask);
    m_site.added = false;
}

// Takes up a site; on an exception all is as before. A socket that has the address already is kept.
void GvcpServer::Open(const Site& site) {
    Descriptor control;
    if (!m_control || site.address != m_site.address)
        control = OpenUdp(site.address, kGvcpPort, site.loopback ? std::string() : site.interface, false);
    std::vector<Descriptor> broadcasts;
    broadcasts.push_back(OpenUdp(INADDR_BROADCAST, kGvcpPort, site.interface, true));
    broadcasts.push_back(OpenUdp(site.address | ~site.mask, kGvcpPort, site.interface, true));
    if (control)
        m_control = std::move(control);
    m_broadcasts = std::move(broadcasts);
    m_moved = true;
    m_site = site;
    m_address = site.address;
    m_model.SetNetwork(site.address, site.mask, site.gateway);
}

void GvcpServer::Run() {
    pthread_setname_np(pthread_self(), "vcam-control");
    for (;;) {
        std::vector<pollfd> watched = {
            {m_end.Get(), POLLIN, 0}, {m_wake.Get(), POLLIN, 0}, {m_control.Get(), POLLIN, 0}};
        for (const Descriptor& broadcast : m_broadcasts)
            watched.push_back({broadcast.Get(), POLLIN, 0});
        if (poll(watched.data(), watched.size(), TimeoutMs()) < 0 && errno != EINTR)
            return;
        if (watched[0].revents != 0)
            return;
        uint64_t wakes = 0;
        if (watched[1].revents != 0 && read(m_wake.Get(), &wakes, sizeof wakes) < 0 && errno != EAGAIN)
            return;
        m_moved = false; // a FORCEIP or a reset replaces the sockets
        m_responder.Work(Clock::now());
        for (size_t i = 2; i < watched.size() && !m_moved; ++i) {
            if (watched[i].revents != 0)
                Receive(watched[i].fd);
        }
        m_controlled = m_responder.IsControlled();
    }
}

int GvcpServer::TimeoutMs() const {
    const std::optional<Clock::time_point> deadline = m_responder.NextDeadline();
    if (!deadline)
        return -1;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(*deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<int64_t>(left + 1, 0, 3600000));
}

// One datagram; poll calls again while there are more.
void GvcpServer::Receive(int socket) {
    Bytes bytes(2048);
    sockaddr_in from{};
    socklen_t length = sizeof from;
    const ssize_t got =
        recvfrom(socket, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&from), &length);
    if (got < 0)
        return;
    bytes.resize(static_cast<size_t>(got));
    m_responder.Receive(std::move(bytes), FromSockaddr(from), Clock::now());
}

// A peer of a foreign subnet is on the same wire: the socket is bound to the interface, which makes the
// kernel look for it there even without a route. Where the peer allows a broadcast, that is the surer way.
void GvcpServer::Send(const Peer& to, const Bytes& answer, bool broadcastAllowed) {
    if (answer.empty())
        return;
    m_controlled = m_responder.IsControlled(); // before whoever asked can know it
    const bool foreign = (to.address & m_site.mask) != (m_site.address & m_site.mask);
    const bool broadcast = broadcastAllowed && foreign && !m_site.loopback;
    const sockaddr_in address = ToSockaddr({broadcast ? INADDR_BROADCAST : to.address, to.port});
    sendto(m_control.Get(), answer.data(), answer.size(), 0, reinterpret_cast<const sockaddr*>(&address),
           sizeof address);
}

void GvcpServer::RequestResend(const ResendRequest& request) {
    m_stream.RequestResend(request);
}

Status GvcpServer::Move(uint32_t address, uint32_t mask, uint32_t gateway) {
    Site site = m_site;
    site.address = address;
    site.mask = mask;
    site.gateway = gateway;
    const uint32_t host = address & ~mask;
    const bool sensible = mask != 0 && (~mask & (~mask + 1)) == 0 && host != 0 && host != ~mask;
    const bool loopbackAddress = (address >> 24) == 127;
    if (!sensible || loopbackAddress != m_site.loopback)
        return Status::InvalidParameter;
    const Site old = m_site;
    try {
        Settle(site);
        Open(site);
        m_stream.Rebind(address);
        return Status::Success;
    } catch (const std::system_error&) {
        Return(site, old);
        return Status::Error;
    }
}

// A persistent address that can't be taken is as good as none.
void GvcpServer::Reboot() {
    const std::optional<NetworkStart> kept = m_model.PersistentNetwork();
    const auto isHere = [this](uint32_t address, uint32_t mask) {
        return m_site.address == address && m_site.mask == mask;
    };
    bool settled = kept && isHere(kept->address, kept->mask);
    if (settled)
        m_site.gateway = kept->gateway;
    else if (kept)
        settled = Move(kept->address, kept->mask, kept->gateway) == Status::Success;
    if (!settled && isHere(m_first.address, m_first.mask))
        m_site.gateway = m_first.gateway;
    else if (!settled)
        Move(m_first.address, m_first.mask, m_first.gateway);
    m_model.SetNetwork(m_site.address, m_site.mask, m_site.gateway);
}

// After a move that failed half way.
void GvcpServer::Return(const Site& from, const Site& to) {
    m_site = to;
    if (to.loopback)
        return;
    try {
        if (from.added && from.address != to.address)
            RemoveHostAddress(from.interface, from.address, from.mask);
        AddHostAddress(to.interface, to.address, to.mask);
    } catch (const std::system_error&) { // the interface is gone; nobody will ask at this address
    }
}

// Puts the new address on the interface and takes the old one off.
void GvcpServer::Settle(Site& site) {
    if (site.loopback || (site.address == m_site.address && site.mask == m_site.mask))
        return;
    site.added = false;
    if (site.address != m_site.address && FindHostAddress(site.address))
        throw std::system_error(EADDRINUSE, std::generic_category(),
                                "the host itself has " + Dotted(site.address));
    if (!m_site.added)
        m_displaced = m_site;
    RemoveHostAddress(m_site.interface, m_site.address, m_site.mask);
    AddHostAddress(site.interface, site.address, site.mask);
    site.added = true;
}

} // namespace vcam
