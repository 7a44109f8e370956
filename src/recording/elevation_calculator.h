/// Climbing and descending, out of altitudes that jitter.
#pragma once

#include "platform/location.h"

#include <optional>
#include <span>

namespace pedvar {

/// What a way does in height, in metres.
struct ElevationChange {
    double gain = 0;
    double loss = 0;  // kept positive
    double lowest = 0;
    double highest = 0;
    bool operator==(const ElevationChange&) const = default;
};

/// Counts a change of altitude only once it has left a dead band of at least 3 metres around the altitude counted
/// last: a slow climb counts when it has added up, jitter does not. Altitudes that are not known to within 30
/// metres are left out, as is what is no altitude (not finite, or beyond the Moon).
namespace ElevationCalculator {

inline constexpr double farthestAltitude = 1e9;  // metres; beyond the Moon, and sums of less never overflow

/// For altitudes as they come.
struct StreamingTracker {
    double gain = 0;                  // metres
    double loss = 0;                  // metres, kept positive
    std::optional<double> reference;  // metres, the altitude counted last

    /// In metres. The dead band is `verticalAccuracy`, at least 3.
    void update(double altitude, double verticalAccuracy);
    bool operator==(const StreamingTracker&) const = default;
};

/// For a whole way, freed from single outliers by a running median of five first. The dead band is the median of
/// the accuracies, at least 3 metres. None when nothing leaves it: a flat way has no elevation change.
std::optional<ElevationChange> calculate(std::span<const CLLocation> locations);

}  // namespace ElevationCalculator

}  // namespace pedvar
