#include "raw_client.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace kolt::test {

namespace {

constexpr uint16_t kGvcp = 3956;

sockaddr_in Address(const std::string& dotted, uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = dotted.empty() ? htonl(INADDR_ANY) : inet_addr(dotted.c_str());
    return address;
}

int OpenSocket(const std::string& local, const std::string& interface) {
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
    const int size = 4 << 20;
    setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    if (!interface.empty())
        setsockopt(fd, SOL_SOCKET, SO_BINDTODEVICE, interface.c_str(),
                   static_cast<socklen_t>(interface.size()));
    const sockaddr_in own = Address(local, 0);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0)
        throw std::runtime_error("cannot bind " + local);
    return fd;
}

uint16_t PortOf(int fd) {
    sockaddr_in own{};
    socklen_t length = sizeof own;
    getsockname(fd, reinterpret_cast<sockaddr*>(&own), &length);
    return ntohs(own.sin_port);
}

std::optional<Bytes> Take(int fd, milliseconds timeout, uint32_t* from) {
    pollfd watched{fd, POLLIN, 0};
    if (poll(&watched, 1, static_cast<int>(timeout.count())) <= 0)
        return std::nullopt;
    Bytes bytes(65536);
    sockaddr_in sender{};
    socklen_t length = sizeof sender;
    const ssize_t got =
        recvfrom(fd, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&sender), &length);
    if (got < 0)
        return std::nullopt;
    bytes.resize(static_cast<size_t>(got));
    if (from != nullptr)
        *from = ntohl(sender.sin_addr.s_addr);
    return bytes;
}

} // namespace

uint16_t Be16(const Bytes& bytes, size_t at) {
    return static_cast<uint16_t>(bytes.at(at) << 8 | bytes.at(at + 1));
}

uint32_t Be32(const Bytes& bytes, size_t at) {
    return static_cast<uint32_t>(Be16(bytes, at)) << 16 | Be16(bytes, at + 2);
}

uint64_t Be64(const Bytes& bytes, size_t at) {
    return static_cast<uint64_t>(Be32(bytes, at)) << 32 | Be32(bytes, at + 4);
}

void Push16(Bytes& bytes, uint32_t value) {
    bytes.push_back(static_cast<uint8_t>(value >> 8));
    bytes.push_back(static_cast<uint8_t>(value));
}

void Push32(Bytes& bytes, uint32_t value) {
    Push16(bytes, value >> 16);
    Push16(bytes, value);
}

uint32_t Ip(const std::string& dotted) {
    return ntohl(inet_addr(dotted.c_str()));
}

RawClient::RawClient(const std::string& camera, const std::string& local, const std::string& interface)
    : m_camera(camera), m_socket(OpenSocket(local, interface)) {}

RawClient::~RawClient() {
    close(m_socket);
}

uint16_t RawClient::Port() const {
    return PortOf(m_socket);
}

