#include "recording/activity_list.h"

#include <algorithm>
#include <ranges>
#include <string_view>
#include <tuple>
#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view identifierPrefix = "HKWorkoutActivityType";

std::optional<ActivityType> typeOf(std::string_view kind) {
    for (const ActivityType type :
         {ActivityType::walk, ActivityType::run, ActivityType::hike, ActivityType::cycle}) {
        if (displayName(type) == kind) return type;
    }
    return std::nullopt;
}

/// "TraditionalStrengthTraining" as people write it: "Traditional strength training".
std::string spaced(std::string_view name) {
    std::string result;
    for (const char character : name) {
        const bool isCapital = 'A' <= character && character <= 'Z';
        if (isCapital && !result.empty()) result += ' ';
        result += isCapital && !result.empty() ? static_cast<char>(character - 'A' + 'a') : character;
    }
    return result;
}

Activity activityOf(const SavedSession& saved) {
    const ActivitySession& session = saved.session;
    return {.session = session.id,
            .workout = std::nullopt,
            .type = session.activityType,
            .kind = std::string(displayName(session.activityType)),
            .start = session.startTime,
            .end = session.endTime.value_or(session.startTime + Seconds(session.duration)),
            .duration = session.duration,
            .steps = session.steps,
            .distance = session.distance,
            .calories = static_cast<double>(session.calories),
            .elevationGain = session.elevationGain,
            .elevationLoss = session.elevationLoss,
            .hasRoute = saved.pointCount > 0,
            .source = "Pedvar",
            .copies = {}};
}

Activity activityOf(const WorkoutData& workout) {
    std::string_view kind = workout.activityType;
    if (kind.starts_with(identifierPrefix)) kind.remove_prefix(identifierPrefix.size());
    return {.session = std::nullopt,
            .workout = workout.id,
            .type = typeOf(kind),
            .kind = spaced(kind),
            .start = workout.start,
            .end = workout.end,
            .duration = workout.duration,
            .steps = std::nullopt,
            .distance = workout.distance,
            .calories = workout.activeEnergy,
            .elevationGain = workout.elevationGain,
            .elevationLoss = workout.elevationLoss,
            .hasRoute = workout.routeCount > 0,
            .source = workout.source.isOwn ? "Pedvar" : workout.source.name,
            .copies = {}};
}

bool areCopies(const Activity& a, const Activity& b) {
    const Seconds shared = std::min(a.end, b.end) - std::max(a.start, b.start);
    const Seconds longer = std::max(a.end - a.start, b.end - b.start);
    return shared > Seconds(0) && shared >= longer / 2;
}

template <class T>
void fill(std::optional<T>& value, const std::optional<T>& other) {
    if (!value) value = other;
}

void takeOver(Activity& shown, const Activity& copy) {
    fill(shown.workout, copy.workout);
    fill(shown.distance, copy.distance);
    fill(shown.calories, copy.calories);
    if (!shown.elevationGain && !shown.elevationLoss) {
        shown.elevationGain = copy.elevationGain;
        shown.elevationLoss = copy.elevationLoss;
    }
    shown.hasRoute = shown.hasRoute || copy.hasRoute;
    shown.copies.push_back(copy.source);
}

/// Puts the activities of one stretch of time into the list, those that are shown before others first.
void addUnique(std::vector<Activity>& list, std::vector<Activity>& stretch) {
    std::ranges::stable_sort(stretch, {}, [](const Activity& activity) {
        return std::tuple(!activity.session, activity.source != "Pedvar", !activity.hasRoute, -activity.duration);
    });
    const auto first = static_cast<std::ptrdiff_t>(list.size());
    for (Activity& activity : stretch) {
        const auto shown = std::find_if(list.begin() + first, list.end(), [&](const Activity& other) {
            const bool areBothOfHistory = other.session && activity.session;
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

std::vector<Activity> activityList(const std::deque<SavedSession>& history,
                                   const std::vector<WorkoutData>& workouts) {
    std::vector<Activity> all;
    for (const SavedSession& saved : history) all.push_back(activityOf(saved));
    for (const WorkoutData& workout : workouts) all.push_back(activityOf(workout));
    std::ranges::stable_sort(all, {}, &Activity::start);

    // Copies overlap, so that none is beyond a moment at which nothing was going on.
    std::vector<Activity> list, stretch;
    Date end;
    for (Activity& activity : all) {
        if (!stretch.empty() && activity.start >= end) addUnique(list, stretch);
        end = stretch.empty() ? activity.end : std::max(end, activity.end);
        stretch.push_back(std::move(activity));
    }
    addUnique(list, stretch);
    std::ranges::stable_sort(list, std::greater(), &Activity::start);
    return list;
}

}  // namespace pedvar
