#include "Common/SleepEx.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsOf(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

double ThreadCpuMilliseconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

TEST(SleepEx, IsNeverEarlyAndTheMedianIsWellUnderAMillisecondLate) {
    for (const int wanted : {1, 5, 15}) {
        std::vector<double> late;
        for (int i = 0; i < 21; ++i) {
            const auto start = Clock::now();
            SleepEx(wanted);
            late.push_back(MillisecondsOf(Clock::now() - start) - wanted);
        }
        std::sort(late.begin(), late.end());
        EXPECT_GE(late.front(), 0.0) << wanted;
        EXPECT_LT(late[late.size() / 2], 1.0) << wanted;
    }
}

TEST(SleepEx, ZeroAndBelowReturnAtOnce) {
    const auto start = Clock::now();
    for (int i = 0; i < 1000; ++i) {
        SleepEx(0);
        SleepEx(-5);
    }
    EXPECT_LT(MillisecondsOf(Clock::now() - start), 100.0);
}

TEST(SleepEx, AWaitingThreadCostsNextToNothing) {
    const double before = ThreadCpuMilliseconds();
    SleepEx(200);
    EXPECT_LT(ThreadCpuMilliseconds() - before, 20.0) << "of 200 ms";
}

TEST(StopFlag, EndsAWait) {
    CStopFlag flag;
    const auto start = Clock::now();
    std::thread stopper([&flag] {
        SleepEx(20);
        flag.Set();
    });
    EXPECT_FALSE(flag.SleepEx(30000));
    EXPECT_LT(MillisecondsOf(Clock::now() - start), 10000.0);
    stopper.join();
    EXPECT_FALSE(flag.SleepEx(30000)) << "set before";
    EXPECT_FALSE(flag.SleepEx(0));
    flag.Clear();
    EXPECT_FALSE(flag.IsSet());
    EXPECT_TRUE(flag.SleepEx(0));
}

TEST(StopFlag, AFullWaitIsNeverEarly) {
    CStopFlag flag;
    for (const int wanted : {1, 10}) {
        const auto start = Clock::now();
        EXPECT_TRUE(flag.SleepEx(wanted));
        EXPECT_GE(MillisecondsOf(Clock::now() - start), wanted);
    }
}

} // namespace
