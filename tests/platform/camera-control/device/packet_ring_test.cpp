// The ring that the kernel fills, on the loopback of a network namespace of its own. Wants root.
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <cerrno>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Waiting.h"
#include "gvsp/PacketRing.h"
#include "support/NetworkNamespace.h"

namespace kolt::cc {
namespace {

using Bytes = std::vector<std::uint8_t>;

class Sender {
public:
    Sender(const char* from, const char* to, std::uint16_t port) : fd_(socket(AF_INET, SOCK_DGRAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = inet_addr(from);
        bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        address.sin_addr.s_addr = inet_addr(to);
        address.sin_port = htons(port);
        connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    }
    ~Sender() { close(fd_); }
    Sender(const Sender&) = delete;
    Sender& operator=(const Sender&) = delete;
    // A refusal by ICMP of one before makes the next fail: nobody listens but the ring.
    void send(const Bytes& bytes) const {
        while (::send(fd_, bytes.data(), bytes.size(), 0) < 0 && errno == ECONNREFUSED) {
        }
    }

private:
    int fd_;
};

struct Taken {
    const std::uint8_t* bytes;
    std::size_t length;
    std::uint16_t block;
};

class Ring : public testing::Test {
protected:
    static constexpr std::uint32_t kCamera = 0x7F000105; // 127.0.1.5
    static constexpr std::uint32_t kHost = 0x7F000001;
    static constexpr std::uint16_t kPort = 40000;
    static constexpr std::size_t kBlock = std::size_t{2} << 20;

    void SetUp() override {
        ring = PacketRing::open({kCamera, kHost, kPort}, {kBlock, 4});
        ASSERT_TRUE(ring);
    }
    // Reads until that many came, and keeps them.
    bool read(std::size_t count) {
        return test::eventually([&] {
            while (ring->readBlock([&](const std::uint8_t* bytes, std::size_t length, std::uint16_t block) {
                taken.push_back({bytes, length, block});
                return true;
            })) {
            }
            return taken.size() >= count;
        });
    }
    void releaseAll() {
        for (auto it = taken.rbegin(); it != taken.rend(); ++it) { // the newest first
            ring->release(it->block, 1);
        }
        taken.clear();
    }

    test::NetworkNamespace host;
    test::NamespaceScope inside{host};
    std::shared_ptr<PacketRing> ring;
    std::vector<Taken> taken;
};

TEST_F(Ring, BringsTheDatagramsOfItsFlowAndNoOthers) {
    Sender("127.0.1.6", "127.0.0.1", kPort).send(Bytes(10, 1));
    Sender("127.0.1.5", "127.0.0.1", kPort + 1).send(Bytes(10, 2));
    Sender("127.0.1.5", "127.0.0.2", kPort).send(Bytes(10, 3));
    const Sender camera("127.0.1.5", "127.0.0.1", kPort);
    host.ip("link set lo mtu 20000");
    camera.send(Bytes(30000, 4)); // comes in two pieces, and pieces are left out
    std::vector<Bytes> sent;
    for (const std::size_t length : {0U, 1U, 8U, 1464U, 9000U, 19000U}) {
        sent.push_back(Bytes(length, static_cast<std::uint8_t>(length % 251)));
        camera.send(sent.back());
    }
    ASSERT_TRUE(read(sent.size()));
    ASSERT_EQ(taken.size(), sent.size());
    for (std::size_t index = 0; index < sent.size(); ++index) {
        EXPECT_EQ(Bytes(taken[index].bytes, taken[index].bytes + taken[index].length), sent[index]) << index;
    }
    EXPECT_GE(ring->heldBlocks(), 1U);
    releaseAll();
    EXPECT_EQ(ring->heldBlocks(), 0U);
}

TEST_F(Ring, AnEdgeTellsOfEachBlockAlsoWhileOthersAreHeld) {
    const int epoll = epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{};
    event.events = EPOLLIN | EPOLLET;
    ASSERT_EQ(epoll_ctl(epoll, EPOLL_CTL_ADD, ring->descriptor(), &event), 0);
    const Sender camera("127.0.1.5", "127.0.0.1", kPort);
    for (std::size_t round = 1; round <= 4; ++round) {
        camera.send(Bytes(100, 1));
        EXPECT_EQ(epoll_wait(epoll, &event, 1, 10000), 1) << round;
        EXPECT_TRUE(read(round));
        EXPECT_EQ(ring->heldBlocks(), round);
        while (epoll_wait(epoll, &event, 1, 0) > 0) { // what the reading has overtaken
        }
    }
    EXPECT_EQ(epoll_wait(epoll, &event, 1, 20), 0) << "and not because blocks are held";
    close(epoll);
    releaseAll();
}

TEST_F(Ring, WhatDoesNotFitIsLostAndAfterwardsAllIsAsBefore) {
    const Sender camera("127.0.1.5", "127.0.0.1", kPort);
    const std::size_t all = ring->blocks() * kBlock / 9000 * 2;
    for (std::size_t index = 0; index < all; ++index) {
        camera.send(Bytes(9000, static_cast<std::uint8_t>(index)));
    }
    ASSERT_TRUE(test::eventually([&] {
        read(taken.size());
        return ring->heldBlocks() == ring->blocks();
    }));
    EXPECT_LT(taken.size(), all);
    for (std::size_t index = 0; index < taken.size(); ++index) {
        ASSERT_EQ(taken[index].length, 9000U);
        ASSERT_EQ(taken[index].bytes[8999], static_cast<std::uint8_t>(index)) << "the oldest stay";
    }
    releaseAll();
    EXPECT_TRUE(test::eventually([&] {
        camera.send(Bytes(50, 0xEE));
        read(taken.size());
        return !taken.empty() && taken.back().length == 50;
    }));
    releaseAll();
}

TEST_F(Ring, IsGivenBackByOtherThreadsWhileItIsRead) {
    const Sender camera("127.0.1.5", "127.0.0.1", kPort);
    constexpr std::size_t kPackets = 20000;
    std::size_t came = 0;
    std::vector<std::thread> threads;
    EXPECT_TRUE(test::eventually([&] {
        for (int burst = 0; burst < 200; ++burst) { // some are lost while those who give back are slow
            camera.send(Bytes(1400, 5));
        }
        std::vector<Taken> now;
        while (ring->readBlock([&](const std::uint8_t* bytes, std::size_t length, std::uint16_t block) {
            now.push_back({bytes, length, block});
            return now.size() % 3 != 0;
        })) {
        }
        came += now.size();
        threads.emplace_back([this, kept = std::move(now)] {
            for (std::size_t index = 0; index < kept.size(); ++index) {
                if ((index + 1) % 3 != 0) {
                    ring->release(kept[index].block, 1);
                }
            }
        });
        return came >= kPackets;
    })) << came;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(ring->heldBlocks(), 0U);
}

} // namespace
} // namespace kolt::cc
