/// The points of a route.
#pragma once

#include "recording/location_point.h"

#include <cstddef>
#include <deque>
#include <memory>

namespace pedvar {

/// A list of points that grows at its end and is cheap to copy: copies share their points, and adding to one of
/// them leaves the others as they are. Adding costs the same at any length.
///
/// Two routes are equal when they are the same points, not when the points are alike; comparing is cheap too.
/// Encoded as an array. From one thread.
class Route {
public:
    using value_type = LocationPoint;
    using const_iterator = std::deque<LocationPoint>::const_iterator;

    bool isEmpty() const { return size_ == 0; }
    std::size_t size() const { return size_; }
    const LocationPoint& operator[](std::size_t index) const { return (*points_)[index]; }
    const LocationPoint& back() const { return (*points_)[size_ - 1]; }

    /// Valid until a point is added to this route or a copy of it.
    const_iterator begin() const;
    const_iterator end() const { return begin() + static_cast<std::ptrdiff_t>(size_); }

    /// The point has to be finite.
    void push_back(const LocationPoint& point);

    bool operator==(const Route& other) const = default;

private:
    std::shared_ptr<std::deque<LocationPoint>> points_;  // may hold more than ours, which another copy has added
    std::size_t size_ = 0;
};

}  // namespace pedvar
