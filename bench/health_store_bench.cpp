/// The health store against plain SQL on the same samples.
#include "bench.h"

#include "linux/health/health_database.h"
#include "linux/health/health_reader.h"
#include "linux/health/sample_writer.h"

#include <sqlite3.h>
#include <stdlib.h>

#include <array>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace pedvar::bench {
namespace {

constexpr std::int64_t days = 5 * 365;
constexpr Milliseconds dayLength = 86'400'000;
constexpr std::array types{HKQuantityTypeIdentifierStepCount, HKQuantityTypeIdentifierDistanceWalkingRunning,
                           HKQuantityTypeIdentifierActiveEnergyBurned, HKQuantityTypeIdentifierAppleExerciseTime,
                           HKQuantityTypeIdentifierFlightsClimbed};
constexpr std::array units{"count", "m", "kcal", "min", "count"};

/// Five years of a watch that is worn by day and a phone that is carried half of the time, 1,200 samples a day.
std::vector<SampleRow> fiveYears(std::int32_t series, std::int32_t watch, std::int32_t phone) {
    std::mt19937 random(1);
    const auto number = [&](std::int64_t lowest, std::int64_t highest) {
        return std::uniform_int_distribution<std::int64_t>(lowest, highest)(random);
    };
    std::vector<SampleRow> rows;
    for (std::int64_t day = 0; day < days; ++day) {
        const Milliseconds morning = day * dayLength + 7 * 3'600'000;
        for (Milliseconds time = morning; time < morning + 16 * 3'600'000; time += number(20, 105) * 1000) {
            rows.push_back({series, watch, time, number(10, 60) * 1000, static_cast<double>(number(1, 90))});
        }
        for (Milliseconds time = morning; time < morning + 16 * 3'600'000; time += number(30, 370) * 1000) {
            rows.push_back({series, phone, time, number(20, 600) * 1000, static_cast<double>(number(1, 300))});
        }
    }
    return rows;
}

/// Rows as people keep them without further thought: a table and an index on type and start.
class PlainStore {
public:
    explicit PlainStore(const std::filesystem::path& path)
        : connection_(created(path), Connection::Access::write, {}) {
        connection_.runScript(
            "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA cache_size = -16384;"
            "CREATE TABLE samples (type INTEGER, start INTEGER, duration INTEGER, source INTEGER, value);"
            "CREATE INDEX by_start ON samples (type, start)");
    }

    void insert(std::span<const SampleRow> rows) {
        Transaction transaction(connection_, Transaction::Kind::write);
        for (const SampleRow& row : rows) {
            connection_.run("INSERT INTO samples VALUES (?, ?, ?, ?, ?)", row.series, row.start, row.duration,
                            row.source, row.value);
        }
        transaction.commit();
    }

    double sum(std::int32_t type, Milliseconds from, Milliseconds to) {
        Rows rows = connection_.query("SELECT sum(value) FROM samples WHERE type = ? AND start >= ? AND start < ?",
                                      type, from, to);
        rows.next();
        return rows.real(0);
    }

    double sumsBy(std::int32_t type, Milliseconds length) {
        Rows rows =
            connection_.query("SELECT sum(value) FROM samples WHERE type = ? GROUP BY start / ?", type, length);
        double last = 0;
        while (rows.next()) last = rows.real(0);
        return last;
    }

private:
    static std::string created(const std::filesystem::path& path) {
        sqlite3* database = nullptr;
        sqlite3_open(path.c_str(), &database);
        sqlite3_exec(database, "PRAGMA user_version = 1", nullptr, nullptr, nullptr);
        sqlite3_close(database);
        return path.string();
    }

