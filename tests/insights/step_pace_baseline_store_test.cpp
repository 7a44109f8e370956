#include "insights/step_pace_baseline_store.h"

#include "support/manager_fixture.h"

#include <doctest/doctest.h>

#include <algorithm>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

constexpr const char* key = "stepPaceBaselineDays";

struct Pace : ManagerFixture {
    StepPaceBaselineStore pace = newPace();
    StepPaceBaselineStore newPace() { return {time, time, settings, defaults, json, log}; }

    Date start(int daysAgo) const { return settings.calendar().start(today - days(daysAgo)); }
    std::string stored(const char* date) const {
        return std::string(R"({"date":)") + date +
               R"(,"hourly":[0,0,0,0,0,0,0,0,0,9,0,0,0,0,0,0,0,0,0,0,0,0,0,0]})";
    }
    auto writes() const { return std::ranges::count(trace, "standard stepPaceBaselineDays"); }
    void refresh() {
        pace.refresh(manager);
        time.settle();
    }
};

}  // namespace

TEST_CASE_FIXTURE(Pace, "the 28 days before today are read newest first, one at a time, and saved every seven") {
    for (int daysAgo = 0; daysAgo < 30; ++daysAgo) walk(1000, daysAgo);
    store.isHolding = true;
    const auto task = pace.refresh(manager);
    CHECK(pace.isBuilding);
    for (int daysAgo = 1; daysAgo <= 28; ++daysAgo) {
        pace.refresh(manager);
        time.settle();
        REQUIRE(store.running() == 1);
        CHECK(pace.baseline->has_value() == (daysAgo > 5));
        store.answer();
        time.settle();
        CHECK(pace.days->front().date == start(daysAgo));
        CHECK(writes() == daysAgo / 7);
    }
    CHECK(task->isFinished());
    CHECK(!pace.isBuilding);
    CHECK(pace.days->back().date == start(1));
    CHECK(pace.baseline.value()->median[12] == 1000);
    CHECK(!pace.refresh(manager));
    CHECK(newPace().days.value() == pace.days.value());

    store.isHolding = false;
    time.setClock(time.now() + 48h);
    refresh();
    CHECK(pace.days->front().date == start(26));
    CHECK(pace.days->size() == 28);
    CHECK(store.asked.size() == 30);
    CHECK(writes() == 5);
}

TEST_CASE_FIXTURE(Pace, "days that cannot be read are missing until a later refresh, and nothing is saved") {
    breakStore();
    refresh();
    CHECK(!pace.isBuilding);
    CHECK(writes() == 0);
    store.failures.clear();
    defaults.failure = DefaultsError{"The disk is full."};
    refresh();
    CHECK(pace.days->size() == 28);
    CHECK(log.lines.back() == "StepPace/error: The disk is full.");
}

TEST_CASE_FIXTURE(Pace, "a cancelled refresh keeps and saves what it has read") {
    store.isHolding = true;
    auto task = pace.refresh(manager);
    for (int i = 0; i < 3; ++i) {
        time.settle();
        store.answer();
    }
    task->cancel();
    time.settle();
    CHECK(task->isFinished());
    CHECK(newPace().days->front().date == start(3));
    CHECK(!pace.isBuilding);
    CHECK(pace.refresh(manager));
    CHECK(pace.isBuilding);  // three of at least five days
}

TEST_CASE_FIXTURE(Pace, "stored days that do not decode are read again and kept aside, repeated ones count once") {
    for (const std::string damaged : {"[{]", "{}", R"([{"date":0,"hourly":[1,2]}])"}) {
        defaults.standardDomain.values.clear();
        defaults.setDocument(key, damaged);
        CHECK(newPace().days->empty());
        REQUIRE(savePaceDays(defaults, json, {PaceDay{}, PaceDay{}}));
        CHECK(newPace().days.value() == std::vector{PaceDay{}});
        CHECK(defaults.document("stepPaceBaselineDays.unreadable") == damaged);
    }
}

TEST_CASE_FIXTURE(Pace, "the stored hours of touched days are forgotten, the others kept to the bit") {
    const Calendar calendar(zone = FakeZone(0min), 2);
    const std::string document = "[" + stored("86400") + "," + stored("172800") + "," + stored("259200") + "]";
    defaults.setDocument(key, document);
    const std::array untouched{Interval{Date{}, Date{} + 24h}, Interval{Date{} + 96h, Date{} + 999h}};
    REQUIRE(forgetPaceDays(defaults, json, calendar, untouched));
    CHECK(trace.empty());
    const std::array touched{Interval{Date{} + 47h, Date{} + 48h}, Interval{Date{} + 72h, Date{} + 72h}};
    REQUIRE(forgetPaceDays(defaults, json, calendar, touched));
    CHECK(defaults.document(key) == "[" + stored("172800") + "]");
    defaults.setDocument(key, "[" + stored("1e300") + "]");
    REQUIRE(forgetPaceDays(defaults, json, calendar, untouched));
    CHECK(defaults.document(key) == "[]");
}
