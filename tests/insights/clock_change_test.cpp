#include "insights/calendar_metric_store.h"
#include "insights/step_pace_baseline_store.h"
#include "linux/system/absl_zone.h"
#include "support/manager_fixture.h"

#include <doctest/doctest.h>

#include <map>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

/// Like `ManagerFixture`, in a real zone.
struct Place {
    explicit Place(const char* name) : zone(AbslZone::named(name)) {}

    std::unique_ptr<AbslZone> zone;
    std::vector<std::string> trace;
    FakeLocale locale{*zone};
    VirtualTime time;
    FakeHealthStore store{*zone};
    FakeDefaults defaults{trace};
    NlohmannJsonParser json;
    SettingsStore settings{defaults, json, locale};
    FakeLog log;
    HealthDiagnostics diagnostics{log};
    FakeStepGoalNotifications notifications{trace};
    HealthKitManager manager{time, time, store, settings, diagnostics, notifications};
    StepPaceBaselineStore pace{time, time, settings, defaults, json, log};
    CalendarMetricStore page{time, time, settings, manager.reads()};

    void checkAround(year_month_day date) {
        std::map<Day, std::array<std::int64_t, 24>> walked;
        std::int64_t steps = 100;
        for (Date moment = utc(date) - 72h; moment < utc(date) + 72h; moment += 30min) {
            store.addSteps(static_cast<double>(++steps), moment);
            const LocalTime shown = zone->localTime(moment);
            const Day day = floor<days>(shown);
            walked[day][static_cast<std::size_t>(floor<hours>(shown - day).count())] += steps;
        }
        time.setClock(utc(date) + 60h);
        pace.refresh(manager);
        const std::vector<Day> changed{Day(date) - days(1), Day(date), Day(date) + days(1)};
        page.load(changed, CalendarMetric::steps);
        time.settle();
        CHECK(pace.days->size() == 28);
        for (const Day day : changed) {
            const auto stored = std::ranges::find(*pace.days, settings.calendar().start(day), &PaceDay::date);
            REQUIRE(stored != pace.days->end());
            CHECK(stored->hourly == walked[day]);
            CHECK(page.value(day, CalendarMetric::steps) == cumulativeCurve(walked[day]).back());
        }
        checkStreak(walked);
    }

    /// With a goal that the day before yesterday meets exactly, and one that it misses by a step.
    void checkStreak(std::map<Day, std::array<std::int64_t, 24>>& walked) {
        const Day today = settings.calendar().day(time.now());
        const auto total = [&](Day day) { return static_cast<std::int64_t>(cumulativeCurve(walked[day]).back()); };
        for (const std::int64_t goal : {total(today - days(2)), total(today - days(2)) + 1}) {
            REQUIRE(settings.setDailyGoal(goal, today));
            time.run(manager.updateStreaks());
            std::int64_t expected = total(today) >= goal ? 1 : 0;
            for (Day day = today - days(1); total(day) >= goal; day -= days(1)) ++expected;
            CHECK(manager.currentStreak == expected);
        }
    }
};

}  // namespace

TEST_CASE("around clock changes baseline, calendar and streak go by the hours that the clock showed") {
    Place("Europe/Berlin").checkAround(2024y / March / 31);
    Place("Europe/Berlin").checkAround(2024y / October / 27);
    Place("America/New_York").checkAround(2024y / March / 10);
    Place("America/New_York").checkAround(2024y / November / 3);
    Place("America/Santiago").checkAround(2024y / September / 8);  // begins at 01:00
    Place("America/Santiago").checkAround(2024y / April / 6);      // shows 23:00 twice
    Place("Australia/Lord_Howe").checkAround(2024y / October / 6);
    Place("Australia/Lord_Howe").checkAround(2024y / April / 7);
    Place("America/Nuuk").checkAround(2024y / March / 30);  // ends at 23:00
}
