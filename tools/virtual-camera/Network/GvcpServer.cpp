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
    : m_model(model), m_stream(stream), m_faults(faults), m_counters(counters) {}

GvcpServer::~GvcpServer() {
    Stop();
}

void GvcpServer::Start(const Site& site) {
    Open(site);
    m_end = Descriptor(eventfd(0, EFD_CLOEXEC));
    if (!m_end)
        throw std::system_error(errno, std::generic_category(), "make an event descriptor");
    m_thread = std::thread([this] { Run(); });
}

void GvcpServer::Stop() {
    if (m_thread.joinable()) {
        const uint64_t one = 1;
        while (write(m_end.Get(), &one, sizeof one) < 0 && errno == EINTR) {
        }
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
    m_site = site;
    m_address = site.address;
    m_model.SetNetwork(site.address, site.mask, site.gateway);
}

void GvcpServer::Run() {
    pthread_setname_np(pthread_self(), "vcam-control");
    for (;;) {
        std::vector<pollfd> watched = {{m_end.Get(), POLLIN, 0}, {m_control.Get(), POLLIN, 0}};
        for (const Descriptor& broadcast : m_broadcasts)
            watched.push_back({broadcast.Get(), POLLIN, 0});
        if (poll(watched.data(), watched.size(), TimeoutMs()) < 0 && errno != EINTR)
            return;
        if (watched[0].revents != 0)
            return;
        CheckHeartbeat();
        RunDelayed();
        for (size_t i = 1; i < watched.size(); ++i) {
            if (watched[i].revents != 0)
                Receive(watched[i].fd);
        }
    }
}

int GvcpServer::TimeoutMs() const {
    std::optional<Clock::time_point> first;
    const auto consider = [&first](Clock::time_point at) { first = first ? std::min(*first, at) : at; };
    const auto& memory = m_model.Memory();
    const bool heartbeat =
        (memory.Get32(bootstrap::kGvcpConfiguration) & bootstrap::kHeartbeatDisableBit) == 0;
    const auto deadline =
        m_channel.Deadline(std::chrono::milliseconds(memory.Get32(bootstrap::kHeartbeatTimeout)));
    if (heartbeat && deadline)
        consider(*deadline);
    for (const Delayed& delayed : m_delayed)
        consider(delayed.due);
    if (!first)
        return -1;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(*first - Clock::now()).count();
    return static_cast<int>(std::clamp<int64_t>(left + 1, 0, 3600000));
}

void GvcpServer::CheckHeartbeat() {
    const auto& memory = m_model.Memory();
    if ((memory.Get32(bootstrap::kGvcpConfiguration) & bootstrap::kHeartbeatDisableBit) != 0)
        return;
    const auto deadline =
        m_channel.Deadline(std::chrono::milliseconds(memory.Get32(bootstrap::kHeartbeatTimeout)));
    if (!deadline || Clock::now() < *deadline)
        return;
    m_channel.Release();
    ShowOwner();
    m_model.ReleaseChannels();
    m_counters.Add(&Counters::heartbeatsExpired);
}

// One datagram; poll calls again while there are more. A FORCEIP may replace the sockets in here.
void GvcpServer::Receive(int socket) {
    Datagram datagram;
    datagram.bytes.resize(2048);
    sockaddr_in from{};
    socklen_t length = sizeof from;
    const ssize_t got = recvfrom(socket, datagram.bytes.data(), datagram.bytes.size(), 0,
                                 reinterpret_cast<sockaddr*>(&from), &length);
    if (got < 0)
        return;
    datagram.bytes.resize(static_cast<size_t>(got));
    datagram.from = FromSockaddr(from);
    if (m_faults.Silent()) {
        m_counters.Add(&Counters::ignoredWhileSilent);
        return;
    }
    Handle(datagram);
}

void GvcpServer::Handle(const Datagram& datagram) {
    GvcpCommand command;
    if (!ParseCommand(datagram.bytes.data(), datagram.bytes.size(), command)) {
        m_counters.Add(&Counters::badCommands);
        return;
    }
    m_counters.Add(&Counters::commands);
    m_channel.Heard(datagram.from, Clock::now());
    if (!Postpone(datagram, command))
        Execute(datagram);
}

// True when the answer is to come later, or is on its way already.
bool GvcpServer::Postpone(const Datagram& datagram, const GvcpCommand& command) {
    const Faults faults = m_faults.Get();
    const bool access = command.code == CommandCode::ReadRegister ||
                        command.code == CommandCode::WriteRegister ||
                        command.code == CommandCode::ReadMemory || command.code == CommandCode::WriteMemory;
    if (!access)
        return false;
    const auto pending = [&] {
        if (!faults.announcePending)
            return;
        const auto ms = static_cast<uint16_t>(std::min(faults.answerDelayMs + 50, 0xFFFFu));
        m_counters.Add(&Counters::pendingAnswers);
        AnswerNearby(datagram.from, EncodePending(command.requestId, ms), false);
    };
    for (const Delayed& delayed : m_delayed) {
        if (delayed.datagram.from == datagram.from && delayed.datagram.bytes == datagram.bytes) {
            pending();
            return true;
        }
    }
    if (faults.answerDelayMs == 0)
        return false;
    m_delayed.push_back({Clock::now() + std::chrono::milliseconds(faults.answerDelayMs), datagram});
    pending();
    return true;
}

void GvcpServer::RunDelayed() {
    const Clock::time_point now = Clock::now();
    while (!m_delayed.empty() && m_delayed.front().due <= now) {
        const Datagram datagram = std::move(m_delayed.front().datagram);
        m_delayed.erase(m_delayed.begin());
        if (!m_faults.Silent())
            Execute(datagram);
    }
}

void GvcpServer::Execute(const Datagram& datagram) {
    GvcpCommand command;
    if (!ParseCommand(datagram.bytes.data(), datagram.bytes.size(), command))
        return;
    const Peer& from = datagram.from;
    switch (command.code) {
    case CommandCode::Discovery:
        return Discover(command, from);
    case CommandCode::ForceIp:
        return ForceIp(command, from);
    case CommandCode::ReadRegister:
        return ReadRegisters(command, from);
    case CommandCode::ReadMemory:
        return ReadMemory(command, from);
    case CommandCode::WriteRegister:
    case CommandCode::WriteMemory:
        if (m_lastWrite.from == from && m_lastWrite.bytes == datagram.bytes)
            return AnswerNearby(from, m_lastWriteAnswer, false);
        m_lastWriteAnswer.clear();
        m_lastWrite = datagram;
        if (command.code == CommandCode::WriteRegister)
            return WriteRegisters(command, from);
        return WriteMemory(command, from);
    case CommandCode::PacketResend:
        if (const auto request = ParsePacketResend(command))
            m_stream.RequestResend(*request);
        return;
    default:
        return Answer(command, from,
                      EncodeAnswer(Status::NotImplemented,
                                   static_cast<uint16_t>(static_cast<uint16_t>(command.code) + 1),
                                   command.requestId, {}));
    }
}

void GvcpServer::Answer(const GvcpCommand& command, const Peer& to, Bytes answer) {
    const bool write = command.code == CommandCode::WriteRegister || command.code == CommandCode::WriteMemory;
    if (write)
        m_lastWriteAnswer = answer;
    if (command.WantsAnswer())
        AnswerNearby(to, answer, false);
}

// A requester of a foreign subnet is on the same wire: the socket is bound to the interface, which makes the
// kernel look for it there even without a route. With leave to broadcast the answer goes both ways.
void GvcpServer::AnswerNearby(const Peer& to, const Bytes& answer, bool broadcastAllowed) {
    const auto send = [&](const Peer& peer) {
        const sockaddr_in address = ToSockaddr(peer);
        return sendto(m_control.Get(), answer.data(), answer.size(), 0,
                      reinterpret_cast<const sockaddr*>(&address), sizeof address) >= 0;
    };
    if (answer.empty())
        return;
    const bool foreign = (to.address & m_site.mask) != (m_site.address & m_site.mask);
    if (broadcastAllowed && foreign && !m_site.loopback)
        send({INADDR_BROADCAST, to.port});
    else
        send(to);
}

} // namespace vcam
