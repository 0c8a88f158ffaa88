// Frames, through the exported calls against a virtual camera.
#include <atomic>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "StreamRig.h"

namespace kolt::test {
namespace {

constexpr std::uint32_t kMono8 = 0x01080001;

class Stream : public StreamRig {};

INSTANTIATE_TEST_SUITE_P(Roads, Stream, testing::Values(Road::plainSocket, Road::packetSocket), roadName);

TEST_P(Stream, BringsTheCamerasFramesInOrderWithAllThatIsKnownOfThem) {
    limitFrames(20);
    const auto before = std::chrono::system_clock::now();
    start();
    const std::vector<Fetched> frames = fetchAll(20);
    const auto after = std::chrono::system_clock::now();
    ASSERT_EQ(frames.size(), 20U);
    const auto nanoseconds = [](std::chrono::system_clock::time_point at) {
        return static_cast<std::uint64_t>(
            std::chrono::duration_cast<std::chrono::nanoseconds>(at.time_since_epoch()).count());
    };
    std::uint64_t lastHost = nanoseconds(before);
    std::uint64_t lastDevice = 0;
    for (std::size_t index = 0; index < frames.size(); ++index) {
        const _OV_CC_FRAME_OUT_INFO_& info = frames[index].info;
        EXPECT_EQ(info.blockId, index + 1);
        EXPECT_EQ(numberIn(frames[index]), index + 1) << "the picture itself";
        EXPECT_EQ(info.width, kWidth);
        EXPECT_EQ(info.height, kHeight);
        EXPECT_EQ(info.pixelFormat, kMono8);
        EXPECT_EQ(info.offsetX, 0);
        EXPECT_EQ(info.offsetY, 0);
        EXPECT_EQ(info.payloadType, 1U);
        EXPECT_EQ(info.frameLength, kWidth * kHeight);
        EXPECT_EQ(info.frameState, 0U);
        EXPECT_EQ(info.lostPackets, 0U);
        EXPECT_GE(info.hostTimestamp, lastHost);
        EXPECT_GT(info.deviceTimestamp, lastDevice);
        lastHost = info.hostTimestamp;
        lastDevice = info.deviceTimestamp;
    }
    EXPECT_LE(lastHost, nanoseconds(after));
    EXPECT_TRUE(eventually([&] { return !camera_.IsStreaming(); }));
    const vcam::Counters counters = camera_.GetCounters();
    const OVX_CC_STATISTICS statistics = handle_->statistics();
    EXPECT_EQ(statistics.completeFrames, 20U);
    EXPECT_EQ(statistics.deliveredFrames, 20U);
    EXPECT_EQ(statistics.receivedPackets, counters.packetsSent);
    EXPECT_EQ(statistics.lostPackets + statistics.incompleteFrames + statistics.vanishedFrames +
                  statistics.unbufferedFrames + statistics.unfitFrames,
              0U);
    EXPECT_EQ(handle_->matchInfo().receivedBytes, static_cast<std::int64_t>(statistics.receivedBytes));
    EXPECT_GT(statistics.receivedBytes, 20U * kWidth * kHeight);
}

TEST_P(Stream, CountsWhatNobodyFetched) {
    limitFrames(5);
    start();
    ASSERT_TRUE(eventually([&] { return handle_->statistics().completeFrames == 5; })) << story();
    EXPECT_EQ(fetchAll(2).size(), 2U);
    EXPECT_EQ(handle_->statistics().unfetchedFrames, 0U);
    stop();
    const OVX_CC_STATISTICS statistics = handle_->statistics();
    EXPECT_EQ(statistics.completeFrames, 5U);
    EXPECT_EQ(statistics.deliveredFrames, 2U);
    EXPECT_EQ(statistics.unfetchedFrames, 3U);
}

TEST_P(Stream, TellsTheRegionOfInterest) {
    limitFrames(2);
    GenApi_3_0::CIntegerPtr(map_._GetNode("Width"))->SetValue(160);
    GenApi_3_0::CIntegerPtr(map_._GetNode("Height"))->SetValue(120);
    GenApi_3_0::CIntegerPtr(map_._GetNode("OffsetX"))->SetValue(64);
    GenApi_3_0::CIntegerPtr(map_._GetNode("OffsetY"))->SetValue(32);
    start();
    const Fetched frame = fetch(*handle_);
    ASSERT_EQ(frame.status, OV_STATUS_OK);
    EXPECT_EQ(frame.info.width, 160);
    EXPECT_EQ(frame.info.height, 120);
    EXPECT_EQ(frame.info.offsetX, 64);
    EXPECT_EQ(frame.info.offsetY, 32);
    EXPECT_EQ(frame.info.frameLength, 160U * 120U);
}

TEST_P(Stream, ChunkDataComesBehindThePicture) {
    limitFrames(3);
    GenApi_3_0::CBooleanPtr(map_._GetNode("ChunkModeActive"))->SetValue(true);
    const std::int64_t payload = GenApi_3_0::CIntegerPtr(map_._GetNode("PayloadSize"))->GetValue();
    ASSERT_GT(payload, static_cast<std::int64_t>(kWidth * kHeight));
    start();
    for (std::uint32_t index = 1; index <= 3; ++index) {
        const Fetched frame = fetch(*handle_);
        ASSERT_EQ(frame.status, OV_STATUS_OK);
        EXPECT_EQ(frame.info.frameState, 0U);
        EXPECT_EQ(frame.info.frameLength, payload);
        EXPECT_EQ(frame.info.width, kWidth);
        EXPECT_EQ(frame.info.height, kHeight);
        EXPECT_EQ(numberIn(frame), index);
    }
}

TEST_P(Stream, WaitsAsLongAsItIsToldAndNotLonger) {
    setFaults([](vcam::Faults& faults) { faults.streamSilent = true; });
    start();
    for (const std::uint32_t timeout : {0U, 1U, 20U, 100U, 400U}) {
        // Never early, and in time at least once: a busy machine may hold this thread up.
        double took = 0;
        EXPECT_TRUE(eventually([&] {
            const auto begun = Clock::now();
            EXPECT_EQ(fetch(*handle_, timeout).status, OV_STATUS_NO_DATA);
            took = millisecondsSince(begun);
            EXPECT_GE(took, timeout);
            return took < timeout + 5;
        })) << took;
    }
}

TEST_P(Stream, AFrameThatIsThereComesWithoutWaiting) {
    limitFrames(1);
    start();
    EXPECT_TRUE(eventually([&] { return handle_->statistics().completeFrames == 1; }));
    EXPECT_EQ(fetch(*handle_, 0).status, OV_STATUS_OK);
    EXPECT_EQ(fetch(*handle_, 0).status, OV_STATUS_NO_DATA);
}

TEST_P(Stream, NullBuffersAreRefused) {
    start();
    _OV_CC_FRAME_OUT_INFO_ info{};
    std::uint8_t byte = 0;
    EXPECT_EQ(OV_CC_GetOneFrameTimeout(*handle_, nullptr, 100, &info, 0), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OV_CC_GetOneFrameTimeout(*handle_, &byte, 1, nullptr, 0), OV_STATUS_INVALID_PARAMETER);
    _OV_MATCH_INFO_NET_DETECT_ detect{};
    const auto query = [&](std::uint32_t type, void* info_, std::uint32_t size) {
        _OV_ALL_MATCH_INFO_ record{type, 0, info_, size, 0};
        return OV_CC_GetAllMatchInfo(*handle_, &record);
    };
    EXPECT_EQ(query(1, &detect, 40), OV_STATUS_OK);
    EXPECT_EQ(query(1, nullptr, 40), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(query(1, &detect, 39), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(query(1, &detect, 41), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(query(2, &detect, 40), OV_STATUS_NOT_SUPPORTED);
    EXPECT_EQ(OV_CC_GetAllMatchInfo(*handle_, nullptr), OV_STATUS_INVALID_PARAMETER);
    OVX_CC_STATISTICS statistics{};
    EXPECT_EQ(OVX_CC_GetStatistics(*handle_, nullptr), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OVX_CC_GetStatistics(*handle_, &statistics), OV_STATUS_INVALID_PARAMETER) << "size 0";
    statistics.size = 8;
    statistics.receivedBytes = 12345;
    EXPECT_EQ(OVX_CC_GetStatistics(*handle_, &statistics), OV_STATUS_OK);
    EXPECT_EQ(statistics.receivedBytes, 12345U) << "an older caller's record is not written beyond";
    EXPECT_EQ(OVX_CC_SetOption(*handle_, 99, 1), OV_STATUS_NOT_SUPPORTED);
    EXPECT_EQ(OVX_CC_SetOption(*handle_, OVX_OPTION_PACKET_RESEND, 2), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OV_CC_SetImageNodeNum(*handle_, 0), OV_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(OV_CC_SetImageNodeNum(*handle_, 100000), OV_STATUS_INVALID_PARAMETER);
}

TEST_P(Stream, AFrameThatTheCallersBufferCantHoldIsDroppedAndCounted) {
    limitFrames(3);
    start();
    const Fetched tooLarge = fetch(*handle_, 5000, kWidth * kHeight - 1);
    EXPECT_EQ(tooLarge.status, OV_STATUS_BUFFER_FULL);
    EXPECT_EQ(tooLarge.info.frameLength, kWidth * kHeight) << "what it would have taken";
    const Fetched fits = fetch(*handle_, 5000, kWidth * kHeight);
    EXPECT_EQ(fits.status, OV_STATUS_OK);
    EXPECT_EQ(fits.info.blockId, 2U);
    std::vector<std::uint8_t> guarded(kWidth * kHeight + 16, 0xA5);
    _OV_CC_FRAME_OUT_INFO_ info{};
    EXPECT_EQ(OV_CC_GetOneFrameTimeout(*handle_, guarded.data(), 0, &info, 5000), OV_STATUS_BUFFER_FULL);
    EXPECT_EQ(guarded, std::vector<std::uint8_t>(kWidth * kHeight + 16, 0xA5)) << "untouched";
    EXPECT_EQ(handle_->statistics().tooLargeFrames, 2U);
    EXPECT_EQ(handle_->matchInfo().errorCount, 2U);
}

TEST_P(Stream, StartsAndStopsAnyNumberOfTimesAndLeavesNoThread) {
    // What lives as long as the open camera may come up only now, after the opening has returned.
    start();
    EXPECT_EQ(fetch(*handle_).status, OV_STATUS_OK);
    stop();
    const std::size_t threads = threadCount();
    const std::size_t descriptors = descriptorCount();
    for (int round = 0; round < 12; ++round) {
        start();
        EXPECT_EQ(OV_CC_StartGrabbing(*handle_), OV_STATUS_CALL_ORDER);
        const Fetched frame = fetch(*handle_);
        EXPECT_EQ(frame.status, OV_STATUS_OK);
        EXPECT_EQ(frame.info.blockId, 1U) << "counts begin anew";
        stop();
        EXPECT_TRUE(eventually([&] { return !camera_.IsStreaming(); }));
        EXPECT_EQ(OV_CC_StopGrabbing(*handle_), OV_STATUS_CALL_ORDER);
        EXPECT_EQ(fetch(*handle_, 1000).status, OV_STATUS_CALL_ORDER) << "at once";
        // A thread leaves /proc a moment after it was joined.
        EXPECT_TRUE(eventually([&] { return threadCount() == threads; })) << threadCount();
        EXPECT_EQ(descriptorCount(), descriptors) << "in round " << round;
        EXPECT_GE(handle_->statistics().completeFrames, 1U) << "the numbers stay after the stop";
    }
}

TEST_P(Stream, StoppingEndsAWaitOnAnotherThread) {
    setFaults([](vcam::Faults& faults) { faults.streamSilent = true; });
    for (const bool close : {false, true}) {
        start();
        std::atomic<bool> waiting{false};
        std::uint32_t status = 0;
        double took = 0;
        std::thread grabber([&] {
            const auto begun = Clock::now();
            waiting = true;
            status = fetch(*handle_, 60000).status;
            took = millisecondsSince(begun);
        });
        ASSERT_TRUE(eventually([&] { return waiting.load(); }));
        std::this_thread::sleep_for(milliseconds(20)); // into the wait, most likely
        EXPECT_EQ(close ? OV_CC_CloseDevice(*handle_) : OV_CC_StopGrabbing(*handle_), OV_STATUS_OK);
        grabber.join();
        EXPECT_EQ(status, OV_STATUS_CALL_ORDER);
        EXPECT_LT(took, 10000);
    }
}

TEST_P(Stream, BuffersAreAsManyAsAskedForAndASlowCallerLosesCountedFrames) {
    for (const std::uint32_t buffers : {1U, 3U}) {
        ASSERT_EQ(OV_CC_SetImageNodeNum(*handle_, buffers), OV_STATUS_OK);
        start();
        ASSERT_TRUE(eventually([&] { return handle_->statistics().unbufferedFrames >= 3; })) << buffers;
        const OVX_CC_STATISTICS full = handle_->statistics();
        EXPECT_GE(full.completeFrames, buffers);
        EXPECT_EQ(full.bufferSize, kWidth * kHeight);
        EXPECT_EQ(full.lostPackets, 0U) << "they came, but there was no room";
        EXPECT_GE(handle_->matchInfo().lostFrames, 3U);
        // The oldest are kept, and the stream goes on with the newest.
        for (std::uint64_t id = 1; id <= full.completeFrames; ++id) {
            const Fetched frame = fetch(*handle_);
            ASSERT_EQ(frame.status, OV_STATUS_OK);
            EXPECT_EQ(frame.info.blockId, id);
        }
        std::uint64_t last = full.completeFrames;
        EXPECT_TRUE(eventually([&] {
            const Fetched frame = fetch(*handle_);
            const bool gap = frame.info.blockId > last + 1;
            last = frame.info.blockId;
            return frame.status == OV_STATUS_OK && gap;
        }));
        stop();
    }
}

// Those of the process that are of the family.
std::size_t socketsOf(int family) {
    std::size_t count = 0;
    for (int fd = 0; fd < 1024; ++fd) {
        int domain = 0;
        socklen_t length = sizeof domain;
        count += getsockopt(fd, SOL_SOCKET, SO_DOMAIN, &domain, &length) == 0 && domain == family ? 1 : 0;
    }
    return count;
}

TEST_P(Stream, APacketSocketIsThereWhereItIsWantedAndGoesWithTheStream) {
    start();
    EXPECT_EQ(fetch(*handle_).status, OV_STATUS_OK);
    EXPECT_EQ(socketsOf(AF_PACKET), isPacketSocket() ? 1U : 0U);
    stop();
    EXPECT_EQ(socketsOf(AF_PACKET), 0U);
}

// Frames wait where they were received until that place is needed; from then on in memory of their own.
// Nothing of them changes.
TEST_P(Stream, FramesThatWaitForTheirCallerStayWhatTheyAre) {
    ASSERT_EQ(OV_CC_SetImageNodeNum(*handle_, 100), OV_STATUS_OK);
    limitFrames(100);
    start();
    ASSERT_TRUE(eventually([&] { return handle_->statistics().completeFrames == 100; })) << story();
    for (std::uint32_t index = 1; index <= 100; ++index) {
        const Fetched frame = fetch(*handle_, 0);
        ASSERT_EQ(frame.status, OV_STATUS_OK);
        EXPECT_EQ(frame.info.blockId, index);
        EXPECT_EQ(numberIn(frame), index);
    }
    EXPECT_EQ(handle_->statistics().unbufferedFrames, 0U);
}

// One stream packet, written from the published layout: status 0, block id, format and packet id, then the
// rest.
std::vector<std::uint8_t> streamPacket(std::uint16_t blockId, std::uint8_t format, std::uint32_t packetId,
                                       std::size_t length, std::uint8_t fill) {
    std::vector<std::uint8_t> packet(8 + length, fill);
    packet[0] = packet[1] = 0;
    packet[2] = static_cast<std::uint8_t>(blockId >> 8);
    packet[3] = static_cast<std::uint8_t>(blockId);
    packet[4] = format;
    packet[5] = static_cast<std::uint8_t>(packetId >> 16);
    packet[6] = static_cast<std::uint8_t>(packetId >> 8);
    packet[7] = static_cast<std::uint8_t>(packetId);
    return packet;
}

// Whatever arrives at the stream's port: it may cost frames, but nothing crashes, hangs, or is written beside
// a buffer, and afterwards all is as before.
TEST_P(Stream, RubbishAtItsPortHurtsNobody) {
    for (const bool resend : {true, false}) {
        ASSERT_EQ(OVX_CC_SetOption(*handle_, OVX_OPTION_PACKET_RESEND, resend ? 1 : 0), OV_STATUS_OK);
        start();
        ASSERT_EQ(fetch(*handle_).status, OV_STATUS_OK);
        std::uint32_t port = 0;
        ASSERT_TRUE(camera_.ReadRegister(0x0D00, port));
        sockaddr_in there{};
        there.sin_family = AF_INET;
        there.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        there.sin_port = htons(static_cast<std::uint16_t>(port));
        const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        // From the camera's address: a packet socket takes nothing from elsewhere.
        sockaddr_in here{};
        here.sin_family = AF_INET;
        here.sin_addr.s_addr = inet_addr(camera_.Address().c_str());
        ASSERT_EQ(bind(socket, reinterpret_cast<const sockaddr*>(&here), sizeof here), 0);
        const auto send = [&](const std::vector<std::uint8_t>& packet) {
            sendto(socket, packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&there),
                   sizeof there);
        };
        std::mt19937 random(7);
        for (int round = 0; round < 40; ++round) {
            const Fetched frame = fetch(*handle_, 200);
            const auto next = static_cast<std::uint16_t>(frame.info.blockId + 1);
            for (const std::uint8_t format : {1, 2, 3, 4, 5, 6, 7, 0x0F, 0x81, 0x83, 0xFF}) {
                for (const std::uint32_t packetId : {0U, 1U, 2U, 60U, 0xFFFFU, 0xFFFFFFU}) {
                    for (const std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{36},
                                                     std::size_t{1464}, std::size_t{9000}}) {
                        if (random() % 8 == 0) {
                            send(streamPacket(next, format, packetId, length, 0xFF));
                        }
                    }
                }
            }
            std::vector<std::uint8_t> noise(random() % 100);
            for (std::uint8_t& byte : noise) {
                byte = static_cast<std::uint8_t>(random());
            }
            send(noise);
        }
        close(socket);
        // From some frame on they come whole again, one after another.
        std::uint64_t last = 0;
        int inOrder = 0;
        EXPECT_TRUE(eventually([&] {
            const Fetched frame = fetch(*handle_, 1000);
            const bool good = frame.status == OV_STATUS_OK && frame.info.frameState == 0 &&
                              frame.info.frameLength == kWidth * kHeight && frame.info.width == kWidth &&
                              frame.info.blockId == last + 1;
            inOrder = good ? inOrder + 1 : 0;
            last = frame.info.blockId;
            return inOrder == 10;
        })) << story();
        stop();
    }
}

TEST_P(Stream, ManyThreadsFetchAndAskAtOnce) {
    start();
    std::atomic<bool> done{false};
    std::atomic<int> fetched{0};
    std::mutex mutex;
    std::set<std::uint64_t> ids;
    std::vector<std::thread> threads;
    for (int grabber = 0; grabber < 3; ++grabber) {
        threads.emplace_back([&] {
            while (!done) {
                const Fetched frame = fetch(*handle_, 50);
                if (frame.status == OV_STATUS_OK) {
                    const std::lock_guard<std::mutex> lock(mutex);
                    EXPECT_TRUE(ids.insert(frame.info.blockId).second) << "twice";
                    ++fetched;
                }
            }
        });
    }
    threads.emplace_back([&] {
        while (!done) {
            handle_->matchInfo();
            handle_->statistics();
        }
    });
    threads.emplace_back([&] {
        std::uint32_t length = 0;
        std::vector<std::uint8_t> name(32);
        while (!done) {
            OV_XML_GetGenICamXML(*handle_, nullptr, 0, &length);
            handle_->port().Read(name.data(), 0x48, 32);
            OV_CC_SetThrowAbnormalImage(*handle_, length & 1);
        }
    });
    EXPECT_TRUE(eventually([&] { return fetched >= 60; }));
    done = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
} // namespace kolt::test
