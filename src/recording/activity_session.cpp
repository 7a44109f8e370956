#include "recording/activity_session.h"

#include <cmath>

namespace pedvar {

std::optional<double> averagePace(double duration, double distance) {
    const double pace = (duration / 60) / (distance / 1000);
    return distance > 0 && std::isfinite(pace) ? std::optional(pace) : std::nullopt;
}

}  // namespace pedvar
