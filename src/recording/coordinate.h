/// A place on a map.
#pragma once

namespace pedvar {

/// Degrees, WGS84.
struct Coordinate {
    double latitude = 0;
    double longitude = 0;
    bool operator==(const Coordinate&) const = default;
};

}  // namespace pedvar
