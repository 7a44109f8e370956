/// From the receiver's fixes to way, speed, route and climb.
#pragma once

#include "core/geodesy.h"
#include "platform/clock.h"
#include "platform/location.h"
#include "platform/random_source.h"
#include "recording/auto_pause.h"
#include "recording/elevation_calculator.h"
#include "recording/in_progress_state.h"
#include "recording/jump_watch.h"
#include "recording/recorder_log.h"
#include "recording/route_smoothing.h"
#include "recording/speed_average.h"

#include <optional>

namespace pedvar {

/// What the fixes so far say.
struct LocationReadings {
    std::optional<CLLocation> currentLocation;  // as received
    double gpsAccuracy = 0;                     // metres, of the current location
    double totalDistance = 0;                   // metres
    double currentSpeed = 0;                    // metres per second
    double averageSpeed = 0;                    // metres per second
    double currentPace = 0;                     // minutes per kilometre
    std::optional<double> currentElevation;     // metres
    Route route;
};

/// Takes the fixes of one recording in the order in which they come. Each costs the same at any length of the
/// route.
class LocationPipeline {
public:
    /// Keeps references.
    LocationPipeline(const Clock& clock, RandomSource& random, RecorderLog& log)
        : clock_(clock), random_(random), log_(log) {}

    /// Begins a recording.
    void reset();
    /// Goes on with a recording: the next fix is a first one, to which there is no way.
    void restore(const InProgressState& state);
    /// The fixes stop for a while.
    void pause();

    /// Whether the recording goes on from this fix. One that is of no use is dropped, with a line in the log where
    /// the log is to say so.
    bool take(const CLLocation& location, AutoPauseMode mode);

    const LocationReadings& readings() const { return readings_; }
    const AutoPause& autoPause() const { return autoPause_; }
    const ElevationCalculator::StreamingTracker& elevationTracker() const { return elevationTracker_; }

private:
    static constexpr double noSignal = 999;  // metres, an accuracy that no fix has

    struct Fix {
        CLLocation location;
        EarthPosition position;
    };

    void watchSignal(double accuracy);
    bool takeFirst(const Fix& fix);
    void rejectJump(const Fix& fix, double distance);
    void addSegment(const CLLocation& location, double distance, Seconds time, AutoPauseMode mode);
    void addPoint(const CLLocation& location);
    std::optional<double> withoutSpike(std::optional<double> altitude);

    const Clock& clock_;
    RandomSource& random_;
    RecorderLog& log_;

    LocationReadings readings_;
    std::optional<Fix> lastLocation_;
    double lastGoodAccuracy_ = noSignal;
    RouteSmoothing smoothing_;
    JumpWatch jumps_;
    bool isAtNewPlace_ = false;  // where rejected fixes agreed to be
    AutoPause autoPause_;
    SpeedAverage speeds_;
    std::optional<double> lastElevation_;  // metres
    ElevationCalculator::StreamingTracker elevationTracker_;
};

}  // namespace pedvar
