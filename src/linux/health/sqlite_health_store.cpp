#include "linux/health/sqlite_health_store.h"

#include "linux/health/collection_intervals.h"
#include "linux/health/health_error.h"
#include "linux/health/health_reader.h"
#include "linux/health/sample_writer.h"
#include "linux/health/worker_pool.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {
namespace {

bool isSound(const HKQuantitySample& sample) {
    constexpr Seconds farthest = std::chrono::years(10'000);
    const double value = sample.quantity.doubleValue(*unitNamed(keptSymbol(sample.quantity.dimension())));
    return std::isfinite(value) && sample.start <= sample.end && sample.start >= Date(-farthest) &&
           sample.end <= Date(farthest);
}

/// Observers by type. Lives on the main executor; news comes from any thread.
class NewSampleNews {
public:
    explicit NewSampleNews(MainExecutor& executor)
        : executor_(executor), observers_(std::make_shared<Observers>()) {}

    Subscription observe(const std::string& type, std::move_only_function<void()> observer) {
        return (*observers_)[type].observe(std::move(observer));
    }

    void tell(const std::vector<std::string>& types) const {
        executor_.post([types, weak = std::weak_ptr(observers_)] {
            const auto observers = weak.lock();
            if (!observers) return;
            for (const std::string& type : types) {
                if (const auto found = observers->find(type); found != observers->end()) found->second.notify();
            }
        });
    }

private:
    using Observers = std::map<std::string, Event<>>;

    MainExecutor& executor_;
    std::shared_ptr<Observers> observers_;
};

/// The samples as Pedvar writes them.
StoreResult<std::vector<SampleRow>> ownRows(SampleWriter& writer, std::span<const HKQuantitySample> samples) {
    const auto source = writer.source({.kind = SourceKind::own, .name = "Pedvar", .hardware = ""});
    if (!source) return std::unexpected(source.error());
    std::vector<SampleRow> rows;
    for (const HKQuantitySample& sample : samples) {
        const auto unit = keptSymbol(sample.quantity.dimension());
        const auto series = writer.series(sample.type.identifier, unit);
        if (!series) return std::unexpected(series.error());
        const Milliseconds start = millisecondsOf(sample.start);
        rows.push_back({.series = *series,
                        .source = *source,
                        .start = start,
                        .duration = millisecondsOf(sample.end) - start,
                        .value = sample.quantity.doubleValue(*unitNamed(unit))});
    }
    return rows;
}

StoreResult<> storeSamples(SampleWriter& writer, std::span<const HKQuantitySample> samples) {
    const auto rows = ownRows(writer, samples);
    if (!rows) return std::unexpected(rows.error());
    const auto written = writer.writeLive(*rows);
    if (!written) return std::unexpected(written.error());
    return {};
}

StoreResult<> removeSamples(SampleWriter& writer, std::span<const HKQuantitySample> samples) {
    const auto rows = ownRows(writer, samples);
    return rows ? writer.removeLive(*rows) : std::unexpected(rows.error());
}

}  // namespace

struct SqliteHealthStore::State {
    /// What a worker thread keeps: the connection on which it reads, once there is a store.
    struct Worker {
        std::optional<HealthReader> reader;
    };

    State(MainExecutor& executor, HealthDatabase& healthDatabase, const ZoneRules& zoneRules,
          std::optional<Date> latest, std::size_t threadCount)
        : database(healthDatabase),
          zone(zoneRules),
          horizon(latest),
          writer(healthDatabase),
          news(executor),
          newsOfDatabase(healthDatabase.onSamplesAdded([told = news](const auto& types) { told.tell(types); })),
          pool(threadCount) {}

    HealthDatabase& database;
    const ZoneRules& zone;
    std::optional<Date> horizon;
    std::mutex writing;  // guards the writer
    SampleWriter writer;
    NewSampleNews news;
    Subscription newsOfDatabase;
    WorkerPool<Worker> pool;

    HKPredicate visible(HKPredicate predicate) const {
        if (horizon) predicate.end = std::min(predicate.end, *horizon);
        return predicate;
    }

    /// Answers with what `read` makes of the store, or with `whenEmpty` while there is none.
    template <class Answer, class Read>
    void answer(HKHandler<Answer> completion, Answer whenEmpty, Read read) {
        pool.add([this, completion = std::move(completion), whenEmpty = std::move(whenEmpty),
                  read = std::move(read)](Worker& worker) mutable {
            completion(outcome(worker, std::move(whenEmpty), read));
        });
    }

    /// Gives the worker a reader if there is a store.
    HKResult<void> connect(Worker& worker) {
        if (worker.reader) return {};
        auto connection = database.connectForReading();
        if (!connection) return std::unexpected(healthError(connection.error()));
        if (*connection) worker.reader.emplace(std::move(**connection));
        return {};
    }

    template <class Answer, class Read>
    HKResult<Answer> outcome(Worker& worker, Answer whenEmpty, Read& read) {
        if (const auto connected = connect(worker); !connected) return std::unexpected(connected.error());
        if (!worker.reader) return whenEmpty;
        auto answered =
            attempt(database.name(), [&] { return std::optional<HKResult<Answer>>(read(*worker.reader)); });
        if (answered) return std::move(**answered);
        worker.reader.reset();  // a file that was put in place of a bad one is opened anew
        return std::unexpected(healthError(answered.error()));
    }

    /// Lets `change` write, one at a time.
    template <class Change>
    void write(HKHandler<void> completion, Change change) {
        pool.add([this, completion = std::move(completion), change = std::move(change)](Worker&) mutable {
            const auto written = [&] {
                const std::scoped_lock lock(writing);
                return change(writer);
            }();
            if (!written) return completion(std::unexpected(healthError(written.error())));
            completion({});
        });
    }

