/// Sessions for tests.
#pragma once

#include "recording/in_progress_state.h"

#include <cstdint>

namespace pedvar {

/// "000000NN-0000-0000-0000-000000000000".
inline UUID uuidOf(int number) {
    UUID::Bytes bytes{};
    bytes[3] = static_cast<std::uint8_t>(number);
    return UUID(bytes);
}

/// Points a second apart, each a little different from the others.
inline LocationPoint samplePoint(int index) {
    return {.id = uuidOf(index),
            .latitude = 52.5 + index * 1.1e-5,
            .longitude = 13.4 - index * 1e-7,
            .timestamp = Date{Seconds{738'000'000.25 + index}},
            .altitude = index % 3 == 0 ? std::nullopt : std::optional(34.5 + index / 7.0),
            .horizontalAccuracy = 4.5,
            .verticalAccuracy = 3,
            .speed = index % 2 == 0 ? std::nullopt : std::optional(1.3),
            .course = 271.25};
}

inline Route sampleRoute(int points) {
    Route route;
    for (int i = 0; i < points; ++i) route.push_back(samplePoint(i));
    return route;
}

inline ActivitySession sampleSession(int number, int points = 2) {
    return {.id = uuidOf(number),
            .activityType = ActivityType::hike,
            .startTime = Date{Seconds{738'000'000.5}},
            .endTime = Date{Seconds{738'003'600.75}},
            .steps = 4000 + number,
            .distance = 3000,
            .duration = 1800,
            .calories = 180,
            .averagePace = averagePace(1800, 3000),
            .route = sampleRoute(points),
            .elevationGain = 12.5};
}

/// A recording that runs, as of `checkpointDate`.
inline InProgressState sampleCheckpoint(int number, int points, Date checkpointDate = {}) {
    InProgressState state{.sessionStartDate = Date{Seconds{738'000'000.5}},
                          .totalPausedTime = 1.5,
                          .routePoints = sampleRoute(points),
                          .currentSteps = 17,
                          .currentDistance = 2000,
                          .currentDuration = 900,
                          .currentCalories = 100,
                          .elevationGain = 3.5,
                          .currentElevation = 40.25,
                          .totalDistance = 2000,
                          .elapsedTime = 900,
                          .checkpointDate = checkpointDate};
    state.session = sampleSession(number, 0);
    state.session.endTime.reset();
    state.session.isActive = true;
    state.session.route = state.routePoints;
    return state;
}

}  // namespace pedvar
