/// Workouts of the health store.
#pragma once

#include "platform/health_store.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

inline constexpr const char* HKWorkoutTypeIdentifier = "HKWorkoutTypeIdentifier";
inline constexpr const char* HKWorkoutRouteTypeIdentifier = "HKWorkoutRouteTypeIdentifier";

/// A workout as the store has it.
struct StoredWorkout {
    std::int64_t id = 0;       // of this store
    std::string activityType;  // "HKWorkoutActivityTypeWalking"
    Date start;
    Date end;
    double duration = 0;                  // seconds without pauses
    std::optional<double> distance;       // metres
    std::optional<double> activeEnergy;   // kilocalories
    std::optional<double> elevationGain;  // metres
    std::optional<double> elevationLoss;  // metres
    std::size_t routeCount = 0;
    HKSource source;
    bool operator==(const StoredWorkout&) const = default;
};

/// A route of a workout.
struct StoredRoute {
    std::string name;  // "route_2024-05-01_6.30am.gpx"
    std::string gpx;   // the document
    bool operator==(const StoredRoute&) const = default;
};

/// The workouts that overlap [start, end) or begin in it, by their start.
struct HKWorkoutQuery {
    Interval interval;
    HKHandler<std::vector<StoredWorkout>> resultsHandler;
};

/// The routes of one workout, by name; none of a workout that does not exist.
struct HKWorkoutRouteQuery {
    std::int64_t workout = 0;
    HKHandler<std::vector<StoredRoute>> resultsHandler;
};

}  // namespace pedvar
