#include "gvsp/PacketBlocks.h"

#include <linux/if_packet.h>

#include "find/GvcpCodec.h"

namespace kolt::cc {

namespace {

// While a block is read, more than it can hold: datagrams of it may be released meanwhile.
constexpr std::uint32_t kReading = std::uint32_t{1} << 30;

constexpr std::size_t kIpHeader = 20;
constexpr std::size_t kUdpHeader = 8;

tpacket_block_desc* descriptorOf(std::uint8_t* block) {
    return reinterpret_cast<tpacket_block_desc*>(block);
}

} // namespace

std::uint32_t PacketBlocks::begin() {
    tpacket_hdr_v1& header = descriptorOf(block(next_))->hdr.bh1;
    // A block that is still held looks filled as well: the circle is full then. But its number is old.
    if ((__atomic_load_n(&header.block_status, __ATOMIC_ACQUIRE) & TP_STATUS_USER) == 0 ||
        header.seq_num < number_) {
        return kNoBlock;
    }
    number_ = header.seq_num + 1;
    kept_[next_].store(kReading, std::memory_order_relaxed);
    held_.fetch_add(1, std::memory_order_relaxed);
    at_ = header.offset_to_first_pkt;
    return header.num_pkts;
}

// The length that the kernel tells is believed; those in the packet's own headers are not.
void PacketBlocks::nextDatagram(Datagram& datagram) {
    const std::uint8_t* const packet = block(next_) + at_;
    const auto* const header = reinterpret_cast<const tpacket3_hdr*>(packet);
    const std::uint32_t step = header->tp_next_offset;
    // Another processor has just written these lines. Packets of a frame are alike, so the next but one is
    // likely to lie two steps on; a wrong guess costs nothing but the asking.
    for (std::size_t line = 0; line < 3; ++line) {
        __builtin_prefetch(packet + std::size_t{3} * step + 64 * line);
    }
    const std::uint8_t* const ip = packet + header->tp_net;
    const std::size_t captured = header->tp_snaplen;
    const std::size_t ipHeader = captured >= kIpHeader ? std::size_t{ip[0] & 0x0Fu} * 4 : kIpHeader;
    datagram.payload = nullptr;
    if (captured >= ipHeader + kUdpHeader && ipHeader >= kIpHeader) {
        const std::size_t udp = load16(ip + ipHeader + 4); // the UDP length: a short frame is padded
        if (udp >= kUdpHeader && ipHeader + udp <= captured) {
            datagram.payload = ip + ipHeader + kUdpHeader;
            datagram.length = udp - kUdpHeader;
        }
    }
    at_ += step;
}

void PacketBlocks::end(std::uint32_t kept) {
    const std::uint32_t index = next_;
    next_ = next_ + 1 == count() ? 0 : next_ + 1;
    if (kept_[index].fetch_add(kept - kReading, std::memory_order_acq_rel) + (kept - kReading) == 0) {
        giveBack(index);
    }
}

void PacketBlocks::release(std::uint16_t index, std::uint32_t count) {
    if (kept_[index].fetch_sub(count, std::memory_order_acq_rel) == count) {
        giveBack(index);
    }
}

// The last step must be the one that the kernel sees. It may have filled the block again at once, and tells
// so only by an edge: who reads then must find nothing else undone, or the block lies there until the next
// edge.
void PacketBlocks::giveBack(std::uint32_t index) {
    held_.fetch_sub(1, std::memory_order_relaxed);
    __atomic_store_n(&descriptorOf(block(index))->hdr.bh1.block_status, std::uint32_t{TP_STATUS_KERNEL},
                     __ATOMIC_RELEASE);
}

} // namespace kolt::cc
