#include "PacketWatch.h"

#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <linux/filter.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Offsets from the IP header, which has no options here: UDP at 20, GVSP at 28 (block id at 2, packet type at
// 4).
constexpr uint32_t kBlockAt = 30;
constexpr uint32_t kTypeAt = 32;

bool Filter(int socket, uint32_t address) {
    sock_filter code[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 12), // source address
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, address, 0, 8),
        BPF_STMT(BPF_LD | BPF_B | BPF_ABS, 9),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, IPPROTO_UDP, 0, 6),
        BPF_STMT(BPF_LD | BPF_H | BPF_ABS, 20), // source port: answers of the control channel are none
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 3956, 4, 0),
        BPF_STMT(BPF_LD | BPF_B | BPF_ABS, kTypeAt),
        BPF_STMT(BPF_ALU | BPF_AND | BPF_K, 0x0F),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 2, 0, 1), // trailer
        BPF_STMT(BPF_RET | BPF_K, 64),
        BPF_STMT(BPF_RET | BPF_K, 0),
    };
    const sock_fprog program = {sizeof code / sizeof *code, code};
    return setsockopt(socket, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) == 0;
}

} // namespace

PacketWatch::PacketWatch(const std::string& address) : m_times(65536) {
    // Without a protocol nothing comes in before the filter stands.
    m_socket = socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (m_socket < 0)
        return;
    const int on = 1;
    setsockopt(m_socket, SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof on);
    sockaddr_ll loopback{};
    loopback.sll_family = AF_PACKET;
    loopback.sll_protocol = htons(ETH_P_IP);
    loopback.sll_ifindex = static_cast<int>(if_nametoindex("lo"));
    if (!Filter(m_socket, ntohl(inet_addr(address.c_str()))) ||
        bind(m_socket, reinterpret_cast<const sockaddr*>(&loopback), sizeof loopback) != 0) {
        close(m_socket);
        m_socket = -1;
        return;
    }
    m_end = eventfd(0, EFD_CLOEXEC);
    m_thread = std::thread([this] { Run(); });
}

PacketWatch::~PacketWatch() {
    if (m_socket < 0)
        return;
    eventfd_write(m_end, 1);
    m_thread.join();
    close(m_end);
    close(m_socket);
}

uint64_t PacketWatch::TimeOf(uint32_t block) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_times[block & 0xFFFF];
}

void PacketWatch::Run() {
    std::array<pollfd, 2> watched = {pollfd{m_end, POLLIN, 0}, pollfd{m_socket, POLLIN, 0}};
    while (poll(watched.data(), watched.size(), -1) >= 0 && watched[0].revents == 0) {
        std::array<uint8_t, 64> packet{};
        alignas(cmsghdr) std::array<char, 256> control{};
        sockaddr_ll from{};
        iovec part = {packet.data(), packet.size()};
        msghdr message{};
        message.msg_name = &from;
        message.msg_namelen = sizeof from;
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        if (recvmsg(m_socket, &message, MSG_DONTWAIT) < static_cast<ssize_t>(kTypeAt) ||
            from.sll_pkttype == PACKET_OUTGOING) // each packet passes loopback twice
            continue;
        const cmsghdr* header = CMSG_FIRSTHDR(&message);
        timespec time{};
        if (header && header->cmsg_type == SCM_TIMESTAMPNS)
            std::memcpy(&time, CMSG_DATA(header), sizeof time);
        const size_t block = static_cast<size_t>(packet[kBlockAt] << 8 | packet[kBlockAt + 1]);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_times[block] =
                static_cast<uint64_t>(time.tv_sec) * 1000000000 + static_cast<uint64_t>(time.tv_nsec);
        }
        ++m_count;
    }
}
