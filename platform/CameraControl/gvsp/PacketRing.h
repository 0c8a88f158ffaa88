// Datagrams of one flow as the network stack hands them to a packet socket, in memory shared with the kernel
// (TPACKET_V3): no system call and no copy for a packet.
#ifndef KOLT_CAMERA_CONTROL_PACKET_RING_H
#define KOLT_CAMERA_CONTROL_PACKET_RING_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "gvsp/PacketBlocks.h"

namespace kolt::cc {

// UDP over IPv4, addresses in host byte order.
struct PacketFlow {
    std::uint32_t source = 0;
    std::uint32_t destination = 0;
    std::uint16_t destinationPort = 0;
};

class PacketRing {
public:
    struct Size {
        std::size_t block = 0; // bytes; a power of two, of pages at least
        std::uint32_t blocks = 0;
    };
    // With fewer blocks where memory is short. Null where the process may not (CAP_NET_RAW), or there is no
    // memory at all. Takes some ten milliseconds.
    static std::shared_ptr<PacketRing> open(const PacketFlow& flow, const Size& size);
    ~PacketRing();
    PacketRing(const PacketRing&) = delete;
    PacketRing& operator=(const PacketRing&) = delete;

    // Tells by an edge, not by a level (EPOLLET), that there is a block to read.
    int descriptor() const { return fd_; }

    // As PacketBlocks::read.
    template<class Take>
    bool readBlock(Take&& take) {
        return blocks_->read(take);
    }

    // As PacketBlocks::release.
    void release(std::uint16_t block, std::uint32_t count) { blocks_->release(block, count); }

    // Blocks that are not the kernel's, and all.
    std::uint32_t heldBlocks() const { return blocks_->held(); }
    std::uint32_t blocks() const { return blocks_->count(); }

private:
    PacketRing(int fd, std::size_t blockBytes) : fd_(fd), blockBytes_(blockBytes) {}
    bool map(std::uint32_t wanted);

    const int fd_;
    const std::size_t blockBytes_;
    std::uint8_t* memory_ = nullptr;
    std::optional<PacketBlocks> blocks_; // once mapped
};

} // namespace kolt::cc

#endif
