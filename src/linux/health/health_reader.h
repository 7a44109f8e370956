/// Answers from the health store, on one connection.
#pragma once

#include "linux/health/samples.h"
#include "linux/health/sum_reader.h"
#include "linux/sqlite/connection.h"
#include "platform/health_store.h"
#include "platform/stored_workouts.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pedvar {

/// Answers the questions of HKHealthStore, one after the other. Failures of SQLite's are thrown.
class HealthReader {
public:
    explicit HealthReader(Connection connection) : connection_(std::move(connection)) {}

    bool isConnected();

    /// Statistics of each interval, in order and not overlapping. Samples that start before the first interval and
    /// reach into it belong to it unless starts are strict.
    HKResult<std::vector<HKStatistics>> statistics(const HKQuantityType& type, const HKPredicate& predicate,
                                                   HKStatisticsOptions options,
                                                   std::span<const Interval> intervals);

    std::vector<HKQuantitySample> samples(const HKSampleQuery& query);

    RecalledText recall(std::string_view key, std::string_view type);
    std::vector<StoredWorkout> workouts(const Interval& interval);
    /// A route that is damaged is left out.
    std::vector<StoredRoute> routes(std::int64_t workout);

private:
    struct Series {
        std::int32_t number;
        HKUnit unit;
    };
    struct Row {
        Span span;
        std::int32_t source;
        double value;
    };
    enum class Order { ascending, descending };  // by start

    std::optional<Series> findSeries(const std::string& type);
    std::map<std::int32_t, HKSource> sources();

    /// Calls `act` with each sample that the predicate admits, until it says that it has seen enough.
    void forEachSample(const Series& series, const HKPredicate& predicate, Order order,
                       const std::function<bool(const Row&)>& act);

    void addKeptSums(const Series& series, std::span<const Bucket> buckets, std::span<HKStatistics> statistics);
    void addCountedSums(const Series& series, const HKPredicate& predicate, HKStatisticsOptions options,
                        std::span<const Bucket> buckets, std::span<HKStatistics> statistics);
    void addAverages(const Series& series, const HKPredicate& predicate, std::span<const Bucket> buckets,
                     std::span<HKStatistics> statistics);

    Connection connection_;
    std::map<std::string, Series> series_;  // by type; what is known once stays
};

}  // namespace pedvar
