#ifndef LIVE_STATISTICS_H
#define LIVE_STATISTICS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace live {

/// The transport's counters since the start of grabbing, as the camera library tells them.
struct TransportCounters {
    int64_t receivedBytes = 0;
    int64_t lostPackets = 0;
    uint32_t resentPackets = 0;
    uint32_t errors = 0;     ///< frames not delivered, or delivered incomplete
    uint32_t lostFrames = 0; ///< frames for which the library had no free buffer
};

/// Everything that is counted, at one moment. Counters only grow while one stream runs.
struct Sample {
    std::chrono::steady_clock::time_point time{};
    uint64_t frames = 0;     ///< fetched from the library
    uint64_t incomplete = 0; ///< of these, with packets missing
    uint64_t oversize = 0;   ///< refused because they were larger than our buffer
    uint64_t shown = 0;      ///< drawn
    uint64_t grabErrors = 0; ///< fetches that ended with a status other than a time-out
    std::chrono::nanoseconds cpu{0};
    std::optional<TransportCounters> transport; ///< empty when the library did not tell
};

/// What happened between two samples, per second.
struct Rates {
    double seconds = 0;
    double frames = 0;
    double shown = 0;
    double megabytes = 0; ///< 10^6 bytes received
    double cpuPercent = 0;
};

/// All rates are 0 where no time has passed. A counter that went back (the stream was started anew) counts
/// from 0.
Rates RatesBetween(const Sample& before, const Sample& now);

/// One line for the terminal: rates since `before`, counts since the start of the stream.
std::string StatisticsLine(const Sample& start, const Sample& before, const Sample& now);

/// The few figures that a window's title has room for.
std::string TitleFigures(const Rates& rates, const Sample& now);

/// The last line: rates over the whole run.
std::string SummaryLine(const Sample& start, const Sample& now);

/// Processor time of this process, all threads.
std::chrono::nanoseconds ProcessCpuTime();

/// When the next line is due. Keeps the beat: a late line does not shift those after it, and lines that
/// were missed altogether are left out.
class Beat {
public:
    using Time = std::chrono::steady_clock::time_point;

    Beat(Time start, std::chrono::nanoseconds period) : next_(start + period), period_(period) {}

    Time Next() const { return next_; }

    /// True once per period.
    bool IsDue(Time now);

private:
    Time next_;
    std::chrono::nanoseconds period_;
};

} // namespace live

#endif
