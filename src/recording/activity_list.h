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

/// One activity, from the history, the health store, or both.
struct Activity {
    std::optional<UUID> session;          // in the history
    std::optional<std::int64_t> workout;  // in the health store
    std::optional<ActivityType> type;     // none for what Pedvar does not record
    std::string kind;                     // in English: "Walking", "Swimming"
    Date start;
    Date end;
    double duration = 0;  // seconds without pauses
    std::optional<std::int64_t> steps;
    std::optional<double> distance;       // metres
    std::optional<double> calories;       // kilocalories
    std::optional<double> elevationGain;  // metres
    std::optional<double> elevationLoss;  // metres
    bool hasRoute = false;
    std::string source;               // who recorded it
    std::vector<std::string> copies;  // sources of the copies that it stands for
    bool operator==(const Activity&) const = default;
};

/// History and workouts as one list, newest first.
///
/// Two entries that share at least half of the longer one's time are copies of one activity: nobody does two at
/// once. Of copies the one of the history is shown, else Pedvar's own workout, one with a route, the longest; what
/// it lacks is taken from the others.
std::vector<Activity> activityList(const std::deque<SavedSession>& history,
                                   const std::vector<WorkoutData>& workouts);

}  // namespace pedvar
