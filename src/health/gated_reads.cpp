#include "health/gated_reads.h"

namespace pedvar {

namespace {

/// What a query tried once has found.
template <class T>
std::optional<T> valueOf(std::optional<HKResult<T>> answer) {
    if (!answer || !*answer) return std::nullopt;
    return std::move(**answer);
}

template <class T>
T unchanged(const T& value) {
    return value;
}

}  // namespace

Task<std::optional<std::vector<HKStatistics>>> GatedReads::fetchCollection(HKQuantityType type,
                                                                           HKPredicate predicate,
                                                                           DateComponents interval,
                                                                           QueryPriority priority) {
    const Date anchor = predicate.start;
    HKStatisticsCollectionQuery query{
        std::move(type), std::move(predicate), HKStatisticsOptions::cumulativeSum, anchor, interval, {}};
    auto answer = co_await attempt(std::move(query), &HKStatisticsCollectionQuery::initialResultsHandler, priority,
                                   &unchanged<std::vector<HKStatistics>>);
    co_return valueOf(std::move(answer));
}

Task<std::optional<std::vector<HKQuantitySample>>> GatedReads::fetchSamples(HKQuantityType type,
                                                                            HKPredicate predicate,
                                                                            std::size_t limit, HKSampleSort sort,
                                                                            QueryPriority priority) {
    HKSampleQuery query{std::move(type), std::move(predicate), limit, sort, {}};
    auto answer = co_await attempt(std::move(query), &HKSampleQuery::resultsHandler, priority,
                                   &unchanged<std::vector<HKQuantitySample>>);
    co_return valueOf(std::move(answer));
}

Task<std::optional<std::vector<StoredWorkout>>> GatedReads::fetchWorkouts(Interval interval,
                                                                          QueryPriority priority) {
    HKWorkoutQuery query{interval, {}};
    auto answer = co_await attempt(std::move(query), &HKWorkoutQuery::resultsHandler, priority,
                                   &unchanged<std::vector<StoredWorkout>>);
    co_return valueOf(std::move(answer));
}

Task<std::optional<std::vector<StoredRoute>>> GatedReads::fetchRoutes(std::int64_t workout,
                                                                      QueryPriority priority) {
    HKWorkoutRouteQuery query{workout, {}};
    auto answer = co_await attempt(std::move(query), &HKWorkoutRouteQuery::resultsHandler, priority,
                                   &unchanged<std::vector<StoredRoute>>);
    co_return valueOf(std::move(answer));
}

}  // namespace pedvar
