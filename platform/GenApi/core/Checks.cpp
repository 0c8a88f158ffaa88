// Ranges and increments, and the texts that operators see when a value breaks one.
#include <algorithm>
#include <cmath>
#include <limits>

#include "core/FloatInterface.h"

namespace genapi {

void checkRange(Node& node, std::int64_t value) {
    const std::int64_t min = node.minInteger();
    const std::int64_t max = node.maxInteger();
    if (value < min)
        throw OUT_OF_RANGE_EXCEPTION("%s: value %lld is below the minimum %lld",
                                     Evaluation::blame(node).c_str(), static_cast<long long>(value),
                                     static_cast<long long>(min));
    if (value > max)
        throw OUT_OF_RANGE_EXCEPTION("%s: value %lld is above the maximum %lld",
                                     Evaluation::blame(node).c_str(), static_cast<long long>(value),
                                     static_cast<long long>(max));
}

void checkIncrement(Node& node, std::int64_t value) {
    if (const std::vector<std::int64_t>* valid = node.validIntegers()) {
        if (!std::binary_search(valid->begin(), valid->end(), value))
            throw OUT_OF_RANGE_EXCEPTION("%s: value %lld is not among the valid values",
                                         Evaluation::blame(node).c_str(), static_cast<long long>(value));
        return;
    }
    const std::int64_t inc = node.incInteger();
    if (inc == 1)
        return;
    const std::int64_t min = node.minInteger();
    // Not negative by the range check before; without sign the difference always fits.
    const std::uint64_t distance = static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(min);
    if (distance % static_cast<std::uint64_t>(inc) != 0)
        throw OUT_OF_RANGE_EXCEPTION(
            "%s: value %lld is not the minimum %lld plus a multiple of the increment %lld",
            Evaluation::blame(node).c_str(), static_cast<long long>(value), static_cast<long long>(min),
            static_cast<long long>(inc));
}

void checkRange(Node& node, double value) {
    const double min = node.minFloat();
    const double max = node.maxFloat();
    if (std::isnan(value))
        throw OUT_OF_RANGE_EXCEPTION("%s: NaN is no value", Evaluation::blame(node).c_str());
    if (value < min)
        throw OUT_OF_RANGE_EXCEPTION("%s: value %s is below the minimum %s", Evaluation::blame(node).c_str(),
                                     formatFloat(value).c_str(), formatFloat(min).c_str());
    if (value > max)
        throw OUT_OF_RANGE_EXCEPTION("%s: value %s is above the maximum %s", Evaluation::blame(node).c_str(),
                                     formatFloat(value).c_str(), formatFloat(max).c_str());
}

void checkIncrement(Node& node, double value) {
    // Programs hand values over in single precision too, so its error is forgiven.
    constexpr double single = 1.2e-7;
    if (const std::vector<double>* valid = node.validFloats()) {
        const auto close = [value](double candidate) {
            return std::fabs(candidate - value) <= single * std::fabs(candidate);
        };
        if (std::none_of(valid->begin(), valid->end(), close))
            throw OUT_OF_RANGE_EXCEPTION("%s: value %s is not among the valid values",
                                         Evaluation::blame(node).c_str(), formatFloat(value).c_str());
        return;
    }
    const double inc = node.incFloat();
    if (!(inc > 0) || !std::isfinite(inc))
        return;
    const double min = node.minFloat();
    const double distance = value - min;
    const double nearest = std::round(distance / inc) * inc;
    const double allowed = std::max(inc * 1e-6, single * (std::fabs(value) + std::fabs(min)));
    if (std::isfinite(distance) && std::fabs(distance - nearest) > allowed)
        throw OUT_OF_RANGE_EXCEPTION("%s: value %s is not the minimum %s plus a multiple of the increment %s",
                                     Evaluation::blame(node).c_str(), formatFloat(value).c_str(),
                                     formatFloat(min).c_str(), formatFloat(inc).c_str());
}

std::int64_t roundForNode(const Node& node, double value) {
    std::int64_t rounded = 0;
    if (!roundToInteger(value, rounded))
        throw OUT_OF_RANGE_EXCEPTION("%s: %s is beyond all integers", Evaluation::blame(node).c_str(),
                                     formatFloat(value).c_str());
    return rounded;
}

std::int64_t integerAtLeast(double min) {
    std::int64_t rounded = 0;
    if (roundToInteger(std::ceil(min), rounded))
        return rounded;
    return min > 0 ? std::numeric_limits<std::int64_t>::max() : std::numeric_limits<std::int64_t>::min();
}

std::int64_t integerAtMost(double max) {
    std::int64_t rounded = 0;
    if (roundToInteger(std::floor(max), rounded))
        return rounded;
    return max < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

} // namespace genapi
