#include "gvsp/PacketRing.h"

#include <algorithm>
#include <array>

#include <arpa/inet.h>
#include <linux/filter.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace kolt::cc {

namespace {

// Milliseconds after which the kernel gives a block away that isn't full, which is how long a frame's last
// packets may wait. Each block wakes the reader, and a wake-up costs as much as sorting hundreds of packets.
constexpr unsigned kBlockPatience = 5;

// The filter sees packets from their IP header on. Fragments are no whole datagrams and left out.
bool attachFilter(int fd, const PacketFlow& flow) {
    std::array<sock_filter, 13> code = {{
        BPF_STMT(BPF_LD | BPF_B | BPF_ABS, 9), // protocol
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, IPPROTO_UDP, 0, 10),
        BPF_STMT(BPF_LD | BPF_H | BPF_ABS, 6), // fragment
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, 0x3FFF, 8, 0),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 12), // source
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, flow.source, 0, 6),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 16), // destination
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, flow.destination, 0, 4),
        BPF_STMT(BPF_LDX | BPF_B | BPF_MSH, 0), // length of the IP header
        BPF_STMT(BPF_LD | BPF_H | BPF_IND, 2),  // destination port
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, flow.destinationPort, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, 0x40000),
        BPF_STMT(BPF_RET | BPF_K, 0),
    }};
    const sock_fprog program{static_cast<unsigned short>(code.size()), code.data()};
    return setsockopt(fd, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) == 0;
}

} // namespace

std::shared_ptr<PacketRing> PacketRing::open(const PacketFlow& flow, const Size& size) {
    // Of no protocol until all is set: so nothing comes in before the filter is there.
    const int fd = socket(AF_PACKET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) {
        return nullptr;
    }
    std::shared_ptr<PacketRing> ring(new PacketRing(fd, size.block));
    const int version = TPACKET_V3;
    if (setsockopt(fd, SOL_PACKET, PACKET_VERSION, &version, sizeof version) != 0 ||
        !attachFilter(fd, flow) || !ring->map(size.blocks)) {
        return nullptr;
    }
    // Of all interfaces: the filter knows the flow, and a camera on this host comes by loopback, whatever the
    // interface of its address is.
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_IP);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return nullptr;
    }
    return ring;
}

bool PacketRing::map(std::uint32_t wanted) {
    constexpr std::uint32_t kLeastBlocks = 4;
    constexpr unsigned kSlot = 2048; // of no meaning in this version, but it has to fit
    for (std::uint32_t count = wanted; count >= kLeastBlocks; count /= 2) {
        tpacket_req3 request{};
        request.tp_block_size = static_cast<unsigned>(blockBytes_);
        request.tp_block_nr = count;
        request.tp_frame_size = kSlot;
        request.tp_frame_nr = static_cast<unsigned>(blockBytes_ / kSlot * count);
        request.tp_retire_blk_tov = kBlockPatience;
        if (setsockopt(fd_, SOL_PACKET, PACKET_RX_RING, &request, sizeof request) != 0) {
            continue; // memory is short: a smaller one
        }
        void* const mapped = mmap(nullptr, blockBytes_ * count, PROT_READ | PROT_WRITE, MAP_SHARED, fd_, 0);
        if (mapped == MAP_FAILED) {
            return false;
        }
        memory_ = static_cast<std::uint8_t*>(mapped);
        blocks_.emplace(memory_, blockBytes_, count);
        return true;
    }
    return false;
}

PacketRing::~PacketRing() {
    if (memory_ != nullptr) {
        munmap(memory_, blockBytes_ * blocks_->count());
    }
    close(fd_);
}

} // namespace kolt::cc
