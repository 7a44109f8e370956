#include "routes/route_summary.h"

#include "core/geodesy.h"

#include <algorithm>

namespace pedvar {

namespace {

/// The change over two stretches one after the other, of which either may be flat.
std::optional<ElevationChange> together(const std::optional<ElevationChange>& first,
                                        const std::optional<ElevationChange>& second) {
    if (!first || !second) return first ? first : second;
    return ElevationChange{.gain = first->gain + second->gain,
                           .loss = first->loss + second->loss,
                           .lowest = std::min(first->lowest, second->lowest),
                           .highest = std::max(first->highest, second->highest)};
}

}  // namespace

RouteSummary summaryOf(const GPXDocument& document) {
    RouteSummary summary;
    WayLength way;
    for (const auto& segment : document.segments) {
        summary.segments.push_back(segment.points.size());
        summary.points += segment.points.size();
        summary.withTime += static_cast<std::size_t>(std::ranges::count(segment.hasTime, true));
        for (const auto& point : segment.points) {
            if (point.verticalAccuracy >= 0) ++summary.withElevation;
            way.goTo(point.latitude, point.longitude);
        }
        way.interrupt();
        summary.elevation = together(summary.elevation, ElevationCalculator::calculate(segment.points));
    }
    summary.distance = way.metres();
    return summary;
}

}  // namespace pedvar
