/// The kept totals of one series on one day.
#pragma once

#include "linux/health/samples.h"

#include <array>
#include <bit>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace pedvar {

inline constexpr Milliseconds quarterHour = 15 * 60 * 1000;
inline constexpr Milliseconds utcDay = 24 * 60 * 60 * 1000;
inline constexpr int quartersPerDay = 96;

/// Longer samples are summaries of a day rather than measurements of a moment.
inline constexpr Milliseconds longestShortDuration = 4 * 60 * 60 * 1000;

constexpr bool isLong(Milliseconds duration) {
    return duration > longestShortDuration;
}

/// Largest multiple of `step` that is not above `moment`.
constexpr Milliseconds floorTo(Milliseconds step, Milliseconds moment) {
    const Milliseconds remainder = moment % step;
    return moment - (remainder < 0 ? remainder + step : remainder);
}
constexpr Milliseconds ceilTo(Milliseconds step, Milliseconds moment) {
    return -floorTo(step, -moment);
}

/// Days UTC since 2001-01-01.
using DayNumber = std::int64_t;

constexpr DayNumber dayOf(Milliseconds moment) {
    return floorTo(utcDay, moment) / utcDay;
}
constexpr Milliseconds startOf(DayNumber day) {
    return day * utcDay;
}

/// A sum in the making. The sum of no samples is -0.0, to which anything can be added without a trace, so that no
/// samples and samples that add up to 0 stay apart.
inline constexpr double noSamples = -0.0;
constexpr bool hasSamples(double sum) {
    return std::bit_cast<std::uint64_t>(sum) != std::bit_cast<std::uint64_t>(noSamples);
}

/// What a sample longer than four hours counts with.
struct LongShare {
    Milliseconds start = 0;
    double counted = 0;
    bool operator==(const LongShare&) const = default;
};

/// What the samples that start on one day UTC count with.
struct DayTotals {
    Milliseconds longest = 0;                     // of the samples of at most four hours that start on the day
    std::array<double, quartersPerDay> quarters;  // sums by the quarter hour in which samples start
    std::vector<LongShare> longShares;            // in order of start

    DayTotals() { quarters.fill(noSamples); }

    bool isEmpty() const;
    std::vector<std::byte> encode() const;
    /// None when the bytes are not what `encode` makes.
    static std::optional<DayTotals> decode(Milliseconds longest, std::span<const std::byte> bytes);
    bool operator==(const DayTotals&) const = default;
};

}  // namespace pedvar
