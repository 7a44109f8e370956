#include "recording/route_smoothing.h"

#include <cmath>

namespace pedvar {

namespace {

constexpr double smoothingFactor = 0.7;  // the share of the new place
constexpr double lastShare = 0.3;        // that of the place before
constexpr double wholeTurn = 360;        // degrees

double blend(double last, double raw) {
    return lastShare * last + smoothingFactor * raw;
}

}  // namespace

Coordinate RouteSmoothing::smooth(Coordinate raw) {
    if (!last_) return *(last_ = raw);
    // Beyond the antimeridian the place before is at -180 and not at 180 degrees, or the other way round.
    const double turn =
        std::abs(raw.longitude - last_->longitude) > wholeTurn / 2 ? std::copysign(wholeTurn, raw.longitude) : 0;
    Coordinate smoothed{blend(last_->latitude, raw.latitude), blend(last_->longitude + turn, raw.longitude)};
    if (std::abs(smoothed.longitude) > wholeTurn / 2)
        smoothed.longitude -= std::copysign(wholeTurn, smoothed.longitude);
    last_ = smoothed;
    return smoothed;
}

}  // namespace pedvar
