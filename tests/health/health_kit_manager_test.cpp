#include "health/health_kit_manager.h"

#include "support/manager_fixture.h"

#include <doctest/doctest.h>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

struct Manager : ManagerFixture {
    int refreshes = 0;
    Subscription counting = manager.refreshed.observe([this] { ++refreshes; });
    TaskScope scope{time};
};

}  // namespace

TEST_CASE_FIXTURE(Manager, "access is asked for once, unless it was settled, and a refusal is noted") {
    time.run(manager.ensureAuthorization());
    CHECK(manager.isAuthorized);
    CHECK(store.authorizationRequests == 0);
    store.status = HKAuthorizationRequestStatus::shouldRequest;
    store.authorizationError = HKError{"com.example.health", 5, "Not now"};
    for (int launch = 0; launch < 2; ++launch) time.run(manager.ensureAuthorization());
    CHECK(store.authorizationRequests == 1);
    CHECK(manager.isAuthorized);
    CHECK(manager.authorizationError.value() == "HealthKit authorization completed with note: Not now");
    CHECK(log.lines ==
          std::vector<std::string>{
              "HKDiag/standard: HKDiag requestStatus=shouldRequest at launch - presenting the permission sheet",
              "HKDiag/error: HKDiag requestAuthorization THREW com.example.health/5: Not now"});
}

TEST_CASE_FIXTURE(Manager, "reading is blocked when 30 days hold no step after access was settled") {
    walk(5000, 31);
    CHECK(time.run(manager.computeHealthAccessBlocked()));
    CHECK(log.lines.back() ==
          "HKDiag/standard: HKDiag no step samples in 30 days with authorization already "
          "requested - surfacing the Health access hint");
    walk(1, 30);
    CHECK(!time.run(manager.computeHealthAccessBlocked()));
    store.samples.clear();
    store.status = HKAuthorizationRequestStatus::shouldRequest;
    CHECK(!time.run(manager.computeHealthAccessBlocked()));
}

TEST_CASE_FIXTURE(Manager, "a refresh publishes today, tells of the goal's progress, then that it happened") {
    walk(7000, 0);
    walk(5000, 1);
    const auto add = [this](const char* type, HKUnit unit, double value) {
        store.add(type, unit, value, time.now() - 1h);
    };
    add(HKQuantityTypeIdentifierDistanceWalkingRunning, HKUnit::meter(), 4200);
    add(HKQuantityTypeIdentifierActiveEnergyBurned, HKUnit::kilocalorie(), 210.5);
    add(HKQuantityTypeIdentifierAppleExerciseTime, HKUnit::minute(), 31.9);
    add(HKQuantityTypeIdentifierFlightsClimbed, HKUnit::count(), 3);
    const auto told = manager.refreshed.observe([this] { trace.emplace_back("refreshed"); });
    time.run(manager.refreshToday());
    const SelectedDayMetrics published{manager.todaySteps,          manager.todayDistance,
                                       manager.todayActiveCalories, manager.todayActiveMinutes,
                                       manager.todayFlightsClimbed, manager.todayPreviousDaySteps};
    CHECK(published == SelectedDayMetrics{7000, 4200, 210.5, 31, 3, 5000});
    CHECK(!manager.isLoading);
    CHECK(trace == std::vector<std::string>{"standard dailyGoalHistory", "progress 7000/10000", "refreshed"});
}

