/// Workouts of the health store, and the heart while walking.
#pragma once

#include "core/async.h"
#include "core/calendar.h"
#include "core/published.h"
#include "health/gated_reads.h"
#include "health/settings_store.h"
#include "platform/clock.h"
#include "platform/stored_workouts.h"

#include <map>
#include <optional>
#include <vector>

namespace pedvar {

/// A workout of any source, one that Pedvar wrote included.
using WorkoutData = StoredWorkout;

/// Beats per minute of several readings.
struct HeartRateSummary {
    double average = 0;
    double lowest = 0;
    double highest = 0;
    bool operator==(const HeartRateSummary&) const = default;
};

/// Keeps the workouts of a chosen time and the heart rate of a chosen day. What cannot be read is missing. Lives
/// on the main executor.
class WorkoutReading {
public:
    WorkoutReading(MainExecutor& executor, const Clock& clock, const SettingsStore& settings, GatedReads& reads)
        : clock_(clock), settings_(settings), reads_(reads), tasks_(executor) {}

    Published<std::vector<WorkoutData>> workoutData;  // of the time loaded last, by start
    /// Of the readings during walking workouts on the day loaded last; none without any.
    Published<std::optional<HeartRateSummary>> walkingHeartRateSummary;
    Published<bool> isLoadingWalkingHR;

    /// A newer load replaces the running one of its kind. A past day is read once.
    CancellableTask loadWorkouts(Interval interval);
    CancellableTask loadWalkingHeartRate(Day day);

    Task<std::vector<WorkoutData>> fetchWorkouts(Interval interval);
    Task<std::vector<StoredRoute>> fetchRoutes(std::int64_t workout);

private:
    Task<> publishWorkouts(Interval interval);
    Task<> publishWalkingHeartRate(Day day);
    /// None when something could not be read.
    Task<std::optional<std::vector<double>>> fetchWalkingHeartRates(Interval day);

    const Clock& clock_;
    const SettingsStore& settings_;
    GatedReads& reads_;
    std::map<Day, std::optional<HeartRateSummary>> walkingHRByDay_;  // of days that were over when they were read
    std::optional<CancellableTask> workoutsTask_, walkingHRTask_;
    TaskScope tasks_;  // last: its coroutines use what stands above
};

}  // namespace pedvar
