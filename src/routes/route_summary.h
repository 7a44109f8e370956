/// What a GPX document says of the way as a whole.
#pragma once

#include "recording/elevation_calculator.h"
#include "routes/gpx_parser.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace pedvar {

struct RouteSummary {
    std::vector<std::size_t> segments;  // points in each
    std::size_t points = 0;
    std::size_t withElevation = 0;
    std::size_t withTime = 0;
    double distance = 0;  // metres on the ellipsoid
    std::optional<ElevationChange> elevation;
};

/// Distance and elevation are those of the segments together: what lies between two segments was not walked.
/// Points out of range count as points and add no distance; the way goes straight on from their neighbours.
RouteSummary summaryOf(const GPXDocument& document);

}  // namespace pedvar
