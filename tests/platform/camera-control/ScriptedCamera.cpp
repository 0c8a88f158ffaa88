#include "ScriptedCamera.h"

#include <arpa/inet.h>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace kolt::test {

namespace {

void put(Bytes& bytes, std::size_t offset, const std::string& text, std::size_t field) {
    std::memcpy(&bytes[offset], text.data(), std::min(field, text.size()));
}

void put32(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    for (int i = 0; i < 4; ++i)
        bytes[offset + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

void putAddress(Bytes& bytes, std::size_t offset, const std::string& dotted) {
    in_addr address{};
    if (::inet_pton(AF_INET, dotted.c_str(), &address) != 1)
        throw std::invalid_argument(dotted);
    std::memcpy(&bytes[offset], &address, 4);
}

int udpSocket(const std::string& address, std::uint16_t port, const std::string& interfaceName) {
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_port = htons(port);
    ::inet_pton(AF_INET, address.c_str(), &local.sin_addr);
    if (fd < 0 || ::setsockopt(fd, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) != 0 ||
        (!interfaceName.empty() && ::setsockopt(fd, SOL_SOCKET, SO_BINDTODEVICE, interfaceName.c_str(),
                                                static_cast<socklen_t>(interfaceName.size() + 1)) != 0) ||
        ::bind(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0)
        throw std::runtime_error("scripted camera at " + address + ": " + std::strerror(errno));
    return fd;
}

} // namespace

Bytes discoveryPayload(const ScriptedIdentity& identity) {
    Bytes bytes(248, 0);
    put32(bytes, 0x00, 0x00020000);
    put32(bytes, 0x04, 0x80000000);
    put32(bytes, 0x08, static_cast<std::uint32_t>(identity.mac >> 32));
    put32(bytes, 0x0C, static_cast<std::uint32_t>(identity.mac));
    put32(bytes, 0x10, identity.ipOptions);
    put32(bytes, 0x14, identity.ipCurrent);
    putAddress(bytes, 0x24, identity.ip);
    putAddress(bytes, 0x34, identity.mask);
    putAddress(bytes, 0x44, identity.gateway);
    put(bytes, 0x48, identity.manufacturer, 32);
    put(bytes, 0x68, identity.model, 32);
    put(bytes, 0x88, identity.version, 32);
    put(bytes, 0xA8, identity.info, 48);
    put(bytes, 0xD8, identity.serial, 16);
    put(bytes, 0xE8, identity.userName, 16);
    return bytes;
}

Bytes acknowledge(std::uint16_t status, std::uint16_t code, const Bytes& payload, std::uint16_t id) {
    Bytes bytes;
    for (const std::uint16_t word : {status, code, static_cast<std::uint16_t>(payload.size()), id}) {
        bytes.push_back(static_cast<std::uint8_t>(word >> 8));
        bytes.push_back(static_cast<std::uint8_t>(word));
    }
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

std::uint16_t word16(const Bytes& bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(bytes.at(offset) << 8 | bytes.at(offset + 1));
}

std::uint32_t word32(const Bytes& bytes, std::size_t offset) {
    return static_cast<std::uint32_t>(word16(bytes, offset)) << 16 | word16(bytes, offset + 2);
}

void append32(Bytes& bytes, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

ScriptedCamera::ScriptedCamera(const std::string& address, std::uint16_t port, Script script,
                               const std::string& interfaceName)
    : fd_(udpSocket(address, port, interfaceName))
    , foreignFd_(udpSocket(address, 0, interfaceName))
    , stopFd_(::eventfd(0, EFD_CLOEXEC))
    , script_(std::move(script)) {
    sockaddr_in local{};
    socklen_t size = sizeof local;
    ::getsockname(fd_, reinterpret_cast<sockaddr*>(&local), &size);
    port_ = ntohs(local.sin_port);
    thread_ = std::thread([this] { serve(); });
}

ScriptedCamera::~ScriptedCamera() {
    const std::uint64_t one = 1;
    if (::write(stopFd_, &one, sizeof one) != sizeof one)
        std::terminate();
    thread_.join();
    for (const int fd : {fd_, foreignFd_, stopFd_})
        ::close(fd);
}

unsigned ScriptedCamera::received(std::uint16_t command) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = perCommand_.find(command);
    return found == perCommand_.end() ? 0 : found->second;
}

void ScriptedCamera::serve() {
    for (;;) {
        pollfd watched[2] = {{fd_, POLLIN, 0}, {stopFd_, POLLIN, 0}};
        ::poll(watched, 2, -1);
        if (watched[1].revents != 0)
            return;
        Bytes request(2048);
        sockaddr_in peer{};
        socklen_t size = sizeof peer;
        const ssize_t length =
            ::recvfrom(fd_, request.data(), request.size(), 0, reinterpret_cast<sockaddr*>(&peer), &size);
        if (length < 8)
            continue;
        request.resize(static_cast<std::size_t>(length));
        ++received_;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            ++perCommand_[word16(request, 2)];
        }
        if (broadcast_)
            peer.sin_addr.s_addr = INADDR_BROADCAST;
        bool first = true;
        for (const Bytes& answer : script_(request)) {
            if (!first && pauseMs_ > 0 && ::poll(&watched[1], 1, static_cast<int>(pauseMs_)) != 0)
                return;
            first = false;
            ::sendto(foreign_ ? foreignFd_ : fd_, answer.data(), answer.size(), 0,
                     reinterpret_cast<const sockaddr*>(&peer), size);
        }
    }
}

ScriptedCamera::Script ScriptedCamera::obedient(const ScriptedIdentity& identity,
                                                std::map<std::uint32_t, std::uint32_t> registers,
                                                std::map<std::uint32_t, Bytes> memory) {
    return [=](const Bytes& request) -> std::vector<Bytes> {
        const std::uint16_t code = word16(request, 2);
        const std::uint16_t id = word16(request, 6);
        if (code == 0x0002)
            return {acknowledge(0, 0x0003, discoveryPayload(identity), id)};
        if (code == 0x0080) {
            const auto found = registers.find(word32(request, 8));
            if (found == registers.end())
                return {acknowledge(0x8003, 0x0081, {}, id)};
            Bytes value;
            append32(value, found->second);
            return {acknowledge(0, 0x0081, value, id)};
        }
        if (code == 0x0084) {
            const std::uint32_t address = word32(request, 8);
            const std::size_t count = word16(request, 14);
            for (const auto& [start, block] : memory) {
                if (address < start || address + count > start + block.size())
                    continue;
                Bytes data;
                append32(data, address);
                const auto begin = block.begin() + (address - start);
                data.insert(data.end(), begin, begin + static_cast<std::ptrdiff_t>(count));
                return {acknowledge(0, 0x0085, data, id)};
            }
            return {acknowledge(0x8003, 0x0085, {}, id)};
        }
        return {acknowledge(0x8001, static_cast<std::uint16_t>(code + 1), {}, id)};
    };
}

} // namespace kolt::test