    Connection connection_;
};

/// The one table of the store, fed row by row.
double plainLoop(const std::filesystem::path& path, std::span<const SampleRow> rows) {
    HealthDatabase database(path);
    auto connection = database.connectForWriting();
    return secondsOf([&] {
        for (; !rows.empty(); rows = rows.subspan(std::min<std::size_t>(rows.size(), 10'000))) {
            Transaction transaction(*connection, Transaction::Kind::write);
            for (const SampleRow& row : rows.first(std::min<std::size_t>(rows.size(), 10'000))) {
                connection->run("INSERT OR IGNORE INTO samples VALUES (?, ?, ?, ?, ?, NULL)", row.series,
                                row.start, row.duration, row.source, row.value);
            }
            transaction.commit();
        }
    });
}

std::vector<Interval> intervalsOf(Milliseconds from, Milliseconds length, std::int64_t count) {
    std::vector<Interval> intervals;
    for (std::int64_t i = 0; i < count; ++i) {
        intervals.push_back({dateOfMilliseconds(from + i * length), dateOfMilliseconds(from + (i + 1) * length)});
    }
    return intervals;
}

void measure(const std::filesystem::path& folder) {
    HealthDatabase database(folder / "health.sqlite");
    SampleWriter writer(database);
    const std::int32_t watch = *writer.source({SourceKind::watch, "Watch", ""});
    const std::int32_t phone = *writer.source({SourceKind::phone, "Phone", ""});
    std::vector<std::int32_t> series;
    for (std::size_t i = 0; i < types.size(); ++i) series.push_back(*writer.series(types[i], units[i]));
    std::vector<SampleRow> rows = fiveYears(series[0], watch, phone);
    const double count = static_cast<double>(rows.size());

    const auto writeAll = [&] {
        for (std::span<const SampleRow> rest = rows; !rest.empty();) {
            const auto batch = rest.first(std::min<std::size_t>(rest.size(), 10'000));
            writer.write(batch).value();
            rest = rest.subspan(batch.size());
        }
    };
    const double loop = plainLoop(folder / "loop.sqlite", rows);
    const double feed = secondsOf(writeAll);
    row("write samples / a statement a row", feed / loop, 0.6,
        std::to_string(feed / count * 1e9) + " ns a sample");
    const double totals = secondsOf([&] { writer.refreshTotals().value(); });
    row("make all totals / write samples", totals / feed, 0.6,
        std::to_string(totals / count * 1e9) + " ns a sample");
    const double again = secondsOf(writeAll);
    row("write the same again / write samples", again / feed, 1.2, milliseconds(again));
    database.connectForWriting()->runScript("PRAGMA wal_checkpoint(TRUNCATE)");
    const double bytes = static_cast<double>(std::filesystem::file_size(database.path())) / count;
    row("bytes a sample, with totals", bytes, 48, std::to_string(static_cast<int>(count)) + " samples");

    PlainStore plain(folder / "plain.sqlite");
    plain.insert(rows);
    for (std::size_t i = 1; i < series.size(); ++i) {  // the other types for the last days only
        const std::size_t first = rows.size() - rows.size() / 50;
        for (std::size_t k = first; k < rows.size(); ++k) rows[k].series = series[i];
        const auto last = std::span(rows).subspan(first);
        writer.write(last).value();
        plain.insert(last);
    }
    writer.refreshTotals().value();

    HealthReader reader(std::move(**database.connectForReading()));
    const auto sums = [&](const char* type, const std::vector<Interval>& intervals) {
        const HKPredicate predicate{intervals.front().start, intervals.back().end,
                                    HKQueryOptions::strictStartDate};
        keep(reader.statistics({type}, predicate, HKStatisticsOptions::cumulativeSum, intervals));
    };
    const auto compare = [](const char* job, double goal, int rounds, int repeats, const Run& ours,
                            const Run& peer) {
        const auto repeated = [&](const Run& run) {
            return [&run, repeats] {
                for (int i = 0; i < repeats; ++i) run();
            };
        };
        const auto seconds = inTurn(rounds, {repeated(ours), repeated(peer)});
        row(job, seconds[0] / seconds[1], goal, milliseconds(seconds[0] / repeats));
    };
    const Milliseconds lastDay = (days - 1) * dayLength, hour = 3'600'000;
    const auto allDays = intervalsOf(0, dayLength, days);
    const auto oneDay = intervalsOf(lastDay, hour, 24);
    compare(
        "daily sums of 5 years / plain SQL", 0.01, 5, 1, [&] { sums(types[0], allDays); },
        [&] { plain.sumsBy(series[0], dayLength); });
    compare(
        "28 x 24 hours / plain SQL", 0.01, 5, 10,
        [&] { sums(types[0], intervalsOf(lastDay - 27 * dayLength, hour, 28 * 24)); },
        [&] {
            for (int i = 0; i < 28 * 24; ++i) {
                const Milliseconds from = lastDay - 27 * dayLength + i * hour;
                plain.sum(series[0], from, from + hour);
            }
        });
    compare(
        "24 hours / plain SQL", 0.025, 5, 100, [&] { sums(types[0], oneDay); },
        [&] {
            for (int i = 0; i < 24; ++i) plain.sum(series[0], lastDay + i * hour, lastDay + (i + 1) * hour);
        });
    const auto today = [&](Milliseconds length) {
        return [&, length] {
            for (const char* type : types) sums(type, intervalsOf(lastDay, length, 1));
        };
    };
    const Run plainToday = [&] {
        for (const std::int32_t type : series) plain.sum(type, lastDay, lastDay + dayLength);
    };
    compare("five totals of today / plain SQL", 1. / 15, 5, 200, today(dayLength), plainToday);
    compare("five totals until now, within a quarter hour / plain SQL", 1, 5, 200, today(15 * hour + 400'000),
            plainToday);

    auto connection = database.connectForWriting();
    Milliseconds next = days * dayLength;
    const auto bare = [&] {
        Transaction transaction(*connection, Transaction::Kind::write);
        connection->run("INSERT INTO samples VALUES (?, ?, ?, ?, ?, NULL)", series[0], (next += 60'000) + 1,
                        30'000, phone, 5);
        transaction.commit();
    };
    const auto live = [&] {
        const SampleRow sample{series[0], phone, next += 60'000, 30'000, 5};
        writer.writeLive({&sample, 1}).value();
    };
    compare("live sample with its totals / bare insert", 10, 5, 300, live, bare);
}

}  // namespace
}  // namespace pedvar::bench

int main() {
    std::string folder = (std::filesystem::temp_directory_path() / "pedvar-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) return 1;
    pedvar::bench::measure(folder);
    std::filesystem::remove_all(folder);
}
