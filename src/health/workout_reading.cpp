#include "health/workout_reading.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view walking = "HKWorkoutActivityTypeWalking";

/// The times of walks within `day`.
std::vector<Interval> walkTimes(const std::vector<WorkoutData>& workouts, const Interval& day) {
    std::vector<Interval> times;
    for (const WorkoutData& workout : workouts) {
        const Interval time{std::max(workout.start, day.start), std::min(workout.end, day.end)};
        if (workout.activityType == walking && time.start < time.end) times.push_back(time);
    }
    return times;
}

std::optional<HeartRateSummary> summaryOf(const std::vector<double>& rates) {
    if (rates.empty()) return std::nullopt;
    const auto [lowest, highest] = std::ranges::minmax(rates);
    const double sum = std::accumulate(rates.begin(), rates.end(), 0.0);
    return HeartRateSummary{sum / static_cast<double>(rates.size()), lowest, highest};
}

}  // namespace

CancellableTask WorkoutReading::loadWorkouts(Interval interval) {
    if (workoutsTask_) workoutsTask_->cancel();
    workoutsTask_ = tasks_.spawn(publishWorkouts(interval));
    return *workoutsTask_;
}

CancellableTask WorkoutReading::loadWalkingHeartRate(Day day) {
    if (walkingHRTask_) walkingHRTask_->cancel();
    isLoadingWalkingHR = true;
    walkingHRTask_ = tasks_.spawn(publishWalkingHeartRate(day));
    return *walkingHRTask_;
}

Task<std::vector<WorkoutData>> WorkoutReading::fetchWorkouts(Interval interval) {
    auto workouts = co_await reads_.fetchWorkouts(interval, QueryPriority::normal);
    co_return std::move(workouts).value_or(std::vector<WorkoutData>());
}

Task<std::vector<StoredRoute>> WorkoutReading::fetchRoutes(std::int64_t workout) {
    auto routes = co_await reads_.fetchRoutes(workout, QueryPriority::normal);
    co_return std::move(routes).value_or(std::vector<StoredRoute>());
}

Task<> WorkoutReading::publishWorkouts(Interval interval) {
    auto workouts = co_await fetchWorkouts(interval);
    if (co_await isCancelled()) co_return;
    workoutData = std::move(workouts);
}

Task<> WorkoutReading::publishWalkingHeartRate(Day day) {
    std::optional<HeartRateSummary> summary;
    if (const auto known = walkingHRByDay_.find(day); known != walkingHRByDay_.end()) {
        summary = known->second;
    } else {
        const Calendar calendar = settings_.calendar();
        const bool isOver = day < calendar.day(clock_.now());
        const auto rates = co_await fetchWalkingHeartRates(calendar.interval(day));
        if (rates) summary = summaryOf(*rates);
        if (rates && isOver) walkingHRByDay_.emplace(day, summary);
    }
    if (co_await isCancelled()) co_return;
    walkingHeartRateSummary = summary;
    isLoadingWalkingHR = false;
}

Task<std::optional<std::vector<double>>> WorkoutReading::fetchWalkingHeartRates(Interval day) {
    const auto workouts = co_await reads_.fetchWorkouts(day, QueryPriority::normal);
    if (!workouts) co_return std::nullopt;
    std::vector<double> rates;
    const std::vector<Interval> walks = walkTimes(*workouts, day);
    if (walks.empty()) co_return rates;

    const HKQuantityType type{HKQuantityTypeIdentifierHeartRate};
    const Date last = std::ranges::max(walks, {}, &Interval::end).end;
    const HKPredicate predicate{walks.front().start, last, HKQueryOptions::strictStartDate};
    const auto samples =
        co_await reads_.fetchSamples(type, predicate, 0, HKSampleSort::startDateAscending, QueryPriority::normal);
    if (!samples) co_return std::nullopt;
    for (const HKQuantitySample& sample : *samples) {
        const bool isOnWalk =
            std::ranges::any_of(walks, [&](const Interval& walk) { return walk.contains(sample.start); });
        const bool isRate = sample.quantity.dimension() == Dimension::frequency;
        if (isOnWalk && isRate) rates.push_back(sample.quantity.doubleValue(HKUnit::countPerMinute()));
    }
    co_return rates;
}

}  // namespace pedvar
