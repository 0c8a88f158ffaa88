// Datagrams of one flow as the network stack hands them to a packet socket, in memory shared with the kernel
// (TPACKET_V3): no system call and no copy for a packet.
//
// The kernel fills blocks, one after another in a circle, and gives each away when it is full or has waited
// for a moment. A block is given back when everything in it that the reader kept was released; in any order,
// but while the next one in the circle is not free, packets are lost.
#ifndef KOLT_CAMERA_CONTROL_PACKET_RING_H
#define KOLT_CAMERA_CONTROL_PACKET_RING_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

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

    // Reads the next filled block: calls take(payload, length, block) for each datagram, in the order of
    // their arrival; true: the bytes are kept until they are released. False when no block is filled. One
    // thread.
    template<class Take>
    bool readBlock(Take&& take) {
        const std::uint32_t packets = beginBlock();
        if (packets == kNoBlock) {
            return false;
        }
        std::uint32_t kept = 0;
        Datagram datagram{};
        for (std::uint32_t index = 0; index < packets && nextDatagram(datagram); ++index) {
            if (datagram.payload != nullptr &&
                take(datagram.payload, datagram.length, static_cast<std::uint16_t>(next_))) {
                ++kept;
            }
        }
        endBlock(kept);
        return true;
    }

    // Gives `count` kept datagrams of a block back. Any thread.
    void release(std::uint16_t block, std::uint32_t count);

    // Blocks that are not the kernel's, and all.
    std::uint32_t heldBlocks() const { return held_.load(std::memory_order_relaxed); }
    std::uint32_t blocks() const { return blocks_; }

private:
    static constexpr std::uint32_t kNoBlock = ~std::uint32_t{0};
    struct Datagram {
        const std::uint8_t* payload; // null: not a whole UDP datagram
        std::size_t length;
    };

    PacketRing(int fd, std::size_t blockBytes) : fd_(fd), blockBytes_(blockBytes) {}
    bool map(std::uint32_t wanted);
    std::uint8_t* block(std::uint32_t index) const { return memory_ + index * blockBytes_; }
    std::uint32_t beginBlock();
    bool nextDatagram(Datagram& datagram);
    void endBlock(std::uint32_t kept);
    void giveBack(std::uint32_t index);

    const int fd_;
    const std::size_t blockBytes_;
    std::uint8_t* memory_ = nullptr;
    std::uint32_t blocks_ = 0;
    std::uint32_t next_ = 0;                       // to be read
    std::uint32_t at_ = 0;                         // in it, of the next datagram
    std::uint32_t following_ = 0;                  // datagrams behind that one
    std::vector<std::atomic<std::uint32_t>> kept_; // of each block, datagrams that were not released
    std::atomic<std::uint32_t> held_{0};
};

} // namespace kolt::cc

#endif
