#ifndef BENCH_MEDIA_KIT_MEASURE_H
#define BENCH_MEDIA_KIT_MEASURE_H

#include "MediaKit/WorkerPool.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/* Several ways to do the same, measured in turns so that a slow moment of the machine falls on all of them
 * alike. */
class Race {
public:
    struct Result {
        std::string name;
        double milliseconds; // median
        double least;
    };

    explicit Race(std::string what) : what_(std::move(what)) {}

    void Add(std::string name, std::function<void()> run) {
        runners_.push_back({std::move(name), std::move(run), {}});
    }

    /* A memcpy that reads and writes together as many bytes as the conversion does. */
    void AddMemcpy(std::size_t bytesRead, std::size_t bytesWritten);

    /* The same copy, half of it by each of two threads: after AddMemcpy. The pool outlives Run. */
    void AddMemcpyOnTwo(media::WorkerPool& pool);

    /* Runs all of them in turns, `rounds` times after a warm-up. */
    std::vector<Result> Run(int rounds);

    const std::string& What() const { return what_; }

private:
    struct Runner {
        std::string name;
        std::function<void()> run;
        std::vector<double> times;
    };

    std::string what_;
    std::vector<Runner> runners_;
    std::vector<std::uint8_t> copyFrom_;
    std::vector<std::uint8_t> copyTo_;
};

/* The median of the result of that name; 0 when it didn't run. */
double MedianOf(const std::vector<Race::Result>& results, const std::string& name);

/* The shortest of its times; 0 when it didn't run. */
double LeastOf(const std::vector<Race::Result>& results, const std::string& name);

/* The parts of the program. rounds: how often everything is run; filter: what a row's name must contain. */
void BenchConversions(int rounds, const std::string& filter);
void BenchCodecs(int rounds, const std::string& filter);

#endif
