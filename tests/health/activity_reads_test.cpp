#include "health/activity_reads.h"

#include "support/fake_health_store.h"
#include "support/fake_log.h"
#include "support/fake_zone.h"
#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <limits>
#include <vector>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

constexpr Day springDay{2024y / March / 31};    // the clock skips 02:00 to 03:00
constexpr Day autumnDay{2024y / October / 27};  // the clock shows 02:00 to 03:00 twice
constexpr Day lateDay{2024y / December / 1};    // the clock skips 00:00 to 01:00
constexpr auto priority = QueryPriority::normal;
const HKQuantityType stepType{HKQuantityTypeIdentifierStepCount};

struct Activity {
    FakeZone zone{1h,
                  {{utc(2024y / March / 31, 1h), 2h},
                   {utc(2024y / October / 27, 1h), 1h},
                   {utc(2024y / November / 30, 23h), 2h}}};
    Calendar calendar{zone, 2};
    VirtualTime time;
    FakeHealthStore store{zone};
    FakeLog log;
    HealthDiagnostics diagnostics{log};
    GatedReads gated{time, store, diagnostics};
    ActivityReads reads{gated};

    Date at(Day day, Seconds clock) const { return calendar.instant(LocalTime(day) + clock); }

    /// The hours of `day` that hold steps.
    std::vector<std::pair<int, std::int64_t>> walkedHours(Day day) {
        std::vector<std::pair<int, std::int64_t>> hours;
        const auto entries = time.run(reads.fetchHourlyData(day, calendar, priority));
        CHECK(entries.size() == 24);
        for (const HourlyStepData& entry : entries) {
            if (entry.steps > 0) hours.emplace_back(entry.hour, entry.steps);
        }
        return hours;
    }
};

using Hours = std::vector<std::pair<int, std::int64_t>>;

}  // namespace

TEST_CASE("a total is truncated, whatever number it is") {
    CHECK(wholeNumber(9.99) == 9);
    CHECK(wholeNumber(0.9999999999999999) == 1);  // ten tenths added up
    CHECK(wholeNumber(-3) == 0);
    CHECK(wholeNumber(std::numeric_limits<double>::quiet_NaN()) == 0);
    CHECK(wholeNumber(std::numeric_limits<double>::infinity()) == 1'000'000'000'000'000);
}

TEST_CASE_FIXTURE(Activity, "the hours of a day with shares of samples add up to the day") {
    const Day day = autumnDay - days(1);
    for (int hour : {0, 1, 2, 23}) store.addSteps(100.0 / 3, at(day, hours(hour)));
    CHECK(walkedHours(day) == Hours{{0, 33}, {1, 33}, {2, 34}, {23, 33}});
    CHECK(time.run(reads.fetchSteps(at(day, 0h), at(day, 24h), priority)) == 133);
}

TEST_CASE_FIXTURE(Activity, "on days when the clocks change each hour keeps its place") {
    store.addSteps(1, at(springDay, 1h + 59min));
    store.addSteps(20, at(springDay, 3h));
    CHECK(walkedHours(springDay) == Hours{{1, 1}, {3, 20}});

    store.addSteps(1, at(autumnDay, 2h));
    store.addSteps(20, at(autumnDay, 2h) + 1h);  // 02:00 again
    store.addSteps(300, at(autumnDay, 23h + 59min));
    CHECK(walkedHours(autumnDay) == Hours{{2, 21}, {23, 300}});
    const auto steps =
        time.run(reads.fetchDailySteps(autumnDay - days(1), autumnDay + days(1), calendar, priority));
    CHECK(steps == std::vector<std::int64_t>{0, 321, 0});

    store.addSteps(5, calendar.start(lateDay));
    store.addSteps(7, at(lateDay, 23h));
    CHECK(walkedHours(lateDay) == Hours{{1, 5}, {23, 7}});
}

TEST_CASE_FIXTURE(Activity, "a failed read yields no hours and no windows, and zeros among the days") {
    store.addSteps(5, at(springDay, 12h));
    store.add(HKQuantityTypeIdentifierDistanceWalkingRunning, HKUnit::meter(), 4, at(springDay, 12h));
    store.failures.emplace(stepType.identifier, HKError{"com.example.health", 6, "The store is locked"});
    CHECK(time.run(reads.fetchHourlyData(springDay, calendar, priority)).empty());
    CHECK(time.run(reads.fetchTimeWindowSteps(springDay, springDay, calendar, priority)).empty());
    const auto data = time.run(reads.fetchDailyData(springDay, springDay, calendar, priority));
    CHECK(data == std::vector<DailyStepData>{{"2024-03-31", at(springDay, 0h), 0, 4, 0, 0}});
}

TEST_CASE_FIXTURE(Activity, "a sum holds what starts in its interval and is of its dimension") {
    store.addSteps(1, at(springDay, -1s));
    store.addSteps(20, at(springDay, 0s));
    store.addSteps(300, at(springDay, 24h) - 1s);
    store.addSteps(4000, at(springDay, 24h));
    const auto metrics = time.run(reads.fetchDayMetrics(springDay, calendar, priority));
    CHECK(metrics.steps == 320);
    CHECK(metrics.previousDaySteps == 1);
    store.add(HKQuantityTypeIdentifierStepCount, HKUnit::meter(), 5, at(autumnDay, 12h));
    CHECK(time.run(reads.fetchSteps(at(autumnDay, 0h), at(autumnDay, 24h), priority)) == 0);
}

TEST_CASE_FIXTURE(Activity, "the edges of a day are before 09:00, from 21:00 and before 01:00") {
    const Day day = springDay + days(1);
    store.addSteps(1, at(day, 0h));
    store.addSteps(20, at(day, 1h));
    store.addSteps(300, at(day, 9h));
    store.addSteps(4000, at(day, 21h));
    const auto windows = time.run(reads.fetchTimeWindowSteps(springDay, day, calendar, priority));
    REQUIRE(windows.size() == 2);
    CHECK(windows[1] == DailyTimeWindowSteps{"2024-04-01", at(day, 0h), 21, 4000, 1});
}

TEST_CASE_FIXTURE(Activity, "a total is split into what we and what others wrote, and our windows are merged") {
    const HKSource own{1, "Pedvar", true};
    const HKSource phone{2, "Phone", false};
    const auto add = [&](double steps, Seconds from, Seconds length, const HKSource& source) {
        store.add(HKQuantityTypeIdentifierStepCount, HKUnit::count(), steps, at(springDay, from), source, length);
    };
    add(10, 12h, 10min, own);
    add(20, 12h + 5min, 10min, own);
    add(5, 12h + 6min, 1min, own);
    add(30, 14h, 10min, own);
    add(500, 12h, 10min, phone);
    const Interval day = calendar.interval(springDay);
    const auto split = time.run(reads.fetchSourceSplit(stepType, HKUnit::count(), day, priority));
    CHECK(split == SourceSplit{565, 65, 500, {own}, {phone}});

    const auto windows = time.run(reads.ownSampleWindows(stepType, day, split.ownSources, priority));
    CHECK(windows == std::vector<Interval>{{at(springDay, 12h), at(springDay, 12h + 15min)},
                                           {at(springDay, 14h), at(springDay, 14h + 10min)}});
    CHECK(time.run(reads.ownSampleWindows(stepType, day, {}, priority)).empty());
}
