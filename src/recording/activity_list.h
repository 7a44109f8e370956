/// All walks, runs, hikes and rides, wherever they were recorded.
#pragma once

#include "health/workout_reading.h"
#include "recording/session_documents.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// One activity, from the history, the health store, or both; absent is what nobody knows of it.
struct Activity {
    /// An activity that is kept a second time.
    struct Copy {
        UUID id;
        std::string source;
        bool operator==(const Copy&) const = default;
    };

    UUID id;                           // the session's; that of a workout is made from what it is
    bool isOfHistory = false;          // and can be changed
    std::optional<ActivityType> type;  // none for what Pedvar does not record
    std::string kind;                  // "Walking", "MindAndBody"
    Date start;
    Date end;
    double duration = 0;  // seconds without pauses
    std::optional<std::int64_t> steps;
    std::optional<double> distance;            // metres
    std::optional<std::int64_t> calories;      // kilocalories
    std::optional<double> averagePace;         // minutes per kilometre
    std::optional<double> elevationGain;       // metres
    std::optional<double> elevationLoss;       // metres
    std::optional<std::int64_t> points;        // of its route; none when they are not counted yet
    std::optional<std::int64_t> routeWorkout;  // the workout whose routes are its own
    std::string source;                        // who recorded it
    std::vector<Copy> copies;                  // that it stands for
    bool operator==(const Activity&) const = default;
};

/// The session of the history as it is without copies.
Activity activityOf(const SavedSession& saved);

/// History and workouts as one list, newest first.
///
/// Two entries that share at least half of the longer one's time are copies of one activity: nobody does two at
/// once. Of copies the one of the history is shown, else Pedvar's own workout, one with a route, the longest; what
/// it lacks is taken from the others.
std::vector<Activity> activityList(const std::deque<SavedSession>& history,
                                   const std::vector<WorkoutData>& workouts);

}  // namespace pedvar
