#include "companion/widget_updater.h"

#include "core/record.h"
#include "core/units.h"

#include <string_view>

namespace pedvar {

WidgetUpdater::WidgetUpdater(MainExecutor& executor, HealthKitManager& health, SettingsStore& settings,
                             AppGroupManager& group, PreferencesSync& preferencesSync, CloudSettings& cloud,
                             WatchLink& watch, WidgetCenter& widgets)
    : health_(health),
      settings_(settings),
      group_(group),
      preferencesSync_(preferencesSync),
      cloud_(cloud),
      watch_(watch),
      widgets_(widgets),
      updates_(executor, [this] { return update(); }),
      refreshed_(health.refreshed.observe([this] { updates_.request(); })) {}

// The order of the writes is a promise to those who read the suite meanwhile.
Task<> WidgetUpdater::update() {
    const UserPreferences preferences = settings_.preferences();
    const std::string_view unit = AppGroupManager::normalizedDistanceUnit(caseName(preferences.distanceUnit));
    const double distance = health_.todayDistance / (unit == "mi" ? metersPerMile : metersPerKilometer);

    group_.saveTodayData(health_.todaySteps, distance, health_.todayActiveCalories);
    group_.saveTodayActivity(health_.todayActiveMinutes, health_.todayFlightsClimbed);
    group_.saveGoalAndUnit(settings_.personalMetrics().dailyStepGoal, unit);
    group_.saveStepColor(preferences.preferredStepColor);

    cloud_.pushDistanceUnit(unit);
    cloud_.pushStepColor(caseName(preferences.preferredStepColor));
    cloud_.pushAppLanguage(settings_.languageCode());
    watch_.valuesChanged();
    preferencesSync_.sync();

    co_await health_.updateStreaks();
    group_.saveStreaks(health_.currentStreak, health_.longestStreak);
    const auto lastSevenDays = co_await health_.fetchLastSevenDays();
    group_.saveWeeklySteps(lastSevenDays);
    widgets_.reloadAllTimelines();
    co_await health_.rememberStreaks();
}

}  // namespace pedvar
