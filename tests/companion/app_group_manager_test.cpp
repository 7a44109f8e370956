#include "companion/app_group_manager.h"

#include "companion/preferences_sync.h"
#include "support/manager_fixture.h"

#include <doctest/doctest.h>

#include <limits>

using namespace pedvar;

namespace {

struct Group : ManagerFixture {
    AppGroupManager group{defaults, time, log};
    FakeCloudSettings cloud{trace};
    FakeWidgetCenter widgets{trace};
    PreferencesSync preferencesSync{settings, group, cloud, widgets};

    DefaultsValue shared(std::string_view key) const { return defaults.sharedDomain.values.at(std::string(key)); }
    std::string storedWeek(const std::vector<std::int64_t>& steps) {
        group.saveWeeklySteps(steps);
        return std::get<Data>(shared("weeklySteps")).bytes;
    }
    std::ptrdiff_t reloads() const { return std::ranges::count(trace, "reload"); }
};

}  // namespace

TEST_CASE("units of distance are known in any case") {
    for (const char* miles : {"mi", "Miles", "MI", "mile"}) {
        CHECK(AppGroupManager::normalizedDistanceUnit(miles) == "mi");
    }
    for (const char* kilometers : {"km", "Kilometers", "kilometre", "", "m"}) {
        CHECK(AppGroupManager::normalizedDistanceUnit(kilometers) == "km");
    }
    CHECK(AppGroupManager::normalizedDistanceUnit(std::nullopt) == "km");
}

TEST_CASE_FIXTURE(Group, "a stored week has seven days, none below 0") {
    CHECK(storedWeek({1, 2, 3}) == "[1,2,3,0,0,0,0]");
    CHECK(storedWeek({1, 2, 3, 4, 5, 6, 7, 8, 9}) == "[1,2,3,4,5,6,7]");
    CHECK(storedWeek({1, -2, 3, 4, 5, 6, std::numeric_limits<std::int64_t>::min()}) == "[1,0,3,4,5,6,0]");
}

TEST_CASE_FIXTURE(Group, "what is stored is never below its least value, nor no number") {
    group.saveTodayData(-1, std::numeric_limits<double>::quiet_NaN(), -0.5);
    group.saveTodayActivity(-1, -1);
    group.saveGoalAndUnit(0, "MILES");
    group.saveStreaks(-1, -1);
    for (const char* count : {"todaySteps", "todayActiveMinutes", "todayFloors", "currentStreak", "bestStreak"}) {
        CHECK(shared(count) == DefaultsValue(std::int64_t{0}));
    }
    for (const char* amount : {"todayDistance", "todayCalories"}) CHECK(shared(amount) == DefaultsValue(0.0));
    CHECK(shared("dailyGoal") == DefaultsValue(std::int64_t{1}));
    CHECK(shared("distanceUnit") == DefaultsValue(std::string("mi")));
    CHECK(shared("lastUpdate") == DefaultsValue(time.now()));
    group.saveTodayData(0, std::numeric_limits<double>::infinity(), 0);
    CHECK(shared("todayDistance") == DefaultsValue(0.0));
}

TEST_CASE_FIXTURE(Group, "preferences and language are written when they differ") {
    CHECK(group.savePreferencesData({"{}"}));
    CHECK(!group.savePreferencesData({"{}"}));
    CHECK(group.savePreferencesData({"{ }"}));
    CHECK(!group.saveAppLanguage(""));
    CHECK(!defaults.sharedDomain.values.contains("appLanguage"));
    CHECK(group.saveAppLanguage("de"));
    CHECK(!group.saveAppLanguage("de"));
    defaults.failure = DefaultsError{"The disk is full."};
    CHECK(!group.saveAppLanguage("fr"));
    CHECK(log.lines.back() == "AppGroup/error: The disk is full.");
    defaults.isSharedOpen = false;
    CHECK(!group.savePreferencesData({"{  }"}));
}

TEST_CASE_FIXTURE(Group, "the preferences sync reloads the widgets once for what is new") {
    preferencesSync.sync();
    CHECK(trace ==
          std::vector<std::string>{"cloud theme dark", "shared appLanguage", "shared userPreferences", "reload"});
    preferencesSync.sync();
    CHECK(trace.size() == 5);
    CHECK(reloads() == 1);
}

TEST_CASE_FIXTURE(Group, "changed preferences and goals reach the cloud and reload the widgets once") {
    auto preferences = settings.preferences();
    preferences.preferredStepColor = StepColor::cyan;
    REQUIRE(preferencesSync.changePreferences([&](UserPreferences& stored) { stored = preferences; }));
    CHECK(std::ranges::count(trace, "cloud color cyan") == 1);
    CHECK(reloads() == 1);
    REQUIRE(preferencesSync.changePreferences([&](UserPreferences& stored) { stored = preferences; }));
    CHECK(std::ranges::count(trace, "cloud color cyan") == 1);
    CHECK(reloads() == 1);

    REQUIRE(preferencesSync.setDailyGoal(8000, today));
    CHECK(trace[trace.size() - 2] == "cloud goal 8000");
    CHECK(reloads() == 2);
    defaults.failure = DefaultsError{"The disk is full."};
    CHECK(!preferencesSync.setDailyGoal(9000, today));
    CHECK(reloads() == 2);
}
