#include "linux/health/sample_writer.h"

#include "core/check.h"
#include "linux/health/batch_table.h"
#include "linux/health/cumulative_types.h"
#include "linux/health/health_database.h"
#include "linux/health/source_order.h"
#include "linux/health/totals_keeper.h"
#include "linux/health/workout_table.h"
#include "platform/fault_point.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>

namespace pedvar {
namespace {

constexpr std::size_t fewSamples = 64;    // counting the days of more is faster than counting around each
constexpr std::size_t daysPerStep = 128;  // of totals made in one transaction

auto contentOf(const SampleRow& row) {
    return std::tie(row.series, row.start, row.duration, row.source, row.value);
}

bool isBefore(const SampleRow& a, const SampleRow& b) {
    return contentOf(a) < contentOf(b);
}

Span spanOf(const SampleRow& row) {
    return {row.start, row.start + row.duration};
}

DayNumber startDay(const SampleRow& row) {
    return dayOf(row.start);
}

/// Calls `act` with each longest run of neighbours in `rows` that are alike in `property`.
template <class Property, class Act>
void forEachRun(std::span<const SampleRow> rows, Property property, Act act) {
    while (!rows.empty()) {
        const auto value = property(rows.front());
        const auto end = std::ranges::find_if(rows, [&](const SampleRow& row) { return property(row) != value; });
        const auto length = static_cast<std::size_t>(end - rows.begin());
        act(rows.first(length));
        rows = rows.subspan(length);
    }
}

std::unexpected<StoreError> takenBack() {
    return std::unexpected(StoreError{StoreError::Kind::other,
                                      Phrase("The import was taken back while it ran. Import the file again.")});
}

}  // namespace

struct SampleWriter::State {
    struct Series {
        std::string type;
        bool isCumulative;
    };
    /// What a transaction has done, to be believed when it is committed.
    struct Outcome {
        WriteCounts counts;
        std::set<std::int32_t> series;  // with new samples
    };

    explicit State(HealthDatabase& healthDatabase) : database(healthDatabase) {}

    HealthDatabase& database;
    std::optional<Connection> connection;
    std::optional<BatchTable> batch;
    std::map<std::pair<std::string, std::string>, std::int32_t, std::less<>> seriesNumbers;  // by type and unit
    std::map<std::int32_t, Series> series;
    std::map<SourceDescription, std::int32_t> sources;
    std::optional<std::int64_t> import;  // the number of the running one
    std::vector<SampleRow> sorted;       // kept for its memory

    template <class Action>
    auto attempt(Action&& action) -> decltype(pedvar::attempt("", action)) {
        if (!connection) {
            auto opened = database.connectForWriting();
            if (!opened) return std::unexpected(std::move(opened.error()));
            connection.emplace(std::move(*opened));
            batch.emplace(*connection);
        }
        return pedvar::attempt(database.name(), action);
    }

    void checkRows(std::span<const SampleRow> rows) const {
        for (const SampleRow& row : rows) {
            check(series.contains(row.series), "a sample names a series that its writer does not know");
            check(row.duration >= 0 && std::isfinite(row.value), "a sample is not one");
        }
    }

    std::int32_t addSeries(std::string_view type, std::string_view unit) {
        connection->run("INSERT OR IGNORE INTO series (identifier, unit) VALUES (?, ?)", type, unit);
        return static_cast<std::int32_t>(
            connection->number("SELECT id FROM series WHERE identifier = ? AND unit = ?", type, unit));
    }

    /// The rows in the order of their key, so that neighbours in time become neighbours in the file.
    std::span<const SampleRow> ordered(std::span<const SampleRow> rows) {
        if (std::ranges::is_sorted(rows, isBefore)) return rows;
        sorted.assign(rows.begin(), rows.end());
        std::ranges::sort(sorted, isBefore);
        return sorted;
    }

