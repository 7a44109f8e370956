#include "recording/location_pipeline.h"

#include <cmath>

namespace pedvar {

namespace {

constexpr double worstAccuracy = 65;        // metres; a worse fix says too little
constexpr double worstFirstAccuracy = 50;   // metres
constexpr double signalLossThreshold = 50;  // metres
constexpr Seconds oldest{5};                // a fix farther from now is none of now
constexpr double altitudeSpike = 50;        // metres; nobody climbs that between two fixes
constexpr double metersPerPaceUnit = 1000;  // paces are minutes per kilometre
constexpr double secondsPerMinute = 60;

/// Not a number is no accuracy and no moment either.
bool isUsable(const CLLocation& location, Date now) {
    return location.horizontalAccuracy >= 0 && location.horizontalAccuracy <= worstAccuracy &&
           std::abs((location.timestamp - now).count()) <= oldest.count();
}

std::optional<double> altitudeOf(const CLLocation& location) {
    const bool isKnown = location.verticalAccuracy >= 0 && std::isfinite(location.verticalAccuracy) &&
                         std::abs(location.altitude) <= ElevationCalculator::farthestAltitude;
    return isKnown ? std::optional(location.altitude) : std::nullopt;
}

double knownOrNegative(double value) {
    return value >= 0 && std::isfinite(value) ? value : -1;
}

}  // namespace

void LocationPipeline::reset() {
    readings_ = {};
    lastLocation_.reset();
    jumps_.reset();
    isAtNewPlace_ = false;
    autoPause_ = {};
    speeds_ = {};
    lastElevation_.reset();
    elevationTracker_ = {};
    pause();
}

void LocationPipeline::restore(const InProgressState& state) {
    reset();
    readings_.totalDistance = state.totalDistance;
    readings_.currentElevation = state.currentElevation;
    readings_.route = state.routePoints;
    if (!readings_.route.isEmpty()) lastElevation_ = readings_.route.back().altitude;
    elevationTracker_.gain = state.elevationGain;
    elevationTracker_.loss = state.elevationLoss.value_or(0);
}

void LocationPipeline::pause() {
    smoothing_.reset();
    lastGoodAccuracy_ = noSignal;
}

bool LocationPipeline::take(const CLLocation& location, AutoPauseMode mode) {
    if (!isUsable(location, clock_.now())) return false;
    const auto position = earthPosition(location.latitude, location.longitude);
    if (!position) {
        log_.invalidCoordinates(location.latitude, location.longitude);
        return false;
    }
    readings_.currentLocation = location;
    readings_.gpsAccuracy = location.horizontalAccuracy;
    watchSignal(location.horizontalAccuracy);

    const Fix fix{location, *position};
    if (!lastLocation_) return takeFirst(fix);
    const double metres = distance(lastLocation_->position, fix.position);
    if (metres >= jumpThreshold) {
        rejectJump(fix, metres);
        return false;
    }
    jumps_.reset();
    const Seconds time = location.timestamp - lastLocation_->location.timestamp;
    if (metres > 0 && time > Seconds{}) addSegment(location, metres, time, mode);
    lastLocation_ = fix;
    return true;
}

void LocationPipeline::watchSignal(double accuracy) {
    const bool isReacquired = lastGoodAccuracy_ > signalLossThreshold && accuracy < signalLossThreshold;
    const bool isLost = lastGoodAccuracy_ < signalLossThreshold && accuracy > signalLossThreshold;
    if (isReacquired) log_.signalReacquired();
    if (isLost) log_.signalLost();
    if (isReacquired || isLost) smoothing_.reset();
    lastGoodAccuracy_ = accuracy;
}

bool LocationPipeline::takeFirst(const Fix& fix) {
    if (fix.location.horizontalAccuracy > worstFirstAccuracy) {
        log_.waitingForAccuracy(fix.location.horizontalAccuracy);
        return false;
    }
    if (isAtNewPlace_) log_.newPlaceAccepted();
    isAtNewPlace_ = false;
    log_.firstPoint(fix.location.horizontalAccuracy);
    addPoint(fix.location);
    lastLocation_ = fix;
    return true;
}

void LocationPipeline::rejectJump(const Fix& fix, double distance) {
    log_.jumpRejected(distance);
    smoothing_.reset();
    if (!jumps_.agreesOnNewPlace(fix.position)) return;
    // How the person came here is unknown, up and down included.
    jumps_.reset();
    isAtNewPlace_ = true;
    lastLocation_.reset();
    lastElevation_.reset();
    elevationTracker_.reference.reset();
}

void LocationPipeline::addSegment(const CLLocation& location, double distance, Seconds time, AutoPauseMode mode) {
    const double speed = distance / time.count();
    const bool counts = autoPause_.counts(speed, mode, clock_.now());
    if (autoPause_.isPaused()) {
        readings_.currentSpeed = 0;
        readings_.currentPace = 0;
        return;
    }
    speeds_.add(speed);
    readings_.currentSpeed = speed;
    readings_.averageSpeed = speeds_.value().value_or(readings_.averageSpeed);
    readings_.currentPace = metersPerPaceUnit / speed / secondsPerMinute;
    if (!counts) return;
    readings_.totalDistance += distance;
    addPoint(location);
}

void LocationPipeline::addPoint(const CLLocation& location) {
    if (autoPause_.isPaused()) return;
    const std::optional<double> altitude = withoutSpike(altitudeOf(location));
    const Coordinate place = smoothing_.smooth({location.latitude, location.longitude});
    const double verticalAccuracy = altitude ? location.verticalAccuracy : -1;
    CLLocation smoothed = location;
    smoothed.latitude = place.latitude;
    smoothed.longitude = place.longitude;
    smoothed.altitude = altitude.value_or(0);
    smoothed.verticalAccuracy = verticalAccuracy;
    smoothed.speed = knownOrNegative(location.speed);
    smoothed.course = knownOrNegative(location.course);
    LocationPoint point = locationPoint(random_.uuid(), smoothed).value();
    if (!altitude) point.altitude = lastElevation_;
    readings_.route.push_back(point);

    if (!altitude) return;
    readings_.currentElevation = altitude;
    elevationTracker_.update(*altitude, verticalAccuracy);
    lastElevation_ = altitude;
}

std::optional<double> LocationPipeline::withoutSpike(std::optional<double> altitude) {
    if (!altitude || !lastElevation_) return altitude;
    const double difference = std::abs(*altitude - *lastElevation_);
    if (difference <= altitudeSpike) return altitude;
    log_.altitudeSpikeRejected(difference);
    return lastElevation_;
}

}  // namespace pedvar
