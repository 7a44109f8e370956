/// What widgets and watch read.
#pragma once

#include "core/preferences.h"
#include "platform/clock.h"
#include "platform/platform_log.h"
#include "platform/user_defaults.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace pedvar {

/// The one writer of the shared suite's step values. Lives on the main executor. Counts and amounts below 0, and
/// amounts that are no number, are stored as 0. While the suite is closed nothing is written.
class AppGroupManager {
public:
    AppGroupManager(DefaultsDomains& defaults, const Clock& clock, PlatformLog& log)
        : defaults_(defaults), clock_(clock), log_(log) {}

    /// `distance` in the unit that is stored as "distanceUnit", `calories` in kcal.
    void saveTodayData(std::int64_t steps, double distance, double calories);
    void saveTodayActivity(std::int64_t activeMinutes, std::int64_t floors);
    /// A goal below 1 is stored as 1; `distanceUnit` in any spelling.
    void saveGoalAndUnit(std::int64_t dailyGoal, std::string_view distanceUnit);
    void saveStepColor(StepColor color);
    /// In days.
    void saveStreaks(std::int64_t current, std::int64_t best);
    /// Stores exactly 7 values: the first 7 of more, zeros behind fewer.
    void saveWeeklySteps(std::span<const std::int64_t> steps);

    /// Both write only what differs from what is stored, and tell whether the widgets have to be reloaded. An
    /// empty code is ignored.
    bool savePreferencesData(const Data& data);
    bool saveAppLanguage(std::string_view code);

    /// "km" or "mi" for a unit text in any case; "km" for what it does not know.
    static std::string_view normalizedDistanceUnit(std::optional<std::string_view> text);

private:
    struct Entry {
        std::string_view key;
        DefaultsValue value;
    };

    /// Writes all entries at once; false when that was impossible.
    bool write(std::vector<Entry> entries);
    bool writeIfNew(std::string_view key, DefaultsValue value);

    DefaultsDomains& defaults_;
    const Clock& clock_;
    PlatformLog& log_;
};

}  // namespace pedvar