TEST_CASE_FIXTURE(Manager, "when every read gives up, totals and streaks show 0") {
    walk(12'000, 0);
    time.run(manager.refreshToday());
    time.run(manager.updateStreaks());
    CHECK(manager.currentStreak == 1);
    breakStore();
    scope.spawn(manager.refreshToday());
    time.advance(10s);
    time.run(manager.updateStreaks());
    CHECK(manager.todaySteps == 0);
    CHECK(manager.currentStreak == 0);
    CHECK(manager.longestStreak == 0);
    CHECK(refreshes == 2);
    CHECK(time.run(manager.fetchLastSevenDays()) == std::vector<std::int64_t>(7));
}

TEST_CASE_FIXTURE(Manager, "a cancelled refresh publishes and tells nothing") {
    walk(7000, 0);
    store.isHolding = true;
    auto refresh = scope.spawn(manager.refreshToday());
    time.settle();
    CHECK(manager.isLoading);
    refresh.cancel();
    store.answer();
    time.settle();
    CHECK(refresh.isFinished());
    CHECK(manager.todaySteps == 0);
    CHECK(refreshes == 0);
    CHECK(!manager.isLoading);
}

TEST_CASE_FIXTURE(Manager, "a refresh that midnight overtakes shows the new day") {
    walk(7000, 0);
    store.addSteps(30, settings.calendar().start(today + days(1)));
    store.isHolding = true;
    scope.spawn(manager.refreshToday());
    time.settle();
    time.setClock(settings.calendar().start(today + days(1)) + 1s);
    store.isHolding = false;
    store.answer();
    time.settle();
    CHECK(manager.todaySteps == 30);
    CHECK(manager.todayPreviousDaySteps == 7000);
    CHECK(refreshes == 1);
}

TEST_CASE_FIXTURE(Manager, "samples that arrive during a refresh lead to one more") {
    manager.observeNewSamples();
    CHECK(log.lines.back() == "HKDiag/standard: ✅ Background delivery enabled for step count updates");
    store.isHolding = true;
    store.samplesAdded.notify();
    time.settle();
    for (int i = 0; i < 5; ++i) store.samplesAdded.notify();
    store.isHolding = false;
    store.answer();
    time.settle();
    CHECK(refreshes == 2);

    store.authorizationError = HKError{"com.example.health", 5, "Not now"};
    manager.observeNewSamples();
    CHECK(log.lines.back() == "HKDiag/error: ❌ Failed to enable background delivery: Not now");
}

TEST_CASE_FIXTURE(Manager, "streaks look over the whole store, across a change of the clocks and of the goal") {
    for (int daysAgo = 30; daysAgo < 45; ++daysAgo) walk(6000, daysAgo);  // 2024-03-20 to 2024-04-03
    walk(6000, 2);
    walk(6000, 1);
    REQUIRE(settings.setDailyGoal(6000, today - days(60)));
    REQUIRE(settings.setDailyGoal(9000, today - days(1)));
    time.run(manager.updateStreaks());
    CHECK(manager.longestStreak == 15);
    CHECK(manager.currentStreak == 0);
    CHECK(manager.lastMetDate.value() == today - days(2));
}

TEST_CASE_FIXTURE(Manager, "remembered streaks go on where they ended, unless goals or zone have changed since") {
    REQUIRE(settings.rememberFirstGoal(today - days(20)));
    for (int daysAgo = 3; daysAgo < 13; ++daysAgo) walk(20'000, daysAgo);
    time.run(manager.updateStreaks());
    time.run(manager.rememberStreaks());
    REQUIRE(store.derived.size() == 1);
    CHECK(store.derived.begin()->second.until == settings.calendar().start(today));

    store.samples.clear();  // what is remembered shows where the samples would not
    time.advance(days(1));
    walk(20'000, -1);
    time.run(manager.updateStreaks());
    CHECK(manager.longestStreak == 10);
    CHECK(manager.currentStreak == 1);
    REQUIRE(settings.setDailyGoal(11'000, today + days(1)));
    time.run(manager.updateStreaks());
    CHECK(manager.longestStreak == 10);
    REQUIRE(settings.setDailyGoal(12'000, today - days(1)));
    time.run(manager.updateStreaks());
    CHECK(manager.longestStreak == 1);
}

TEST_CASE_FIXTURE(Manager, "the last seven days are oldest first, today last") {
    for (int daysAgo = 0; daysAgo < 9; ++daysAgo) walk(100 * (daysAgo + 1), daysAgo);
    CHECK(time.run(manager.fetchLastSevenDays()) == std::vector<std::int64_t>{700, 600, 500, 400, 300, 200, 100});
}

TEST_CASE_FIXTURE(Manager, "a chosen day shows its totals and 24 hours, zeros when they cannot be read") {
    walk(1234, 3);
    manager.selectDate(time.now() - days(3));
    time.settle();
    CHECK(*manager.currentSelectedDate == time.now() - days(3));
    CHECK(manager.selectedDayMetrics->steps == 1234);
    REQUIRE(manager.hourlyStepData->size() == 24);
    CHECK((*manager.hourlyStepData)[11].steps == 1234);
    CHECK((*manager.hourlyStepData)[11].id == "2024-04-30T11");

    breakStore();
    manager.selectDate(time.now() - days(3));
    time.advance(10s);
    CHECK(manager.selectedDayMetrics->steps == 0);
    CHECK(manager.hourlyStepData->size() == 24);
    CHECK((*manager.hourlyStepData)[11].steps == 0);
}

TEST_CASE_FIXTURE(Manager, "choosing another day replaces the running load, and each load ends once") {
    walk(1111, 1);
    walk(2222, 2);
    store.isHolding = true;
    const auto first = manager.selectDate(time.now() - days(1));
    time.settle();
    const auto second = manager.selectDate(time.now() - days(2));
    CHECK(manager.loading.loadingCount() == 2);
    time.settle();
    store.answer(1);
    store.answer(0);
    time.settle();
    CHECK(first.isFinished());
    CHECK(manager.selectedDayMetrics->steps == 0);
    CHECK(manager.loading.loadingCount() == 1);
    while (store.running() > 0) {
        store.answer();
        time.settle();
    }
    CHECK(second.isFinished());
    CHECK(manager.selectedDayMetrics->steps == 2222);
    CHECK(manager.loading.loadingCount() == 0);
    CHECK(!manager.loading.isLoadingData);
}

TEST_CASE_FIXTURE(Manager, "a manager that is destroyed while it loads takes its loads with it") {
    store.isHolding = true;
    {
        HealthKitManager other(time, time, store, settings, diagnostics, notifications);
        other.selectDate(time.now());
        other.loadWeek(time.now());
        time.settle();
        CHECK(other.activeQueryCount() == 2);
    }
    breakStore();
    while (store.running() > 0) store.answer();
    time.advance(10s);
    CHECK(store.asked.size() == 2);
}

TEST_CASE_FIXTURE(Manager, "a week's average is over the days that have begun") {
    for (int daysAgo = 0; daysAgo < 12; ++daysAgo) walk(1000 + daysAgo, daysAgo);
    const auto load = [&](Date date) {
        manager.loadWeek(date);
        time.settle();
        return manager.weekStepsData->front();
    };
    const WeekData week = load(time.now());
    CHECK(week.id == "2024-04-29");
    CHECK(*manager.currentWeekStart == week.weekStart);
    CHECK(week.weekEnd == settings.calendar().start(today + days(2)));
    CHECK(week.dailyData.size() == 7);
    CHECK(week.totalSteps == 5010);
    CHECK(week.dailyAverage == 1002);
    CHECK(load(time.now() - days(7)).dailyAverage == 1008);
    CHECK(load(time.now() + days(7)).dailyAverage == 0);

    auto preferences = settings.preferences();
    preferences.weekStartsOn = WeekStart::saturday;
    REQUIRE(settings.savePreferences(preferences));
    CHECK(load(time.now()).id == "2024-04-27");
}

TEST_CASE_FIXTURE(Manager, "counts beyond all reason are shown as very large ones") {
    for (int daysAgo = 0; daysAgo < 7; ++daysAgo) walk(1e300, daysAgo);
    manager.loadWeek(time.now() - days(1));
    manager.loadMonth(2024y / May);
    time.run(manager.updateStreaks());
    CHECK(manager.weekStepsData->front().totalSteps == 5'000'000'000'000'000);
    CHECK(manager.dailyStepData->size() == 31);
    CHECK(manager.currentStreak == 7);
}
