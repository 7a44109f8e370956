/// How the steps of a usual day add up from midnight to midnight.
#pragma once

#include "insights/pace_days.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace pedvar {

/// Steps since midnight at the hour boundaries 0 to 24.
using CumulativeCurve = std::array<double, 25>;

/// The curve of a day with `hourly` steps from midnight on. Hours that are missing count 0.
CumulativeCurve cumulativeCurve(std::span<const std::int64_t> hourly);

/// The value of a curve at a fractional hour.
///
/// `hour` is clamped to 0...24. Between two hour boundaries the curve is straight; an empty curve is 0 everywhere.
double valueAt(std::span<const double> curve, double hour);

/// The typical day: half of all days run between `lower` and `upper`.
struct StepPaceBaseline {
    static constexpr std::int64_t fewestDays = 5;
    static constexpr std::int64_t fewestSteps = 250;  // fewer mean that phone and watch lay at home

    CumulativeCurve median{};
    CumulativeCurve lower{};  // 25th percentile
    CumulativeCurve upper{};  // 75th percentile
    std::int64_t dayCount = 0;
    bool operator==(const StepPaceBaseline&) const = default;
};

/// How many of `days` have enough steps to count.
std::int64_t qualifyingDayCount(std::span<const PaceDay> days);

/// The typical one of `days`; none while too few qualify. Percentiles lie between the two nearest days in
/// proportion.
std::optional<StepPaceBaseline> stepPaceBaseline(std::span<const PaceDay> days);

}  // namespace pedvar
