// The blocks of a packet ring in memory of the test's own, which fills them as the kernel does.
#include <atomic>
#include <csignal>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <linux/if_packet.h>

#include "gvsp/PacketBlocks.h"

namespace kolt::cc {
namespace {

constexpr std::size_t kBlock = 4096;

class Circle {
public:
    explicit Circle(std::uint32_t count)
        : memory_(count * kBlock / sizeof(std::uint64_t)), count_(count), blocks(bytes(0), kBlock, count) {}

    // Gives the next block away with one datagram for each payload.
    void fill(const std::vector<std::string>& payloads) {
        std::uint8_t* const block = bytes(next_);
        std::uint32_t at = 48;
        auto* const header = reinterpret_cast<tpacket_block_desc*>(block);
        header->hdr.bh1.num_pkts = static_cast<std::uint32_t>(payloads.size());
        header->hdr.bh1.offset_to_first_pkt = at;
        header->hdr.bh1.seq_num = ++number_;
        for (const std::string& payload : payloads) {
            constexpr std::uint32_t kNet = 64;
            auto* const packet = reinterpret_cast<tpacket3_hdr*>(block + at);
            const auto udp = static_cast<std::uint32_t>(8 + payload.size());
            packet->tp_next_offset = (kNet + 20 + udp + 15) / 16 * 16;
            packet->tp_snaplen = 20 + udp;
            packet->tp_net = kNet;
            std::uint8_t* const ip = block + at + kNet;
            std::memset(ip, 0, 28);
            ip[0] = 0x45;
            ip[24] = static_cast<std::uint8_t>(udp >> 8);
            ip[25] = static_cast<std::uint8_t>(udp);
            std::memcpy(ip + 28, payload.data(), payload.size());
            at += packet->tp_next_offset;
        }
        __atomic_store_n(&header->hdr.bh1.block_status, std::uint32_t{TP_STATUS_USER}, __ATOMIC_RELEASE);
        next_ = (next_ + 1) % count_;
    }
    // The block to be filled next was given back.
    bool isFree() const {
        const auto* const header = reinterpret_cast<const tpacket_block_desc*>(bytes(next_));
        return __atomic_load_n(&header->hdr.bh1.block_status, __ATOMIC_ACQUIRE) == TP_STATUS_KERNEL;
    }
    // What the next filled block holds, all of it kept; nothing: there is none.
    std::vector<std::string> read() {
        std::vector<std::string> all;
        blocks.read([&](const std::uint8_t* payload, std::size_t length, std::uint16_t block) {
            all.emplace_back(reinterpret_cast<const char*>(payload), length);
            last = block;
            return true;
        });
        return all;
    }

private:
    std::uint8_t* bytes(std::uint32_t index) const {
        return reinterpret_cast<std::uint8_t*>(const_cast<std::uint64_t*>(memory_.data())) + index * kBlock;
    }
    std::vector<std::uint64_t> memory_;
    std::uint32_t count_;
    std::uint32_t next_ = 0;
    std::uint64_t number_ = 0;

public:
    PacketBlocks blocks;
    std::uint16_t last = 0; // that was read
};

using Texts = std::vector<std::string>;

TEST(PacketBlocks, AreReadOnceEachAndInOrder) {
    Circle circle(3);
    EXPECT_EQ(circle.read(), Texts{});
    for (int round = 0; round < 5; ++round) {
        circle.fill({"one", "two" + std::to_string(round)});
        circle.fill({"", "four"});
        EXPECT_EQ(circle.read(), (Texts{"one", "two" + std::to_string(round)}));
        circle.blocks.release(circle.last, 2);
        EXPECT_EQ(circle.read(), (Texts{"", "four"}));
        circle.blocks.release(circle.last, 1);
        EXPECT_EQ(circle.blocks.held(), 1U);
        circle.blocks.release(circle.last, 1);
        EXPECT_EQ(circle.read(), Texts{});
        EXPECT_EQ(circle.blocks.held(), 0U);
    }
}

TEST(PacketBlocks, AreNotReadAgainWhileTheCircleIsFull) {
    Circle circle(2);
    circle.fill({"a"});
    circle.fill({"b"});
    EXPECT_EQ(circle.read(), Texts{"a"});
    EXPECT_EQ(circle.read(), Texts{"b"});
    EXPECT_EQ(circle.read(), Texts{}) << "the first is still held";
    EXPECT_FALSE(circle.isFree());
    circle.blocks.release(1, 1);
    EXPECT_EQ(circle.read(), Texts{}) << "and stays the next, whatever else is free";
    circle.blocks.release(0, 1);
    ASSERT_TRUE(circle.isFree());
    EXPECT_EQ(circle.read(), Texts{});
    circle.fill({"c"});
    EXPECT_EQ(circle.read(), Texts{"c"});
}

// The kernel tells of a block once. Who reads then must get it, though the thread that gave it back be not a
// step further. Here the kernel fills it, and the reader reads, between two instructions of the giving back.
// Sanitizers are called between the instructions, and can't be entered again there.
#if defined(__x86_64__) && !defined(KOLT_SANITIZED)
Circle* stepped = nullptr;
Texts readBetweenSteps;

void afterEachInstruction(int /*signal*/) {
    if (stepped->isFree()) {
        stepped->fill({"again"});
        readBetweenSteps = stepped->read();
    }
}

// Below the 128 bytes under the stack pointer, which the compiler may have in use.
void setTrap() {
    asm volatile("lea -128(%%rsp), %%rsp\n pushfq\n orq $0x100, (%%rsp)\n popfq\n lea 128(%%rsp), %%rsp" ::
                     : "memory", "cc");
}

void clearTrap() {
    asm volatile("lea -128(%%rsp), %%rsp\n pushfq\n andq $~0x100, (%%rsp)\n popfq\n lea 128(%%rsp), %%rsp" ::
                     : "memory", "cc");
}

TEST(PacketBlocks, CanBeReadTheMomentTheyAreFilledAgain) {
    Circle circle(1);
    circle.fill({"first"});
    ASSERT_EQ(circle.read(), Texts{"first"});
    stepped = &circle;
    struct sigaction before {};
    struct sigaction trap {};
    trap.sa_handler = afterEachInstruction;
    ASSERT_EQ(sigaction(SIGTRAP, &trap, &before), 0);
    setTrap();
    circle.blocks.release(0, 1);
    clearTrap();
    ASSERT_EQ(sigaction(SIGTRAP, &before, nullptr), 0);
    EXPECT_EQ(readBetweenSteps, Texts{"again"});
    EXPECT_EQ(circle.blocks.held(), 1U);
}
#endif

TEST(PacketBlocks, AreGivenBackByAnotherThread) {
    constexpr int kRounds = 20000;
    Circle circle(1);
    std::atomic<int> toRelease{0};
    std::thread other([&] {
        for (int round = 1; round <= kRounds; ++round) {
            while (toRelease.load(std::memory_order_acquire) < round) {
                std::this_thread::yield();
            }
            circle.blocks.release(0, 1);
        }
    });
    int missed = 0;
    circle.fill({"0"});
    for (int round = 1; round <= kRounds; ++round) {
        while (circle.read().empty()) {
            ++missed;
        }
        toRelease.store(round, std::memory_order_release);
        // At once, as the kernel with packets at hand; but where there is one processor the other needs it.
        for (int looks = 1; !circle.isFree(); ++looks) {
            if (looks % 1000 == 0) {
                std::this_thread::yield();
            }
        }
        circle.fill({"x"});
    }
    other.join();
    EXPECT_EQ(missed, 0);
}

} // namespace
} // namespace kolt::cc
