/// A recording that is not finished, as it is kept for the case that the program ends.
#pragma once

#include "core/record.h"
#include "recording/activity_session.h"

#include <cstdint>
#include <optional>
#include <string>

namespace pedvar {

/// A checkpoint. The fields that begin with "japanese" belong to the guided walking program.
struct InProgressState {
    ActivitySession session;
    std::optional<Date> sessionStartDate;
    std::optional<Date> pauseStartDate;  // while paused by hand
    double totalPausedTime = 0;          // seconds of finished pauses by hand
    Route routePoints;
    bool isPaused = false;  // by hand
    std::int64_t currentSteps = 0;
    double currentDistance = 0;  // metres
    double currentDuration = 0;  // seconds
    std::int64_t currentCalories = 0;
    double elevationGain = 0;                // metres
    std::optional<double> elevationLoss;     // metres
    std::optional<double> currentElevation;  // metres
    double totalDistance = 0;                // metres from the receiver
    double elapsedTime = 0;                  // seconds
    std::optional<std::string> japaneseProgramRawValue;
    std::int64_t japanesePhaseSecondsRemaining = 0;
    bool japaneseIsIWTFastPhase = false;
    std::int64_t japaneseCurrentIWTSet = 0;
    std::int64_t japaneseIWTCompletedSets = 0;
    bool japaneseIWTCurrentPhaseIsFast = false;
    bool japaneseGuidanceFinished = false;
    Date checkpointDate;

    using Fields = FieldList<
        &InProgressState::session, &InProgressState::sessionStartDate, &InProgressState::pauseStartDate,
        &InProgressState::totalPausedTime, &InProgressState::routePoints, &InProgressState::isPaused,
        &InProgressState::currentSteps, &InProgressState::currentDistance, &InProgressState::currentDuration,
        &InProgressState::currentCalories, &InProgressState::elevationGain, &InProgressState::elevationLoss,
        &InProgressState::currentElevation, &InProgressState::totalDistance, &InProgressState::elapsedTime,
        &InProgressState::japaneseProgramRawValue, &InProgressState::japanesePhaseSecondsRemaining,
        &InProgressState::japaneseIsIWTFastPhase, &InProgressState::japaneseCurrentIWTSet,
        &InProgressState::japaneseIWTCompletedSets, &InProgressState::japaneseIWTCurrentPhaseIsFast,
        &InProgressState::japaneseGuidanceFinished, &InProgressState::checkpointDate>;
    bool operator==(const InProgressState&) const = default;
};
static_assert(isComplete<InProgressState>);

/// The recording closed as of its checkpoint.
ActivitySession retired(const InProgressState& state);

}  // namespace pedvar
