/// The GPX text in which the health store keeps routes.
#pragma once

#include "linux/health/samples.h"

#include <cstddef>
#include <optional>
#include <string>

namespace pedvar {

/// A place on a route; what is not known is absent.
struct RouteTextPoint {
    Milliseconds time = 0;
    double latitude = 0;                       // degrees
    double longitude = 0;                      // degrees
    std::optional<double> altitude;            // metres
    std::optional<double> speed;               // metres per second
    std::optional<double> course;              // degrees from north
    std::optional<double> horizontalAccuracy;  // metres
    std::optional<double> verticalAccuracy;    // metres
};

/// Makes the text that exports have in files of their own.
class RouteText {
public:
    void add(const RouteTextPoint& point);

    /// The route file, named by the time of its first point; none without points.
    std::optional<WorkoutRouteFile> finish() const;

    std::size_t size() const { return points_.size(); }

private:
    std::string points_;
    Milliseconds start_ = 0;
};

}  // namespace pedvar
