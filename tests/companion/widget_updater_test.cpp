#include "companion/widget_updater.h"

#include "support/manager_fixture.h"

#include <doctest/doctest.h>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

struct Updates : ManagerFixture {
    AppGroupManager group{defaults, time, log};
    FakeCloudSettings cloud{trace};
    FakeWatchLink watch{trace};
    FakeWidgetCenter widgets{trace};
    PreferencesSync preferencesSync{settings, group, cloud, widgets};
    WidgetUpdater updater{time, manager, settings, group, preferencesSync, cloud, watch, widgets};

    std::ptrdiff_t updates() const { return std::ranges::count(trace, "shared weeklySteps"); }
    DefaultsValue shared(std::string_view key) const { return defaults.sharedDomain.values.at(std::string(key)); }
};

const std::vector<std::string> updateInOrder{"shared todaySteps",
                                             "shared todayDistance",
                                             "shared todayCalories",
                                             "shared lastUpdate",
                                             "shared todayActiveMinutes",
                                             "shared todayFloors",
                                             "shared dailyGoal",
                                             "shared distanceUnit",
                                             "shared stepColor",
                                             "cloud unit mi",
                                             "cloud color green",
                                             "cloud language de",
                                             "watch",
                                             "cloud theme dark",
                                             "shared appLanguage",
                                             "shared userPreferences",
                                             "reload",
                                             "shared currentStreak",
                                             "shared bestStreak",
                                             "shared weeklySteps",
                                             "reload"};

}  // namespace

TEST_CASE_FIXTURE(Updates, "a refresh writes all shared values in their order, then reloads the widgets") {
    auto preferences = settings.preferences();
    preferences.distanceUnit = DistanceUnit::miles;
    REQUIRE(settings.savePreferences(preferences));
    REQUIRE(settings.setDailyGoal(500, today));
    walk(600, 0);
    walk(700, 1);
    store.add(HKQuantityTypeIdentifierDistanceWalkingRunning, HKUnit::meter(), 3218.688, time.now() - 1h);
    trace.clear();

    time.run(manager.refreshToday());
    time.run(updater.finished());
    CHECK(trace.front() == "progress 600/500");
    CHECK(std::vector<std::string>(trace.begin() + 1, trace.end()) == updateInOrder);
    CHECK(shared("todaySteps") == DefaultsValue(std::int64_t{600}));
    CHECK(shared("todayDistance") == DefaultsValue(2.0));
    CHECK(shared("dailyGoal") == DefaultsValue(std::int64_t{500}));
    CHECK(shared("bestStreak") == DefaultsValue(std::int64_t{2}));
    CHECK(manager.longestStreak == 2);
    CHECK(shared("weeklySteps") == DefaultsValue(Data{"[0,0,0,0,0,700,600]"}));
}

TEST_CASE_FIXTURE(Updates, "refreshes during an update lead to exactly one more") {
    time.run(manager.refreshToday());
    CHECK(updates() == 1);
    store.isHolding = true;
    manager.refreshed.notify();
    time.settle();
    walk(800, 0);
    const std::size_t written = trace.size();
    for (int i = 0; i < 5; ++i) manager.refreshed.notify();
    time.settle();
    CHECK(trace.size() == written);  // the next update waits for this one
    store.isHolding = false;
    store.answer();
    time.run(updater.finished());
    CHECK(updates() == 3);
    CHECK(std::ranges::count(trace, "reload") == 1 + updates());  // the first has preferences to tell, too
}

TEST_CASE_FIXTURE(Updates, "an adopted goal is pushed back to the widgets by the same refresh") {
    defaults.sharedDomain.values.emplace("dailyStepGoal", std::int64_t{8000});
    time.run(manager.refreshToday());
    CHECK(shared("dailyGoal") == DefaultsValue(std::int64_t{8000}));
    CHECK(updates() == 1);
}

TEST_CASE_FIXTURE(Updates, "a closed suite gets nothing, the widgets are reloaded all the same") {
    defaults.isSharedOpen = false;
    time.run(manager.refreshToday());
    CHECK(defaults.sharedDomain.values.empty());
    CHECK(trace.back() == "reload");
}
