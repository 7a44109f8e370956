#include "recording/auto_pause.h"

namespace pedvar {

namespace {

constexpr int requiredStationaryReadings = 3;
constexpr double stationarySpeedThreshold = 0.5;  // metres per second; slower than anybody walks

}  // namespace

bool AutoPause::counts(double speed, AutoPauseMode mode, Date now) {
    if (mode == AutoPauseMode::off || speed >= stationarySpeedThreshold) {
        goOn(now);
        return true;
    }
    ++consecutiveStationaryReadings_;
    if (consecutiveStationaryReadings_ >= requiredStationaryReadings && !isPaused()) autoPauseStartDate_ = now;
    return false;
}

void AutoPause::goOn(Date now) {
    consecutiveStationaryReadings_ = 0;
    if (autoPauseStartDate_) totalAutoPausedTime_ += now - *autoPauseStartDate_;
    autoPauseStartDate_.reset();
}

}  // namespace pedvar
