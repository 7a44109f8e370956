/// What the recorder says in the log.
#pragma once

#include "core/date.h"
#include "platform/health_store.h"
#include "platform/platform_log.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace pedvar {

inline constexpr std::string_view recorderLogCategory = "ActivityRecorder";

/// The lines, one function each. Distances, accuracies and differences in metres.
class RecorderLog {
public:
    /// Keeps the reference.
    explicit RecorderLog(PlatformLog& log) : log_(log) {}

    void stepCountingUnavailable();
    void motionAccessDenied();
    void pedometerStarted(Date from);
    void pedometerFailed(std::string_view reason);
    void stepsUpdated(std::int64_t steps);
    void pedometerStopped();

    void invalidCoordinates(double latitude, double longitude);
    void signalReacquired();
    void signalLost();
    void waitingForAccuracy(double accuracy);
    void firstPoint(double accuracy);
    void jumpRejected(double distance);
    void newPlaceAccepted();
    void altitudeSpikeRejected(double difference);

    void workoutFailed(const HKError& error);
    void routeInserted();
    void routeInsertionFailed(const HKError& error);
    void routeFinalized();
    void routeFinalizationFailed();

private:
    void say(std::string_view message);
    void complain(std::string_view message);

    PlatformLog& log_;
};

}  // namespace pedvar