    /// Adds rows of one series; how many were new.
    std::int64_t insert(std::span<const SampleRow> rows, Outcome& outcome) {
        batch->hold(rows);
        const std::int64_t added = connection->run(
            "INSERT OR IGNORE INTO samples (series, start, duration, source, value, import) "
            "SELECT series, start, duration, source, value, ? FROM batch",
            import);
        if (added == 0) return 0;
        outcome.counts.samplesAdded += added;
        outcome.series.insert(rows.front().series);
        return added;
    }

    /// Notes how long samples of the series can be, before anybody looks back as far as that.
    void raiseLongest(std::span<const SampleRow> rows) {
        const Milliseconds longest = std::ranges::max(rows, {}, &SampleRow::duration).duration;
        connection->run("UPDATE series SET longest = ?1 WHERE id = ?2 AND longest < ?1", longest,
                        rows.front().series);
    }

    void insertSeries(std::span<const SampleRow> rows, Outcome& outcome) {
        raiseLongest(rows);
        if (!series.at(rows.front().series).isCumulative) {
            insert(rows, outcome);
            return;
        }
        TotalsKeeper totals(*connection);
        forEachRun(rows, startDay, [&](std::span<const SampleRow> day) {
            if (insert(day, outcome) == 0) return;
            Span extent = spanOf(day.front());
            for (const SampleRow& row : day) extent.end = std::max(extent.end, countedSpan(spanOf(row)).end);
            totals.markStale(day.front().series, startDay(day.front()), extent, day.back().start);
        });
    }

    void insertLive(const SampleRow& row, Outcome& outcome) {
        raiseLongest({&row, 1});
        if (insert({&row, 1}, outcome) == 0 || !series.at(row.series).isCumulative) return;
        TotalsKeeper(*connection).update(row.series, spanOf(row));
    }

    void removeLive(const SampleRow& row) {
        const std::int64_t removed = connection->run(
            "DELETE FROM samples WHERE series = ? AND start = ? AND duration = ? AND source = ? AND value = ?",
            row.series, row.start, row.duration, row.source, row.value);
        if (removed == 0 || !series.at(row.series).isCumulative) return;
        TotalsKeeper(*connection).updateAfterRemoval(row.series, spanOf(row));
    }

    /// Notes that the import has added something; false when it was taken back while it ran. Its numbers of
    /// sources may be no more then.
    bool noteImport(bool hasAdded) {
        return !import || connection->run("UPDATE imports SET has_added = max(has_added, ?) WHERE number = ?",
                                          std::int64_t{hasAdded}, *import) == 1;
    }

