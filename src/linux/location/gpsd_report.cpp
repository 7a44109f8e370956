#include "linux/location/gpsd_report.h"

#include <cmath>

namespace pedvar {

namespace {

// Where the receiver estimates no error; metres.
constexpr double accuracyPerDilution = 5;
constexpr double assumedThreeDimensional = 20;
constexpr double assumedTwoDimensional = 40;

double horizontalAccuracy(const GpsdReport& report, double factor) {
    if (report.horizontalError) return factor * *report.horizontalError;
    if (report.longitudeError && report.latitudeError) {
        return factor * std::hypot(*report.longitudeError, *report.latitudeError);
    }
    if (report.horizontalDilution) return accuracyPerDilution * *report.horizontalDilution;
    return report.mode == GpsdReport::Mode::threeDimensional ? assumedThreeDimensional : assumedTwoDimensional;
}

double verticalAccuracy(const GpsdReport& report, double factor) {
    if (report.verticalError) return factor * *report.verticalError;
    if (report.verticalDilution) return accuracyPerDilution * *report.verticalDilution;
    return assumedThreeDimensional;
}

}  // namespace

std::optional<CLLocation> locationIn(const GpsdReport& report, const AccuracyFactors& factors, Date arrival) {
    if (report.mode == GpsdReport::Mode::noFix || !report.latitude || !report.longitude) return std::nullopt;
    CLLocation location{.latitude = *report.latitude,
                        .longitude = *report.longitude,
                        .horizontalAccuracy = horizontalAccuracy(report, factors.horizontal),
                        .course = report.course.value_or(-1),
                        .speed = report.speed.value_or(-1),
                        .timestamp = report.time.value_or(arrival)};
    if (report.mode == GpsdReport::Mode::threeDimensional && report.altitude) {
        location.altitude = *report.altitude;
        location.verticalAccuracy = verticalAccuracy(report, factors.vertical);
    }
    return location;
}

}  // namespace pedvar
