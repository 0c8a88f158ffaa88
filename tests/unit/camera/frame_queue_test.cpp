#include "Camera/QFrameBufManager.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

class FrameQueue : public testing::Test {
protected:
    void TearDown() override { QFrameBufManager::ReleaseInstance(); }

    static void Add(QFrameBufManager& queue, uint8_t value, uint32_t length = 4) {
        const std::vector<uint8_t> frame(length, value);
        queue.AddOneFrameToList(frame.data(), length);
    }
    // First byte of the oldest frame, -1 for none.
    static int Take(QFrameBufManager& queue, uint32_t capacity = 4) {
        std::vector<uint8_t> buffer(capacity, 0xEE);
        return queue.GetOneFrame(buffer.data(), capacity) ? buffer[0] : -1;
    }
};

TEST_F(FrameQueue, FramesComeOutInOrder) {
    const auto queue = QFrameBufManager::Instance(3, 4);
    ASSERT_TRUE(queue);
    EXPECT_EQ(Take(*queue), -1);
    Add(*queue, 1);
    Add(*queue, 2);
    EXPECT_EQ(queue->GetWaitingCount(), 2u);
    EXPECT_EQ(Take(*queue), 1);
    EXPECT_EQ(Take(*queue), 2);
    EXPECT_EQ(Take(*queue), -1);
}

TEST_F(FrameQueue, TheNewestThreeSurviveASlowSaver) {
    const auto queue = QFrameBufManager::Instance(3, 4);
    for (uint8_t i = 1; i <= 10; ++i)
        Add(*queue, i);
    EXPECT_EQ(Take(*queue), 8);
    EXPECT_EQ(Take(*queue), 9);
    EXPECT_EQ(Take(*queue), 10);
    EXPECT_EQ(Take(*queue), -1);
    const auto counters = queue->GetCounters();
    EXPECT_EQ(counters.queued, 10u);
    EXPECT_EQ(counters.overwritten, 7u);
    EXPECT_EQ(counters.taken, 3u);
}

TEST_F(FrameQueue, ALargerFrameIsTakenInButRefusedOnTheWayOut) {
    const auto queue = QFrameBufManager::Instance(2, 4);
    Add(*queue, 1, 9);
    EXPECT_EQ(Take(*queue, 8), -1) << "larger than the saver's buffer";
    EXPECT_EQ(queue->GetCounters().refused, 1u);
    // The node is lost to the pool: one is left.
    Add(*queue, 2);
    Add(*queue, 3);
    EXPECT_EQ(Take(*queue), 3);
    EXPECT_EQ(queue->GetCounters().overwritten, 1u);
}

TEST_F(FrameQueue, AResizedNodeServesLargerFrames) {
    const auto queue = QFrameBufManager::Instance(1, 4);
    Add(*queue, 7, 100);
    EXPECT_EQ(Take(*queue, 100), 7);
    Add(*queue, 8, 100);
    EXPECT_EQ(Take(*queue, 100), 8);
}

TEST_F(FrameQueue, AnEmptyFrameIsRefused) {
    const auto queue = QFrameBufManager::Instance(1, 4);
    Add(*queue, 1, 0);
    EXPECT_EQ(Take(*queue), -1);
    EXPECT_EQ(queue->GetCounters().refused, 1u);
}

TEST_F(FrameQueue, TheRestOfTheBufferIsCleared) {
    const auto queue = QFrameBufManager::Instance(1, 4);
    Add(*queue, 5);
    std::vector<uint8_t> buffer(10, 0xEE);
    ASSERT_EQ(queue->GetOneFrame(buffer.data(), 10), 1);
    EXPECT_EQ(buffer, (std::vector<uint8_t>{5, 5, 5, 5, 0, 0, 0, 0, 0, 0}));
}

