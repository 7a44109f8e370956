/// What gpsd tells, and what of it is a fix.
#pragma once

#include "platform/location.h"

#include <optional>
#include <string>

namespace pedvar {

/// How gpsd's accuracies, within which 95 % of fixes lie, become those of 68 %.
struct AccuracyFactors {
    double horizontal = 0.62;  // of a normal distribution in two dimensions: 1.51 / 2.45 standard deviations
    double vertical = 0.51;    // in one: 0.99 / 1.96
};

/// One report of a receiver's. Metres, degrees and metres per second; absent is what the receiver does not know.
struct GpsdReport {
    enum class Mode { noFix, twoDimensional, threeDimensional };

    std::string receiver;  // its path
    Mode mode = Mode::noFix;
    std::optional<Date> time;  // by the receiver's clock
    std::optional<double> latitude, longitude, altitude;
    std::optional<double> horizontalError, longitudeError, latitudeError, verticalError;  // 95 %
    std::optional<double> horizontalDilution, verticalDilution;  // of the precision, by how the satellites stand
    std::optional<double> speed, course;
    bool operator==(const GpsdReport&) const = default;
};

/// The fix in a report; none without one. A report without time is one of the moment of its `arrival`.
std::optional<CLLocation> locationIn(const GpsdReport& report, const AccuracyFactors& factors, Date arrival);

}  // namespace pedvar
