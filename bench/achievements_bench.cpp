/// The first evaluation of the badges of ten years, and the one after a new day.
///
/// achievements_bench FOLDER: a data folder of ten years, which is changed.
#include "bench.h"

#include "achievements/achievements_store.h"
#include "health/health_kit_manager.h"
#include "linux/health/health_administration.h"
#include "linux/health/sample_writer.h"
#include "linux/health/sqlite_health_store.h"
#include "linux/system/absent_services.h"
#include "linux/system/clocks.h"
#include "linux/system/event_loop.h"
#include "linux/system/glibc_locale.h"
#include "linux/system/nlohmann_json_parser.h"
#include "linux/system/process_zone.h"
#include "linux/system/sqlite_defaults.h"
#include "linux/system/system_log.h"

using namespace pedvar;
using namespace pedvar::bench;

namespace {

/// What the program builds for a command.
struct Program {
    Program(const std::filesystem::path& folder, Date now)
        : clock(now), database(folder / "health.sqlite"), defaults(folder, SqliteDefaults::Access::readWrite) {}

    /// Seconds of the evaluation, and of storing what it found.
    std::pair<double, double> evaluate() {
        std::optional<AchievementsStore> badges;
        const double evaluation = secondsOf([&] {
            badges.emplace(loop, clock, store, reads, settings, defaults, log);
            loop.run(badges->evaluate());
        });
        return {evaluation, secondsOf([&] { loop.run(badges->remember()).value(); })};
    }

    ProcessZone zone = processZone();
    FixedClock clock;
    GlibcLocale locale{*zone.rules};
    NlohmannJsonParser json;
    SystemLog log;
    EventLoop loop;
    HealthDatabase database;
    SqliteDefaults defaults;
    SettingsStore settings{defaults, json, locale};
    SqliteHealthStore store{loop, database, *zone.rules, std::nullopt, 0};
    HealthDiagnostics diagnostics{log};
    GatedReads gated{loop, store, diagnostics};
    ActivityReads reads{gated};
};

constexpr int days = 3652;

void readHours(Program& program, Day last) {
    const Calendar calendar = program.settings.calendar();
    const HKQuantityType type{HKQuantityTypeIdentifierStepCount};
    const HKPredicate predicate{calendar.start(last - std::chrono::days(days - 1)), calendar.interval(last).end,
                                HKQueryOptions::strictStartDate};
    keep(program.loop.run(program.gated.fetchCollection(type, predicate, {.hour = 1}, QueryPriority::normal)));
}

void forget(Program& program) {
    program.database.connectForWriting()->run("DELETE FROM derived");
    program.defaults.write({{&program.defaults.standard(), "awardsSnapshot", std::nullopt}}).value();
}

/// The steps and metres of one more day, hour by hour.
void addDay(Program& program, Day day) {
    const Calendar calendar = program.settings.calendar();
    SampleWriter writer(program.database);
    const std::int32_t phone = *writer.source({SourceKind::phone, "Phone", ""});
    const std::int32_t steps = *writer.series(HKQuantityTypeIdentifierStepCount, "count");
    const std::int32_t metres = *writer.series(HKQuantityTypeIdentifierDistanceWalkingRunning, "m");
    std::vector<SampleRow> rows;
    for (int hour = 8; hour < 20; ++hour) {
        const Milliseconds start = millisecondsOf(calendar.hour(day, hour).start);
        rows.push_back({steps, phone, start, 600'000, 900});
        rows.push_back({metres, phone, start, 600'000, 650});
    }
    writer.write(rows).value();
    writer.refreshTotals().value();
}

}  // namespace

int main(int count, char** words) {
    if (count != 2) {
        std::fprintf(stderr, "usage: achievements_bench FOLDER\n");
        return 2;
    }
    const Day today = Calendar(*processZone().rules, 2).day(SystemClock().now());
    const auto eveningOf = [](Day day) {
        return Calendar(*processZone().rules, 2).interval(day).end - std::chrono::hours(1);
    };
    std::vector<double> hours, first, next, stored, bare;
    for (int round = 1; round <= 9; ++round) {
        const Day day = today + std::chrono::days(round);
        {
            Program before(words[1], eveningOf(day - std::chrono::days(1)));
            forget(before);
            hours.push_back(secondsOf([&] { readHours(before, today); }));
            first.push_back(before.evaluate().first);
            addDay(before, day);
        }
        Program after(words[1], eveningOf(day));
        const auto [evaluation, storing] = after.evaluate();
        next.push_back(evaluation);
        stored.push_back(storing);
        bare.push_back(secondsOf(
            [&] { after.defaults.write({{&after.defaults.standard(), "bench", std::int64_t{round}}}).value(); }));
    }
    row("badges of ten years, first evaluation / one read of the hourly sums", median(first) / median(hours), 3,
        milliseconds(median(first)) + " to " + milliseconds(median(hours)));
    row("badges after one new day / first evaluation", median(next) / median(first), 1. / 50,
        milliseconds(median(next)));
    row("storing them / one bare write of a setting", median(stored) / median(bare), 4,
        milliseconds(median(stored)));
}