TEST_F(FrameQueue, TakingWithoutACopyGivesTheSame) {
    const auto queue = QFrameBufManager::Instance(2, 8);
    Add(*queue, 1, 8);
    Add(*queue, 2, 6);
    Add(*queue, 3, 12);
    auto buffer = std::make_unique<uint8_t[]>(8);
    // The first was overwritten by the third; the second is shorter than its node.
    ASSERT_EQ(queue->TakeOneFrame(buffer, 8), 1);
    EXPECT_EQ((std::vector<uint8_t>(buffer.get(), buffer.get() + 8)),
              (std::vector<uint8_t>{2, 2, 2, 2, 2, 2, 0, 0}));
    EXPECT_EQ(queue->TakeOneFrame(buffer, 8), 0) << "too large";
    EXPECT_EQ(queue->TakeOneFrame(buffer, 8), 0) << "none left";
    Add(*queue, 4, 8);
    auto larger = std::make_unique<uint8_t[]>(20);
    ASSERT_EQ(queue->TakeOneFrame(larger, 20), 1) << "a buffer of another size gets a copy";
    EXPECT_EQ(larger[7], 4);
    EXPECT_EQ(larger[8], 0);
    const auto counters = queue->GetCounters();
    EXPECT_EQ(counters.taken, 2u);
    EXPECT_EQ(counters.refused, 1u);
}

TEST_F(FrameQueue, WithoutNodesFramesAreCountedAsUnqueued) {
    const auto queue = QFrameBufManager::Instance(0, 4);
    ASSERT_TRUE(queue);
    Add(*queue, 1);
    EXPECT_EQ(Take(*queue), -1);
    EXPECT_EQ(queue->GetCounters().unqueued, 1u);
}

TEST_F(FrameQueue, ClearMovesAllToTheSpareList) {
    const auto queue = QFrameBufManager::Instance(2, 4);
    Add(*queue, 1);
    Add(*queue, 2);
    queue->ClearFrameBufList();
    EXPECT_EQ(Take(*queue), -1);
    EXPECT_EQ(queue->GetCounters().cleared, 2u);
    Add(*queue, 3);
    Add(*queue, 4);
    EXPECT_EQ(queue->GetCounters().overwritten, 0u) << "both nodes were spare again";
}

TEST_F(FrameQueue, ASecondCameraJoinsTheFirstOnesQueue) {
    const auto first = QFrameBufManager::Instance(1, 4);
    const auto second = QFrameBufManager::Instance(100, 1000);
    EXPECT_EQ(first, second);
    Add(*second, 1);
    Add(*second, 2);
    EXPECT_EQ(first->GetCounters().overwritten, 1u) << "the first one's count holds";
}

TEST_F(FrameQueue, AStopUnderAnotherCameraLeavesItsMemoryInPlace) {
    const auto other = QFrameBufManager::Instance(2, 4);
    QFrameBufManager::ReleaseInstance();
    Add(*other, 1);
    EXPECT_EQ(Take(*other), 1);
    EXPECT_NE(QFrameBufManager::Instance(2, 4), other);
}

TEST_F(FrameQueue, EveryFrameIsAccountedForBetweenThreads) {
    const auto queue = QFrameBufManager::Instance(3, 64);
    std::atomic<bool> stop{false};
    std::atomic<uint64_t> torn{0};
    std::thread saver([&] {
        std::vector<uint8_t> buffer(64);
        while (!stop) {
            if (queue->GetOneFrame(buffer.data(), 64) &&
                !std::all_of(buffer.begin(), buffer.end(), [&](uint8_t b) { return b == buffer[0]; }))
                ++torn;
        }
    });
    for (int i = 0; i < 20000; ++i)
        Add(*queue, static_cast<uint8_t>(i), 64);
    stop = true;
    saver.join();
    const auto c = queue->GetCounters();
    EXPECT_EQ(torn, 0u);
    EXPECT_EQ(c.queued, c.taken + c.overwritten + c.refused + c.cleared + queue->GetWaitingCount());
    EXPECT_EQ(c.queued + c.unqueued, 20000u);
}

} // namespace
