#include "companion/app_group_manager.h"

#include "core/record.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

namespace pedvar {

namespace {

constexpr std::size_t shownDays = 7;

std::int64_t clamped(std::int64_t count) {
    return std::max<std::int64_t>(count, 0);
}

double clamped(double amount) {
    return std::isfinite(amount) ? std::max(amount, 0.0) : 0;
}

std::string lowerCased(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if ('A' <= c && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

}  // namespace

void AppGroupManager::saveTodayData(std::int64_t steps, double distance, double calories) {
    write({{"todaySteps", clamped(steps)},
           {"todayDistance", clamped(distance)},
           {"todayCalories", clamped(calories)},
           {"lastUpdate", clock_.now()}});
}

void AppGroupManager::saveTodayActivity(std::int64_t activeMinutes, std::int64_t floors) {
    write({{"todayActiveMinutes", clamped(activeMinutes)}, {"todayFloors", clamped(floors)}});
}

void AppGroupManager::saveGoalAndUnit(std::int64_t dailyGoal, std::string_view distanceUnit) {
    write({{"dailyGoal", std::max<std::int64_t>(dailyGoal, 1)},
           {"distanceUnit", std::string(normalizedDistanceUnit(distanceUnit))}});
}

void AppGroupManager::saveStepColor(StepColor color) {
    write({{"stepColor", std::string(caseName(color))}});
}

void AppGroupManager::saveStreaks(std::int64_t current, std::int64_t best) {
    write({{"currentStreak", clamped(current)}, {"bestStreak", clamped(best)}});
}

void AppGroupManager::saveWeeklySteps(std::span<const std::int64_t> steps) {
    std::array<std::int64_t, shownDays> week{};
    for (std::size_t i = 0; i < std::min(steps.size(), shownDays); ++i) week[i] = clamped(steps[i]);
    if (auto document = encodeJson(week)) write({{"weeklySteps", Data{std::move(*document)}}});
}

bool AppGroupManager::savePreferencesData(const Data& data) {
    return writeIfNew("userPreferences", data);
}

bool AppGroupManager::saveAppLanguage(std::string_view code) {
    return !code.empty() && writeIfNew("appLanguage", std::string(code));
}

std::string_view AppGroupManager::normalizedDistanceUnit(std::optional<std::string_view> text) {
    const std::string unit = lowerCased(text.value_or("km"));
    return unit == "mi" || unit == "miles" || unit == "mile" ? "mi" : "km";
}

bool AppGroupManager::write(std::vector<Entry> entries) {
    const UserDefaults* suite = defaults_.shared();
    if (!suite) return false;
    std::vector<DefaultsChange> changes;
    for (Entry& entry : entries) changes.push_back({suite, std::string(entry.key), std::move(entry.value)});
    const auto result = defaults_.write(changes);
    if (!result) log_.log(logSubsystem, "AppGroup", LogLevel::error, result.error().message.inEnglish());
    return result.has_value();
}

bool AppGroupManager::writeIfNew(std::string_view key, DefaultsValue value) {
    const UserDefaults* suite = defaults_.shared();
    if (!suite || suite->value(key) == value) return false;
    return write({{key, std::move(value)}});
}

}  // namespace pedvar
