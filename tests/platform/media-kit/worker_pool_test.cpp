#include "MediaKit/Convert.h"
#include "MediaKit/WorkerPool.h"
#include "reference/ConvertReference.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace {

using namespace media;

TEST(WorkerPool, EachPieceIsDoneOnce) {
    for (const unsigned helpers : {0U, 1U, 3U}) {
        WorkerPool pool(helpers);
        for (const std::size_t pieces : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{100}}) {
            std::vector<std::atomic<int>> done(pieces);
            pool.Run(pieces, [&](std::size_t piece, unsigned) { ++done[piece]; });
            for (const auto& count : done) {
                EXPECT_EQ(count, 1);
            }
        }
    }
}

TEST(WorkerPool, NoWorkerIsInTwoPiecesAtOnce) {
    WorkerPool pool(3);
    std::vector<std::atomic<int>> busy(pool.Workers());
    std::atomic<int> clashes{0};
    pool.Run(2000, [&](std::size_t, unsigned worker) {
        if (busy.at(worker).exchange(1) != 0) {
            ++clashes;
        }
        std::this_thread::yield();
        busy[worker] = 0;
    });
    EXPECT_EQ(clashes, 0);
}

TEST(WorkerPool, HelpersReallyHelp) {
    WorkerPool pool(1);
    std::mutex mutex;
    std::condition_variable met;
    int arrived = 0;
    // Two pieces that each wait for the other: one thread alone would never get through.
    pool.Run(2, [&](std::size_t, unsigned) {
        std::unique_lock<std::mutex> lock(mutex);
        ++arrived;
        met.notify_all();
        met.wait(lock, [&] { return arrived == 2; });
    });
    EXPECT_EQ(arrived, 2);
}

TEST(WorkerPool, ASecondCallerWorksAlone) {
    WorkerPool pool(1);
    int inner = 0;
    pool.Run(2, [&](std::size_t piece, unsigned) {
        if (piece == 0) {
            std::thread([&] {
                pool.Run(5, [&](std::size_t, unsigned worker) {
                    EXPECT_EQ(worker, 0U);
                    ++inner;
                });
            }).join();
        }
    });
    EXPECT_EQ(inner, 5);
}

TEST(WorkerPool, CanBeUsedByManyThreadsAndEndsWithItsThreadsJoined) {
    std::atomic<int> done{0};
    {
        WorkerPool pool(2);
        std::vector<std::thread> callers;
        for (int i = 0; i < 4; ++i) {
            callers.emplace_back([&] {
                for (int run = 0; run < 50; ++run) {
                    pool.Run(8, [&](std::size_t, unsigned) { ++done; });
                }
            });
        }
        for (std::thread& caller : callers) {
            caller.join();
        }
    }
    EXPECT_EQ(done, 4 * 50 * 8);
}

/* The rows of a large picture are the same on any number of threads, for every type and method. */
TEST(ConvertPicture, IsTheSameOnAnyNumberOfThreads) {
    constexpr std::uint32_t kWidth = 802;
    constexpr std::uint32_t kHeight = 601;
    static_assert(kWidth * kHeight > kPixelsThatPayThreads);
    std::mt19937 random(4);
    std::vector<std::uint8_t> source(4 * kWidth * kHeight);
    for (std::uint8_t& byte : source) {
        byte = static_cast<std::uint8_t>(random());
    }
    std::vector<std::uint8_t> alone(4 * kWidth * kHeight);
    std::vector<std::uint8_t> together(4 * kWidth * kHeight);
    for (std::uint32_t type = 0; type <= 27; ++type) {
        for (std::uint32_t method = 0; method < (reference::IsMosaic(type) ? 3U : 1U); ++method) {
            for (const Layout layout : {Layout::Grey, Layout::Rgb, Layout::Bgrx}) {
                const Picture picture{type,   source.data(), static_cast<std::uint32_t>(source.size()),
                                      kWidth, kHeight,       method};
                const auto stride = static_cast<std::ptrdiff_t>(kWidth * BytesOf(layout));
                LineBuffers lines;
                lines.Prepare(kWidth);
                alone.assign(alone.size(), 1);
                ConvertRows(BestKernels(), picture, 0, kHeight, {alone.data(), stride, layout}, lines);
                for (const unsigned helpers : {0U, 1U, 3U}) {
                    WorkerPool pool(helpers);
                    Workspace workspace(pool);
                    together.assign(together.size(), 1);
                    ConvertPicture(BestKernels(), picture, {together.data(), stride, layout}, workspace);
                    ASSERT_TRUE(alone == together) << type << " method " << method << " helpers " << helpers;
                }
            }
        }
    }
}

} // namespace
