#include "Statistics.h"

#include <array>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <ctime>

namespace live {
namespace {

double Grown(uint64_t before, uint64_t now) {
    return static_cast<double>(now >= before ? now - before : now);
}

double Received(const Sample& before, const Sample& now) {
    if (!now.transport)
        return 0;
    const int64_t from = before.transport ? before.transport->receivedBytes : 0;
    const int64_t to = now.transport->receivedBytes;
    return static_cast<double>(to >= from ? to - from : to);
}

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

std::string Format(const char* format, ...) {
    std::array<char, 160> text{};
    va_list arguments;
    va_start(arguments, format);
    // The analyzer does not see that va_start fills the list.
    std::vsnprintf(text.data(), text.size(), format,
                   arguments); // NOLINT(clang-analyzer-valist.Uninitialized)
    va_end(arguments);
    return text.data();
}

/// The counts that are no rates.
std::string Counts(const Sample& now) {
    std::string text;
    if (now.transport) {
        const TransportCounters& t = *now.transport;
        text = Format("lost %" PRId64 "  resent %" PRIu32 "  errors %" PRIu32 "  no buffer %" PRIu32,
                      t.lostPackets, t.resentPackets, t.errors, t.lostFrames);
    } else {
        text = "lost ?  resent ?  errors ?  no buffer ?";
    }
    // Rare enough to be left out of the line while they are zero.
    if (now.incomplete > 0)
        text += Format("  incomplete %" PRIu64, now.incomplete);
    if (now.oversize > 0)
        text += Format("  too large %" PRIu64, now.oversize);
    if (now.grabErrors > 0)
        text += Format("  fetch errors %" PRIu64, now.grabErrors);
    return text;
}

std::string Line(double elapsed, const Sample& now, const Rates& rates) {
    return Format("%7.1f s  frames %" PRIu64 "  %.2f fps  %.1f MB/s  shown %.1f fps  ", elapsed, now.frames,
                  rates.frames, rates.megabytes, rates.shown) +
           Counts(now) + Format("  CPU %.1f %%", rates.cpuPercent);
}

double SecondsBetween(const Sample& before, const Sample& now) {
    return std::chrono::duration<double>(now.time - before.time).count();
}

} // namespace

Rates RatesBetween(const Sample& before, const Sample& now) {
    Rates rates;
    rates.seconds = SecondsBetween(before, now);
    if (rates.seconds <= 0)
        return {};
    rates.frames = Grown(before.frames, now.frames) / rates.seconds;
    rates.shown = Grown(before.shown, now.shown) / rates.seconds;
    rates.megabytes = Received(before, now) / 1e6 / rates.seconds;
    rates.cpuPercent = 100 * std::chrono::duration<double>(now.cpu - before.cpu).count() / rates.seconds;
    return rates;
}

std::string StatisticsLine(const Sample& start, const Sample& before, const Sample& now) {
    return Line(SecondsBetween(start, now), now, RatesBetween(before, now));
}

std::string TitleFigures(const Rates& rates, const Sample& now) {
    return Format("%.1f fps - %.1f MB/s - lost %" PRId64, rates.frames, rates.megabytes,
                  now.transport ? now.transport->lostPackets : 0);
}

std::string SummaryLine(const Sample& start, const Sample& now) {
    return "in all " + Line(SecondsBetween(start, now), now, RatesBetween(start, now));
}

std::chrono::nanoseconds ProcessCpuTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

bool Beat::IsDue(Time now) {
    if (now < next_)
        return false;
    next_ += period_ * ((now - next_) / period_ + 1);
    return true;
}

} // namespace live
