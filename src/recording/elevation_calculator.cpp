#include "recording/elevation_calculator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace pedvar::ElevationCalculator {

namespace {

constexpr double smallestDeadBand = 3;  // metres; receivers waver that much at rest
constexpr double worstAccuracy = 30;    // metres
constexpr std::size_t windowReach = 2;  // altitudes on each side of the window's middle

bool isUsable(double altitude, double verticalAccuracy) {
    return verticalAccuracy >= 0 && verticalAccuracy <= worstAccuracy && std::abs(altitude) <= farthestAltitude;
}

/// The upper one of the two middle values of an even number. Reorders the values, of which there is at least one.
double median(std::span<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double deadBand(std::span<const CLLocation> locations) {
    std::vector<double> accuracies;
    for (const auto& location : locations) {
        if (isUsable(location.altitude, location.verticalAccuracy))
            accuracies.push_back(location.verticalAccuracy);
    }
    return accuracies.empty() ? smallestDeadBand : std::max(median(accuracies), smallestDeadBand);
}

/// The median of the window around `index`, which is cut short at both ends of `altitudes`.
double smoothed(std::span<const double> altitudes, std::size_t index) {
    const std::size_t first = index - std::min(index, windowReach);
    const std::size_t count = std::min(index + windowReach + 1, altitudes.size()) - first;
    std::array<double, 2 * windowReach + 1> window{};
    std::ranges::copy(altitudes.subspan(first, count), window.begin());
    return median(std::span(window).first(count));
}

}  // namespace

void StreamingTracker::update(double altitude, double verticalAccuracy) {
    if (!isUsable(altitude, verticalAccuracy)) return;
    if (!reference) {
        reference = altitude;
        return;
    }
    const double change = altitude - *reference;
    if (std::abs(change) < std::max(verticalAccuracy, smallestDeadBand)) return;
    (change > 0 ? gain : loss) += std::abs(change);
    reference = altitude;
}

std::optional<ElevationChange> calculate(std::span<const CLLocation> locations) {
    const double threshold = deadBand(locations);
    std::vector<double> altitudes;
    for (const auto& location : locations) {
        if (isUsable(location.altitude, location.verticalAccuracy)) altitudes.push_back(location.altitude);
    }
    if (altitudes.size() < 2) return std::nullopt;

    const bool isSmoothed = altitudes.size() > 2 * windowReach + 1;
    const auto altitudeAt = [&](std::size_t index) {
        return isSmoothed ? smoothed(altitudes, index) : altitudes[index];
    };
    double last = altitudeAt(0);
    ElevationChange result{.lowest = last, .highest = last};
    for (std::size_t i = 1; i < altitudes.size(); ++i) {
        const double altitude = altitudeAt(i);
        const double change = altitude - last;
        if (std::abs(change) < threshold) continue;
        (change > 0 ? result.gain : result.loss) += std::abs(change);
        last = altitude;
        result.lowest = std::min(result.lowest, last);
        result.highest = std::max(result.highest, last);
    }
    const bool isFlat = result.lowest == result.highest;
    return isFlat ? std::nullopt : std::optional(result);
}

}  // namespace pedvar::ElevationCalculator