    /// Lets `act` store or remove samples, if they can be samples at all.
    void change(std::vector<HKQuantitySample> samples, HKHandler<void> completion,
                StoreResult<> (*act)(SampleWriter&, std::span<const HKQuantitySample>)) {
        if (!std::ranges::all_of(samples, isSound)) {
            completion(std::unexpected(invalidArgument("A sample has no amount or no duration.")));
            return;
        }
        write(std::move(completion),
              [samples = std::move(samples), act](SampleWriter& own) { return act(own, samples); });
    }
};

SqliteHealthStore::SqliteHealthStore(MainExecutor& executor, HealthDatabase& database, const ZoneRules& zone,
                                     std::optional<Date> horizon, std::size_t highestThreadCount)
    : state_(std::make_unique<State>(executor, database, zone, horizon, highestThreadCount)) {}
SqliteHealthStore::~SqliteHealthStore() = default;

void SqliteHealthStore::getRequestStatusForAuthorization(const HKTypeSets&,
                                                         HKHandler<HKAuthorizationRequestStatus> completion) {
    using enum HKAuthorizationRequestStatus;
    state_->answer(std::move(completion), shouldRequest, [](HealthReader& reader) {
        return HKResult<HKAuthorizationRequestStatus>(reader.isConnected() ? unnecessary : shouldRequest);
    });
}

void SqliteHealthStore::requestAuthorization(const HKTypeSets&, HKHandler<void> completion) {
    completion({});
}

void SqliteHealthStore::execute(HKStatisticsQuery query) {
    const HKPredicate& predicate = query.quantitySamplePredicate;
    const Interval interval{predicate.start, predicate.end};
    HKStatistics empty;
    empty.interval = interval;
    state_->answer(std::move(query.completionHandler), std::move(empty),
                   [type = std::move(query.quantityType), predicate = state_->visible(predicate),
                    options = query.options, interval](HealthReader& reader) -> HKResult<HKStatistics> {
                       auto statistics = reader.statistics(type, predicate, options, {&interval, 1});
                       if (!statistics) return std::unexpected(std::move(statistics.error()));
                       return std::move(statistics->front());
                   });
}

void SqliteHealthStore::execute(HKStatisticsCollectionQuery query) {
    const DateComponents step = query.intervalComponents;
    const HKPredicate& predicate = query.quantitySamplePredicate;
    if (std::min(step.day, step.hour) != 0 || std::max(step.day, step.hour) < 1) {
        query.initialResultsHandler(
            std::unexpected(invalidArgument("The intervals of a collection are whole days or whole hours.")));
        return;
    }
    auto intervals = collectionIntervals(state_->zone, query.anchorDate, predicate.end, step);
    if (intervals.size() == highestIntervalCount) {
        query.initialResultsHandler(std::unexpected(invalidArgument("The collection has too many intervals.")));
        return;
    }
    std::vector<HKStatistics> empty(intervals.size());
    for (std::size_t i = 0; i < intervals.size(); ++i) empty[i].interval = intervals[i];
    state_->answer(std::move(query.initialResultsHandler), std::move(empty),
                   [type = std::move(query.quantityType), predicate = state_->visible(predicate),
                    options = query.options, intervals = std::move(intervals)](HealthReader& reader) {
                       return reader.statistics(type, predicate, options, intervals);
                   });
}

void SqliteHealthStore::execute(HKSampleQuery query) {
    auto completion = std::move(query.resultsHandler);
    query.predicate = state_->visible(query.predicate);
    state_->answer(std::move(completion), std::vector<HKQuantitySample>(),
                   [query = std::move(query)](HealthReader& reader) {
                       return HKResult<std::vector<HKQuantitySample>>(reader.samples(query));
                   });
}

void SqliteHealthStore::execute(HKWorkoutQuery query) {
    state_->answer(std::move(query.resultsHandler), std::vector<StoredWorkout>(),
                   [interval = query.interval](HealthReader& reader) {
                       return HKResult<std::vector<StoredWorkout>>(reader.workouts(interval));
                   });
}

void SqliteHealthStore::execute(HKWorkoutRouteQuery query) {
    state_->answer(std::move(query.resultsHandler), std::vector<StoredRoute>(),
                   [workout = query.workout](HealthReader& reader) {
                       return HKResult<std::vector<StoredRoute>>(reader.routes(workout));
                   });
}

void SqliteHealthStore::recall(std::string key, HKQuantityType type, HKHandler<RecalledText> completion) {
    state_->answer(std::move(completion), RecalledText(),
                   [key = std::move(key), type = std::move(type)](HealthReader& reader) {
                       return HKResult<RecalledText>(reader.recall(key, type.identifier));
                   });
}

void SqliteHealthStore::keep(DerivedDocument document, std::int64_t state, HKHandler<void> completion) {
    state_->write(std::move(completion), [document = std::move(document), state](SampleWriter& writer) {
        return writer.keep(document, state);
    });
}

void SqliteHealthStore::save(std::vector<HKQuantitySample> samples, HKHandler<void> completion) {
    state_->change(std::move(samples), std::move(completion), storeSamples);
}

void SqliteHealthStore::deleteSamples(std::vector<HKQuantitySample> samples, HKHandler<void> completion) {
    state_->change(std::move(samples), std::move(completion), removeSamples);
}

void SqliteHealthStore::enableBackgroundDelivery(const HKQuantityType&, HKUpdateFrequency,
                                                 HKHandler<void> completion) {
    completion({});
}

Subscription SqliteHealthStore::observeNewSamples(const HKQuantityType& type,
                                                  std::move_only_function<void()> observer) {
    return state_->news.observe(type.identifier, std::move(observer));
}

}  // namespace pedvar
