#include "recording/location_point.h"

#include <cmath>

namespace pedvar {

namespace {

bool isFiniteNumber(double number) {
    return std::isfinite(number);
}
bool isFiniteNumber(Date date) {
    return std::isfinite(date.time_since_epoch().count());
}
bool isFiniteNumber(const std::optional<double>& number) {
    return !number || std::isfinite(*number);
}
bool isFiniteNumber(const UUID&) {
    return true;
}

std::optional<double> unlessNegative(double value) {
    return value < 0 ? std::nullopt : std::optional(value);
}

}  // namespace

bool isFinite(const LocationPoint& point) {
    bool isFinite = true;
    forEachField(point,
                 [&](std::string_view, const auto& field) { isFinite = isFinite && isFiniteNumber(field); });
    return isFinite;
}

std::optional<LocationPoint> locationPoint(UUID id, const CLLocation& location) {
    LocationPoint point{.id = id,
                        .latitude = location.latitude,
                        .longitude = location.longitude,
                        .timestamp = location.timestamp,
                        .horizontalAccuracy = location.horizontalAccuracy,
                        .verticalAccuracy = unlessNegative(location.verticalAccuracy),
                        .speed = unlessNegative(location.speed),
                        .course = unlessNegative(location.course)};
    if (point.verticalAccuracy) point.altitude = location.altitude;
    return isFinite(point) ? std::optional(point) : std::nullopt;
}

CLLocation locationOf(const LocationPoint& point) {
    return {.latitude = point.latitude,
            .longitude = point.longitude,
            .altitude = point.altitude.value_or(0),
            .horizontalAccuracy = point.horizontalAccuracy,
            .verticalAccuracy = point.verticalAccuracy.value_or(-1),
            .course = point.course.value_or(-1),
            .speed = point.speed.value_or(-1),
            .timestamp = point.timestamp};
}

}  // namespace pedvar
