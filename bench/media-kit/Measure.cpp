#include "Measure.h"

#include <algorithm>
#include <chrono>
#include <cstring>

void Race::AddMemcpy(std::size_t bytesRead, std::size_t bytesWritten) {
    const std::size_t bytes = (bytesRead + bytesWritten) / 2;
    copyFrom_.assign(bytes, 1);
    copyTo_.assign(bytes, 2);
    Add("memcpy", [this, bytes] {
        std::memcpy(copyTo_.data(), copyFrom_.data(), bytes);
        // The copy must not be thought useless.
        asm volatile("" : : "r"(copyTo_.data()) : "memory");
    });
}

void Race::AddMemcpyOnTwo(media::WorkerPool& pool) {
    Add("memcpy on two", [this, &pool] {
        const std::size_t half = copyTo_.size() / 2;
        pool.Run(2, [&](std::size_t piece, unsigned /*worker*/) {
            const std::size_t bytes = piece == 0 ? half : copyTo_.size() - half;
            std::memcpy(copyTo_.data() + piece * half, copyFrom_.data() + piece * half, bytes);
        });
    });
}

std::vector<Race::Result> Race::Run(int rounds) {
    using Clock = std::chrono::steady_clock;
    for (int round = -2; round < rounds; ++round) {
        for (Runner& runner : runners_) {
            // Once for the caches, so that each finds them as it leaves them and not as the one before did.
            runner.run();
            const auto start = Clock::now();
            runner.run();
            const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
            if (round >= 0) {
                runner.times.push_back(taken.count());
            }
        }
    }
    std::vector<Result> results;
    for (Runner& runner : runners_) {
        std::sort(runner.times.begin(), runner.times.end());
        results.push_back({runner.name, runner.times[runner.times.size() / 2], runner.times.front()});
        runner.times.clear();
    }
    return results;
}

double MedianOf(const std::vector<Race::Result>& results, const std::string& name) {
    for (const Race::Result& result : results) {
        if (result.name == name) {
            return result.milliseconds;
        }
    }
    return 0;
}

double LeastOf(const std::vector<Race::Result>& results, const std::string& name) {
    for (const Race::Result& result : results) {
        if (result.name == name) {
            return result.least;
        }
    }
    return 0;
}
