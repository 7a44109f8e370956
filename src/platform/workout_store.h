/// Workouts on their way into the health store.
#pragma once

#include "core/uuid.h"
#include "platform/health_store.h"
#include "platform/location.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

/// The platform's numbers.
enum class HKWorkoutActivityType { cycling = 13, hiking = 24, running = 37, walking = 52 };

inline constexpr const char* HKMetadataKeyElevationAscended = "HKElevationAscended";
inline constexpr const char* HKMetadataKeyElevationDescended = "HKElevationDescended";

/// A finished activity.
struct HKWorkout {
    UUID uuid;  // given by whoever made it
    HKWorkoutActivityType workoutActivityType = HKWorkoutActivityType::walking;
    Date startDate;
    Date endDate;
    Seconds duration{};  // without pauses
    HKQuantity totalEnergyBurned{HKUnit::kilocalorie(), 0};
    HKQuantity totalDistance{HKUnit::meter(), 0};
    std::vector<std::pair<std::string, HKQuantity>> metadata;  // each key once
};

/// Takes the way of one workout: locations, once or several times, then the workout.
class HKWorkoutRouteBuilder {
public:
    virtual ~HKWorkoutRouteBuilder() = default;

    /// Adds locations behind those inserted before, all of them or none.
    virtual void insertRouteData(std::vector<CLLocation> locations, HKHandler<void> completion) = 0;
    /// Stores what was inserted with `workout`, which has been saved. The builder is of no use afterwards.
    virtual void finishRoute(const HKWorkout& workout, HKHandler<void> completion) = 0;
};

/// Answers once to each question, from any thread.
class HKWorkoutStore {
public:
    virtual ~HKWorkoutStore() = default;

    /// Stores the workout as written by Pedvar. One with its `uuid` that is there already stays as it is, and its
    /// route does.
    virtual void save(const HKWorkout& workout, HKHandler<void> completion) = 0;

    /// The builder may be destroyed before it has answered.
    virtual std::unique_ptr<HKWorkoutRouteBuilder> routeBuilder() = 0;
};

}  // namespace pedvar
