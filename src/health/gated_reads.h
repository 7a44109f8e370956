/// Queries of the health store that wait for their turn.
#pragma once

#include "core/async.h"
#include "health/health_diagnostics.h"
#include "health/query_gate.h"
#include "platform/health_store.h"
#include "platform/stored_workouts.h"

#include <expected>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace pedvar {

/// Runs queries in the slots of a gate. A read that fails is logged and yields none; so does one whose task is
/// cancelled before its turn, without a line in the log.
class GatedReads {
public:
    static constexpr int maxAttempts = 3;
    static constexpr std::chrono::milliseconds retryPause{200};

    GatedReads(MainExecutor& executor, HKHealthStore& store, HealthDiagnostics& diagnostics)
        : executor_(executor), store_(store), diagnostics_(diagnostics) {}

    /// One statistics query, tried up to three times whatever the error is; each attempt queues for a slot, the
    /// pause between two holds none. `transform` turns the `HKStatistics` into the result, on the thread of the
    /// answer.
    template <class Transform>
    auto fetchGatedStatistics(HKQuantityType type, HKPredicate predicate, HKStatisticsOptions options,
                              QueryPriority priority, Transform transform)
        -> Task<std::optional<std::invoke_result_t<Transform, const HKStatistics&>>>;

    /// Cumulative sums of consecutive clock intervals from the predicate's start on. Tried once.
    Task<std::optional<std::vector<HKStatistics>>> fetchCollection(HKQuantityType type, HKPredicate predicate,
                                                                   DateComponents interval,
                                                                   QueryPriority priority);

    /// The first `limit` samples in the order of `sort`; 0 is no limit. Tried once.
    Task<std::optional<std::vector<HKQuantitySample>>> fetchSamples(HKQuantityType type, HKPredicate predicate,
                                                                    std::size_t limit, HKSampleSort sort,
                                                                    QueryPriority priority);

    /// The workouts that overlap `interval`, by their start, and the routes of one of them. Tried once.
    Task<std::optional<std::vector<StoredWorkout>>> fetchWorkouts(Interval interval, QueryPriority priority);
    Task<std::optional<std::vector<StoredRoute>>> fetchRoutes(std::int64_t workout, QueryPriority priority);

    std::int64_t activeQueryCount() const { return gate_.activeQueryCount(); }

private:
    /// The answer to one query; none when the task was cancelled before its turn.
    template <class T>
    using Attempt = std::optional<HKResult<T>>;

    template <class Query, class Answer, class Transform>
    auto attempt(Query query, HKHandler<Answer> Query::* handler, QueryPriority priority, Transform transform)
        -> Task<Attempt<std::invoke_result_t<Transform, const Answer&>>>;

    /// How the log names what a query reads.
    static std::string label(const HKStatisticsQuery& query) { return query.quantityType.identifier; }
    static std::string label(const HKStatisticsCollectionQuery& query) { return query.quantityType.identifier; }
    static std::string label(const HKSampleQuery& query) { return query.sampleType.identifier; }
    static std::string label(const HKWorkoutQuery&) { return HKWorkoutTypeIdentifier; }
    static std::string label(const HKWorkoutRouteQuery&) { return HKWorkoutRouteTypeIdentifier; }

    MainExecutor& executor_;
    HKHealthStore& store_;
    HealthDiagnostics& diagnostics_;
    QueryGate gate_;
};

template <class Query, class Answer, class Transform>
auto GatedReads::attempt(Query query, HKHandler<Answer> Query::* handler, QueryPriority priority,
                         Transform transform) -> Task<Attempt<std::invoke_result_t<Transform, const Answer&>>> {
    const QueryGate::Slot slot = co_await gate_.acquireQuerySlot(priority);
    if (co_await isCancelled()) co_return std::nullopt;

    Completion<HKResult<std::invoke_result_t<Transform, const Answer&>>> answer(executor_);
    query.*handler = [&diagnostics = diagnostics_, label = label(query), transform = std::move(transform),
                      deliver = answer.resolver()](HKResult<Answer> result) mutable {
        if (result) {
            deliver(transform(*result));
        } else {
            diagnostics.readFailed(label, result.error());
            deliver(std::unexpected(std::move(result).error()));
        }
    };
    store_.execute(std::move(query));
    co_return co_await answer;
}

template <class Transform>
auto GatedReads::fetchGatedStatistics(HKQuantityType type, HKPredicate predicate, HKStatisticsOptions options,
                                      QueryPriority priority, Transform transform)
    -> Task<std::optional<std::invoke_result_t<Transform, const HKStatistics&>>> {
    for (int attemptsLeft = maxAttempts; attemptsLeft > 0; --attemptsLeft) {
        if (attemptsLeft < maxAttempts) {
            const bool hasPaused = co_await sleepFor(retryPause);
            if (!hasPaused) co_return std::nullopt;
        }
        HKStatisticsQuery query{type, predicate, options, {}};
        auto answer =
            co_await attempt(std::move(query), &HKStatisticsQuery::completionHandler, priority, transform);
        if (!answer) co_return std::nullopt;
        if (*answer) co_return std::move(**answer);
    }
    diagnostics_.readGaveUp(type.identifier);
    co_return std::nullopt;
}

}  // namespace pedvar