    void tell(const Outcome& outcome) {
        std::vector<std::string> types;
        for (const std::int32_t number : outcome.series) types.push_back(series.at(number).type);
        if (!types.empty()) database.tellSamplesAdded(types);
    }
};

SampleWriter::SampleWriter(HealthDatabase& database) : state_(std::make_unique<State>(database)) {}
SampleWriter::~SampleWriter() = default;
SampleWriter::SampleWriter(SampleWriter&&) noexcept = default;

StoreResult<std::int32_t> SampleWriter::series(std::string_view type, std::string_view unit) {
    std::pair key{std::string(type), std::string(unit)};
    if (const auto known = state_->seriesNumbers.find(key); known != state_->seriesNumbers.end())
        return known->second;
    return state_->attempt([&] {
        const std::int32_t number = state_->addSeries(type, unit);
        state_->series.try_emplace(number, State::Series{std::string(type), isCumulative(type)});
        state_->seriesNumbers.emplace(std::move(key), number);
        return number;
    });
}

StoreResult<std::int32_t> SampleWriter::source(const SourceDescription& description) {
    if (const auto known = state_->sources.find(description); known != state_->sources.end()) return known->second;
    return state_->attempt([&]() -> StoreResult<std::int32_t> {
        Transaction transaction(*state_->connection, Transaction::Kind::write);
        const AddedSource added = addSource(*state_->connection, description, state_->import);
        if (added.isNew && !state_->noteImport(true)) return takenBack();
        transaction.commit();
        state_->sources.emplace(description, added.number);
        return added.number;
    });
}

StoreResult<> SampleWriter::beginImport() {
    return state_->attempt([&] {
        Connection& connection = *state_->connection;
        Transaction transaction(connection, Transaction::Kind::write);
        const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
        connection.run("INSERT INTO imports (begun) VALUES (?)", millisecondsOf(dateOf(now)));
        const std::int64_t number = connection.lastInsertedRow();
        transaction.commit();
        state_->import = number;
    });
}

StoreResult<WriteCounts> SampleWriter::write(std::span<const SampleRow> samples,
                                             std::span<const WorkoutRow> workouts) {
    state_->checkRows(samples);
    return state_->attempt([&]() -> StoreResult<WriteCounts> {
        WorkoutTable table(*state_->connection, state_->import);
        std::vector<std::vector<DeflatedRoute>> routes;
        for (const WorkoutRow& workout : workouts) routes.push_back(table.newRoutes(workout));

        State::Outcome outcome;
        Transaction transaction(*state_->connection, Transaction::Kind::write);
        forEachRun(
            state_->ordered(samples), [](const SampleRow& row) { return row.series; },
            [&](std::span<const SampleRow> rows) { state_->insertSeries(rows, outcome); });
        for (std::size_t i = 0; i < workouts.size(); ++i) {
            const auto added = table.add(workouts[i], routes[i]);
            outcome.counts.workoutsAdded += added.isNew ? 1 : 0;
            outcome.counts.routesAdded += added.routes;
        }
        const auto& counts = outcome.counts;
        if (!state_->noteImport(counts.samplesAdded + counts.workoutsAdded + counts.routesAdded > 0)) {
            return takenBack();
        }
        transaction.commit();
        faultPoint("batch written");
        state_->tell(outcome);
        return outcome.counts;
    });
}

StoreResult<WriteCounts> SampleWriter::writeLive(std::span<const SampleRow> samples) {
    if (samples.size() > fewSamples) {
        const auto counts = write(samples);
        if (!counts) return counts;
        if (auto refreshed = refreshTotals(); !refreshed) return std::unexpected(std::move(refreshed.error()));
        return counts;
    }
    state_->checkRows(samples);
    return state_->attempt([&] {
        State::Outcome outcome;
        Transaction transaction(*state_->connection, Transaction::Kind::write);
        for (const SampleRow& row : samples) state_->insertLive(row, outcome);
        transaction.commit();
        state_->tell(outcome);
        return outcome.counts;
    });
}

StoreResult<> SampleWriter::removeLive(std::span<const SampleRow> samples) {
    state_->checkRows(samples);
    return state_->attempt([&] {
        Transaction transaction(*state_->connection, Transaction::Kind::write);
        for (const SampleRow& row : samples) state_->removeLive(row);
        transaction.commit();
    });
}

StoreResult<> SampleWriter::keep(const DerivedDocument& document, std::int64_t state) {
    return state_->attempt([&] {
        Connection& connection = *state_->connection;
        Transaction transaction(connection, Transaction::Kind::write);
        if (stateOf(connection, document.type.identifier) != state) return;
        connection.run("INSERT OR REPLACE INTO derived (key, type, until, text) VALUES (?, ?, ?, ?)",
                       std::string_view(document.key), std::string_view(document.type.identifier),
                       millisecondsOf(document.until), std::string_view(document.text));
        transaction.commit();
    });
}

StoreResult<> SampleWriter::refreshTotals(const std::function<bool(double)>& progress) {
    return state_->attempt([&] {
        TotalsKeeper totals(*state_->connection);
        faultPoint("before totals");
        const std::int64_t all = totals.staleCount();
        std::int64_t made = 0;
        for (bool goesOn = all > 0; goesOn;) {
            Transaction transaction(*state_->connection, Transaction::Kind::write);
            const auto count = static_cast<std::int64_t>(totals.makeSome(daysPerStep));
            transaction.commit();
            faultPoint("totals written");
            made += count;
            const double share = static_cast<double>(made) / static_cast<double>(std::max(all, made));
            goesOn = count > 0 && (!progress || progress(share));
        }
        faultPoint("after totals");
    });
}

}  // namespace pedvar
