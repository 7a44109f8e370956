#include "insights/step_pace_baseline.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace pedvar {

namespace {

/// `f` of the way from `low` to `high`.
double between(double low, double high, double f) {
    return (1 - f) * low + f * high;
}

double percentile(std::span<const double> ascending, double p) {
    const double position = static_cast<double>(ascending.size() - 1) * p;
    const auto low = static_cast<std::size_t>(position);
    const std::size_t high = std::min(low + 1, ascending.size() - 1);
    return between(ascending[low], ascending[high], position - static_cast<double>(low));
}

std::vector<CumulativeCurve> qualifyingCurves(std::span<const PaceDay> days) {
    std::vector<CumulativeCurve> curves;
    for (const PaceDay& day : days) {
        const CumulativeCurve curve = cumulativeCurve(day.hourly);
        if (curve.back() >= static_cast<double>(StepPaceBaseline::fewestSteps)) curves.push_back(curve);
    }
    return curves;
}

}  // namespace

CumulativeCurve cumulativeCurve(std::span<const std::int64_t> hourly) {
    CumulativeCurve curve{};
    for (std::size_t hour = 0; hour + 1 < curve.size(); ++hour) {
        curve[hour + 1] = curve[hour] + (hour < hourly.size() ? static_cast<double>(hourly[hour]) : 0);
    }
    return curve;
}

double valueAt(std::span<const double> curve, double hour) {
    if (curve.empty()) return 0;
    const double clamped = hour > 0 ? std::min(hour, 24.0) : 0;
    const auto index = static_cast<std::size_t>(clamped);
    if (index + 1 >= curve.size()) return curve.back();
    return between(curve[index], curve[index + 1], clamped - static_cast<double>(index));
}

std::int64_t qualifyingDayCount(std::span<const PaceDay> days) {
    return std::ssize(qualifyingCurves(days));
}

std::optional<StepPaceBaseline> stepPaceBaseline(std::span<const PaceDay> days) {
    const std::vector<CumulativeCurve> curves = qualifyingCurves(days);
    StepPaceBaseline baseline{.dayCount = std::ssize(curves)};
    if (baseline.dayCount < StepPaceBaseline::fewestDays) return std::nullopt;

    std::vector<double> values(curves.size());
    for (std::size_t boundary = 0; boundary < baseline.median.size(); ++boundary) {
        std::ranges::transform(curves, values.begin(),
                               [&](const CumulativeCurve& curve) { return curve[boundary]; });
        std::ranges::sort(values);
        baseline.lower[boundary] = percentile(values, 0.25);
        baseline.median[boundary] = percentile(values, 0.5);
        baseline.upper[boundary] = percentile(values, 0.75);
    }
    return baseline;
}

}  // namespace pedvar
