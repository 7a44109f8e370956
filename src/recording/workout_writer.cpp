#include "recording/workout_writer.h"

#include "platform/fault_point.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace pedvar {

namespace {

constexpr double leastElevation = 1;  // metres; less is not worth an entry

HKWorkoutActivityType workoutType(ActivityType type) {
    switch (type) {
        case ActivityType::walk:
            return HKWorkoutActivityType::walking;
        case ActivityType::run:
            return HKWorkoutActivityType::running;
        case ActivityType::hike:
            return HKWorkoutActivityType::hiking;
        case ActivityType::cycle:
            return HKWorkoutActivityType::cycling;
    }
    return HKWorkoutActivityType::walking;
}

void addElevation(HKWorkout& workout, const char* key, std::optional<double> metres) {
    if (metres && *metres >= leastElevation)
        workout.metadata.emplace_back(key, HKQuantity(HKUnit::meter(), *metres));
}

}  // namespace

HKWorkout workoutOf(const ActivitySession& session) {
    HKWorkout workout{
        .uuid = session.id,
        .workoutActivityType = workoutType(session.activityType),
        .startDate = session.startTime,
        // A clock that was set back meanwhile makes no workout that ends before it starts.
        .endDate = std::max(session.startTime, session.endTime.value_or(session.startTime)),
        .duration = Seconds{session.duration},
        .totalEnergyBurned = HKQuantity(HKUnit::kilocalorie(), static_cast<double>(session.calories)),
        .totalDistance = HKQuantity(HKUnit::meter(), session.distance)};
    addElevation(workout, HKMetadataKeyElevationAscended, session.elevationGain);
    addElevation(workout, HKMetadataKeyElevationDescended, session.elevationLoss);
    return workout;
}

WorkoutWriter::WorkoutWriter(MainExecutor& executor, HKWorkoutStore& healthStore, const SessionHistory& history,
                             DocumentParts& documents, PlatformLog& log)
    : executor_(executor),
      healthStore_(healthStore),
      history_(history),
      pending_(documents),
      log_(log),
      writing_(executor, [this] { return writePending(); }) {}

Task<> WorkoutWriter::writePending() {
    const std::vector<UUID> sessions = pending_.sessions();
    for (const UUID id : sessions) {
        const std::optional<ActivitySession> session = history_.wholeSession(id);
        bool isDone = true;
        if (session) isDone = co_await write(*session);
        // What stays noted is written again at the next start, which adds nothing.
        if (isDone && !pending_.remove(id)) co_return;
    }
}

Task<bool> WorkoutWriter::write(const ActivitySession& session) {
    faultPoint("before workout");
    const HKWorkout workout = workoutOf(session);
    Completion<HKResult<void>> answer(executor_);
    healthStore_.save(workout, answer.resolver());
    const HKResult<void> saved = co_await answer;
    if (!saved) {
        log_.workoutFailed(saved.error());
        co_return false;
    }
    faultPoint("workout saved");
    if (session.route.isEmpty()) co_return true;
    co_return co_await saveWorkoutRoute(workout, session.route);
}

Task<bool> WorkoutWriter::saveWorkoutRoute(const HKWorkout& workout, const Route& routePoints) {
    std::vector<CLLocation> locations;
    locations.reserve(routePoints.size());
    for (const LocationPoint& point : routePoints) locations.push_back(locationOf(point));

    const auto builder = healthStore_.routeBuilder();
    Completion<HKResult<void>> inserted(executor_);
    builder->insertRouteData(std::move(locations), inserted.resolver());
    const HKResult<void> insertion = co_await inserted;
    if (!insertion) {
        log_.routeInsertionFailed(insertion.error());
        co_return false;
    }
    log_.routeInserted();

    Completion<HKResult<void>> finished(executor_);
    builder->finishRoute(workout, finished.resolver());
    const HKResult<void> finish = co_await finished;
    if (!finish) {
        log_.routeFinalizationFailed();
        co_return false;
    }
    log_.routeFinalized();
    co_return true;
}

}  // namespace pedvar
