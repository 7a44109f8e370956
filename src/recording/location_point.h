/// A point of a recorded route.
#pragma once

#include "core/record.h"
#include "core/uuid.h"
#include "platform/location.h"

#include <optional>

namespace pedvar {

/// One accepted fix.
struct LocationPoint {
    UUID id;
    double latitude = 0;   // degrees, smoothed
    double longitude = 0;  // degrees, smoothed
    Date timestamp;
    std::optional<double> altitude;          // metres above sea level
    double horizontalAccuracy = 0;           // metres
    std::optional<double> verticalAccuracy;  // metres
    std::optional<double> speed;             // metres per second
    std::optional<double> course;            // degrees from north

    using Fields =
        FieldList<&LocationPoint::id, &LocationPoint::latitude, &LocationPoint::longitude,
                  &LocationPoint::timestamp, &LocationPoint::altitude, &LocationPoint::horizontalAccuracy,
                  &LocationPoint::verticalAccuracy, &LocationPoint::speed, &LocationPoint::course>;
    bool operator==(const LocationPoint&) const = default;
};
static_assert(isComplete<LocationPoint>);

/// Whether no number of the point is a NaN or an infinity. Documents cannot hold those: one such point would keep
/// its whole route from being stored.
bool isFinite(const LocationPoint& point);

/// The point at a location, where everything unknown is absent; none when any of its numbers is not finite. This
/// is the door through which points come in.
std::optional<LocationPoint> locationPoint(UUID id, const CLLocation& location);

/// The way back.
CLLocation locationOf(const LocationPoint& point);

}  // namespace pedvar
