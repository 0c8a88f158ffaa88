#include "Camera/FairMutex.h"
#include "Common/SleepEx.h"

#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <vector>

namespace {

TEST(FairMutex, Excludes) {
    CFairMutex mutex;
    int count = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                const std::lock_guard<CFairMutex> lock(mutex);
                ++count;
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(count, 8000);
}

// The grab thread's way: hold it for long, let go, ask again at once.
TEST(FairMutex, AWaiterGetsItsTurnBetweenTwoHolds) {
    CFairMutex mutex;
    std::atomic<bool> stop{false};
    std::atomic<int> holds{0};
    std::thread holder([&] {
        while (!stop) {
            const std::lock_guard<CFairMutex> lock(mutex);
            ++holds;
            SleepEx(2);
        }
    });
    while (holds == 0)
        SleepEx(1);
    for (int i = 0; i < 20; ++i) {
        const int before = holds;
        mutex.lock();
        EXPECT_LE(holds - before, 2) << "at most the hold in progress and one that was asked for earlier";
        mutex.unlock();
    }
    stop = true;
    holder.join();
}

} // namespace
