#include "recording/activity_list.h"

#include "core/content_hash.h"

#include <algorithm>
#include <cmath>
#include <ranges>
#include <string_view>
#include <tuple>
#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view ownSource = "Pedvar";

std::optional<ActivityType> typeOf(std::string_view kind) {
    for (const ActivityType type :
         {ActivityType::walk, ActivityType::run, ActivityType::hike, ActivityType::cycle}) {
        if (displayName(type) == kind) return type;
    }
    return std::nullopt;
}

/// The nearest moment that has a date; what was stored may be any number.
Date dated(Date moment) {
    using namespace std::chrono_literals;
    constexpr Date first = dateOf(std::chrono::sys_days(1y / 1 / 2));
    constexpr Date last = dateOf(std::chrono::sys_days(9999y / 12 / 30));
    return std::clamp(moment, first, last);
}

/// The same each time that the workout is read, from whatever store.
UUID idOf(const WorkoutData& workout) {
    ContentHash hash;
    hash.add(std::string_view(workout.activityType));
    hash.add(workout.start.time_since_epoch().count());
    hash.add(workout.end.time_since_epoch().count());
    hash.add(std::string_view(workout.source.name));
    return hash.uuid();
}

std::int64_t rounded(double amount) {
    constexpr double highest = 1e15;
    return std::llround(std::clamp(amount, 0.0, highest));
}

Activity activityOf(const WorkoutData& workout) {
    constexpr std::string_view prefix = "HKWorkoutActivityType";
    std::string_view kind = workout.activityType;
    if (kind.starts_with(prefix)) kind.remove_prefix(prefix.size());
    const bool hasRoute = workout.routeCount > 0;
    return {.id = idOf(workout),
            .isOfHistory = false,
            .type = typeOf(kind),
            .kind = std::string(kind),
            .start = dated(workout.start),
            .end = dated(workout.end),
            .duration = workout.duration,
            .steps = std::nullopt,
            .distance = workout.distance,
            .calories = workout.activeEnergy.transform(rounded),
            .averagePace = averagePace(workout.duration, workout.distance.value_or(0)),
            .elevationGain = workout.elevationGain,
            .elevationLoss = workout.elevationLoss,
            .points = hasRoute ? std::nullopt : std::optional<std::int64_t>(0),
            .routeWorkout = hasRoute ? std::optional(workout.id) : std::nullopt,
            .source = workout.source.isOwn ? std::string(ownSource) : workout.source.name,
            .copies = {}};
}

bool hasRoute(const Activity& activity) {
    return activity.points != 0;
}

bool areCopies(const Activity& a, const Activity& b) {
    const Seconds shared = std::min(a.end, b.end) - std::max(a.start, b.start);
    const Seconds longer = std::max(a.end - a.start, b.end - b.start);
    const bool isSameMoment = a.start == b.start && a.end == b.end;  // perhaps of no length
    return isSameMoment || (shared > Seconds(0) && shared >= longer / 2);
}

template <class T>
void fill(std::optional<T>& value, const std::optional<T>& other) {
    if (!value) value = other;
}

void takeOver(Activity& shown, const Activity& copy) {
    fill(shown.distance, copy.distance);
    fill(shown.calories, copy.calories);
    fill(shown.averagePace, copy.averagePace);
    if (!shown.elevationGain && !shown.elevationLoss) {
        shown.elevationGain = copy.elevationGain;
        shown.elevationLoss = copy.elevationLoss;
    }
    if (!hasRoute(shown)) {
        shown.points = copy.points;
        shown.routeWorkout = copy.routeWorkout;
    }
    shown.copies.push_back({copy.id, copy.source});
}

/// Puts the activities of one stretch of time into the list, those that are shown before others first.
void addUnique(std::vector<Activity>& list, std::vector<Activity>& stretch) {
    std::ranges::sort(stretch, {}, [](const Activity& activity) {
        return std::tuple(!activity.isOfHistory, activity.source != ownSource, !hasRoute(activity),
                          -activity.duration, activity.start);
    });
    const auto first = static_cast<std::ptrdiff_t>(list.size());
    for (Activity& activity : stretch) {
        const auto shown = std::find_if(list.begin() + first, list.end(), [&](const Activity& other) {
            const bool areBothOfHistory = other.isOfHistory && activity.isOfHistory;
            return !areBothOfHistory && areCopies(other, activity);
        });
        if (shown == list.end()) {
            list.push_back(std::move(activity));
        } else {
            takeOver(*shown, activity);
        }
    }
    stretch.clear();
}

}  // namespace

Activity activityOf(const SavedSession& saved) {
    const ActivitySession& session = saved.session;
    const bool isForeign = isImported(session);
    // A clock that was set back meanwhile makes no activity that ends before it starts.
    const Date end =
        std::max(session.startTime, session.endTime.value_or(session.startTime + Seconds(session.duration)));
    return {.id = session.id,
            .isOfHistory = true,
            .type = session.activityType,
            .kind = std::string(displayName(session.activityType)),
            .start = dated(session.startTime),
            .end = dated(end),
            .duration = session.duration,
            .steps = isForeign ? std::nullopt : std::optional(session.steps),
            .distance = session.distance,
            .calories = session.calories,
            .averagePace = session.averagePace,
            .elevationGain = session.elevationGain,
            .elevationLoss = session.elevationLoss,
            .points = static_cast<std::int64_t>(saved.pointCount),
            .routeWorkout = std::nullopt,
            .source = std::string(isForeign ? "GPX" : ownSource),
            .copies = {}};
}

std::vector<Activity> activityList(const std::deque<SavedSession>& history,
                                   const std::vector<WorkoutData>& workouts) {
    std::vector<Activity> all;
    for (const SavedSession& saved : history) all.push_back(activityOf(saved));
    for (const WorkoutData& workout : workouts) all.push_back(activityOf(workout));
    std::ranges::sort(all, {},
                      [](const Activity& activity) { return std::tuple(activity.start, !activity.isOfHistory); });

    // Copies overlap, so that none is beyond a moment at which nothing was going on.
    std::vector<Activity> list, stretch;
    Date end;
    for (Activity& activity : all) {
        if (!stretch.empty() && activity.start >= end && activity.end > end) addUnique(list, stretch);
        end = stretch.empty() ? activity.end : std::max(end, activity.end);
        stretch.push_back(std::move(activity));
    }
    addUnique(list, stretch);
    std::ranges::sort(list, [](const Activity& one, const Activity& other) {
        return std::tie(other.start, one.id) < std::tie(one.start, other.id);
    });
    return list;
}

}  // namespace pedvar
