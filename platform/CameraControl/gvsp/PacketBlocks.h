// The blocks of a packet ring: memory that is shared with the kernel, which fills one block after another in
// a circle (TPACKET_V3) and gives each away when it is full or has waited for a moment. A block is given back
// when everything in it that the reader kept was released; in any order, but while the next one in the circle
// is not free, packets are lost.
#ifndef KOLT_CAMERA_CONTROL_PACKET_BLOCKS_H
#define KOLT_CAMERA_CONTROL_PACKET_BLOCKS_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kolt::cc {

class PacketBlocks {
public:
    // Of `blockBytes` each, one behind another; the kernel has not yet filled any. The memory stays the
    // caller's.
    PacketBlocks(std::uint8_t* memory, std::size_t blockBytes, std::uint32_t count)
        : memory_(memory), blockBytes_(blockBytes), kept_(count) {}

    // Reads the next filled block: calls take(payload, length, block) for each datagram, in the order of
    // their arrival; true: the bytes are kept until they are released. False when no block is filled. One
    // thread.
    template<class Take>
    bool read(Take&& take) {
        const std::uint32_t packets = begin();
        if (packets == kNoBlock) {
            return false;
        }
        std::uint32_t kept = 0;
        Datagram datagram{};
        for (std::uint32_t index = 0; index < packets; ++index) {
            nextDatagram(datagram);
            if (datagram.payload != nullptr &&
                take(datagram.payload, datagram.length, static_cast<std::uint16_t>(next_))) {
                ++kept;
            }
        }
        end(kept);
        return true;
    }

    // Gives `count` kept datagrams of a block back. Any thread.
    void release(std::uint16_t block, std::uint32_t count);

    // Blocks that are not the kernel's, and all.
    std::uint32_t held() const { return held_.load(std::memory_order_relaxed); }
    std::uint32_t count() const { return static_cast<std::uint32_t>(kept_.size()); }

private:
    static constexpr std::uint32_t kNoBlock = ~std::uint32_t{0};
    struct Datagram {
        const std::uint8_t* payload; // null: not a whole UDP datagram
        std::size_t length;
    };

    std::uint8_t* block(std::uint32_t index) const { return memory_ + index * blockBytes_; }
    std::uint32_t begin();
    void nextDatagram(Datagram& datagram);
    void end(std::uint32_t kept);
    void giveBack(std::uint32_t index);

    std::uint8_t* memory_ = nullptr;
    std::size_t blockBytes_ = 0;
    std::uint32_t next_ = 0;   // to be read
    std::uint64_t number_ = 1; // the least it can have, as the kernel counts those it fills
    std::uint32_t at_ = 0;     // in it, of the next datagram
    std::vector<std::atomic<std::uint32_t>> kept_; // of each block, datagrams that were not released
    std::atomic<std::uint32_t> held_{0};
};

} // namespace kolt::cc

#endif
