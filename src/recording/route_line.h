/// The line of a route on a map.
#pragma once

#include "recording/coordinate.h"
#include "recording/route.h"

#include <cstddef>

namespace pedvar {

/// Shows the coordinates of a route, with which it shares its points. As cheap to copy and compare.
class RouteLine {
public:
    RouteLine() = default;
    explicit RouteLine(const Route& route) : route_(route) {}

    std::size_t size() const { return route_.size(); }
    Coordinate operator[](std::size_t index) const {
        const LocationPoint& point = route_[index];
        return {point.latitude, point.longitude};
    }

    bool operator==(const RouteLine&) const = default;

private:
    Route route_;
};

}  // namespace pedvar