void RawClient::SendTo(const std::string& address, const Bytes& datagram) {
    const sockaddr_in to = Address(address, kGvcp);
    sendto(m_socket, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

std::optional<Bytes> RawClient::ReceiveBytes(milliseconds timeout, uint32_t* from) {
    return Take(m_socket, timeout, from);
}

std::optional<Answer> RawClient::Receive(milliseconds timeout) {
    Answer answer;
    const auto bytes = ReceiveBytes(timeout, &answer.from);
    if (!bytes || bytes->size() < 8)
        return std::nullopt;
    answer.status = Be16(*bytes, 0);
    answer.code = Be16(*bytes, 2);
    answer.id = Be16(*bytes, 6);
    answer.payload.assign(bytes->begin() + 8, bytes->end());
    EXPECT_EQ(Be16(*bytes, 4), answer.payload.size()) << "length field";
    return answer;
}

Bytes RawClient::Command(uint16_t code, const Bytes& payload, uint16_t id, uint8_t flags) {
    Bytes datagram = {0x42, flags};
    Push16(datagram, code);
    Push16(datagram, static_cast<uint32_t>(payload.size()));
    Push16(datagram, id);
    datagram.insert(datagram.end(), payload.begin(), payload.end());
    return datagram;
}

Bytes RawClient::ForceIp(const std::vector<uint8_t>& mac, const std::string& address, const std::string& mask,
                         const std::string& gateway) {
    Bytes payload(2);
    payload.insert(payload.end(), mac.begin(), mac.end());
    payload.resize(20);
    Push32(payload, Ip(address));
    payload.resize(36);
    Push32(payload, Ip(mask));
    payload.resize(52);
    Push32(payload, Ip(gateway));
    return payload;
}

Answer RawClient::Ask(uint16_t code, const Bytes& payload, uint8_t flags, milliseconds timeout) {
    const uint16_t id = m_nextId++;
    Send(Command(code, payload, id, flags));
    while (auto answer = Receive(timeout)) {
        if (answer->id != id)
            continue;
        if (answer->code != 0x0089)
            return *answer;
        ++m_pendings;
    }
    return {};
}

Answer RawClient::ReadRegisters(const std::vector<uint32_t>& addresses) {
    Bytes payload;
    for (const uint32_t address : addresses)
        Push32(payload, address);
    return Ask(0x0080, payload);
}

Answer RawClient::WriteRegisters(const std::vector<std::pair<uint32_t, uint32_t>>& writes) {
    Bytes payload;
    for (const auto& [address, value] : writes) {
        Push32(payload, address);
        Push32(payload, value);
    }
    return Ask(0x0082, payload);
}

Answer RawClient::ReadMemory(uint32_t address, uint16_t count) {
    Bytes payload;
    Push32(payload, address);
    Push32(payload, count);
    return Ask(0x0084, payload);
}

Answer RawClient::WriteMemory(uint32_t address, const Bytes& data) {
    Bytes payload;
    Push32(payload, address);
    payload.insert(payload.end(), data.begin(), data.end());
    return Ask(0x0086, payload);
}

uint32_t RawClient::Read(uint32_t address) {
    const Answer answer = ReadRegisters({address});
    EXPECT_EQ(answer.status, kOk) << "register 0x" << std::hex << address;
    return answer.payload.size() == 4 ? Be32(answer.payload, 0) : 0xDEADBEEF;
}

uint64_t RawClient::Read64(uint32_t address) {
    const Answer answer = ReadMemory(address, 8);
    EXPECT_EQ(answer.status, kOk) << "register 0x" << std::hex << address;
    return answer.payload.size() == 12 ? Be64(answer.payload, 4) : 0xDEADBEEF;
}

uint16_t RawClient::Write(uint32_t address, uint32_t value) {
    return WriteRegisters({{address, value}}).status;
}

void RawClient::RequestResend(uint16_t block, uint32_t first, uint32_t last) {
    Bytes payload;
    Push16(payload, 0);
    Push16(payload, block);
    Push32(payload, first);
    Push32(payload, last);
    Send(Command(0x0040, payload, m_nextId++, 0));
}

RawReceiver::RawReceiver(const std::string& address) : m_socket(OpenSocket(address, "")) {}

RawReceiver::~RawReceiver() {
    close(m_socket);
}

uint16_t RawReceiver::Port() const {
    return PortOf(m_socket);
}

std::optional<Bytes> RawReceiver::Packet(milliseconds timeout) {
    return Take(m_socket, timeout, nullptr);
}

void RawReceiver::Sort(const Bytes& packet) {
    ASSERT_GE(packet.size(), 8u);
    const uint16_t status = Be16(packet, 0);
    const uint16_t block = Be16(packet, 2);
    const unsigned format = packet[4];
    const uint32_t id = Be32(packet, 4) & 0xFFFFFF;
    if (block == 0) {
        ++testPackets;
        return;
    }
    RawFrame& frame = frames[block];
    if (status == 0x800C) {
        frame.unavailable.insert(id);
        return;
    }
    if (status == 0x0100)
        ++frame.resent;
    else if (block == m_lastBlock && id < m_lastPacket)
        ++frame.disorder;
    m_lastBlock = block;
    m_lastPacket = id;
    if (format == 1) {
        frame.copies += frame.leader.empty() ? 0 : 1;
        frame.leader = packet;
    } else if (format == 2) {
        frame.copies += frame.trailer.empty() ? 0 : 1;
        frame.trailer = packet;
        frame.trailerId = id;
    } else {
        ASSERT_EQ(format, 3u);
        frame.copies += frame.payload.count(id) != 0 ? 1 : 0;
        frame.payload[id] = Bytes(packet.begin() + 8, packet.end());
    }
}

void OpenChannel(RawClient& client, const RawReceiver& receiver, uint32_t packetSize) {
    ASSERT_EQ(client.TakeControl(), kOk);
    ASSERT_EQ(
        client.WriteRegisters({{0x0D18, Ip("127.0.0.1")}, {0x0D00, receiver.Port()}, {0x0D04, packetSize}})
            .status,
        kOk);
}

} // namespace kolt::test
