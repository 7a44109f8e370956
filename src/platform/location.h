/// Where the person is.
#pragma once

#include "core/date.h"

namespace pedvar {

/// One fix of a receiver. What the receiver does not know is negative: accuracies, speed and course; the altitude
/// means nothing while its accuracy is negative.
struct CLLocation {
    double latitude = 0;             // degrees, WGS84
    double longitude = 0;            // degrees
    double altitude = 0;             // metres above sea level
    double horizontalAccuracy = -1;  // metres, 68 % of fixes are that near
    double verticalAccuracy = -1;    // metres
    double course = -1;              // degrees from north
    double speed = -1;               // metres per second
    Date timestamp;
    bool operator==(const CLLocation&) const = default;
};

}  // namespace pedvar
