/// Steps by day, hour and week.
#pragma once

#include "core/calendar.h"
#include "core/date.h"
#include "platform/health_store.h"

#include <cstdint>
#include <string>
#include <vector>

namespace pedvar {

/// The totals of one chosen day.
struct SelectedDayMetrics {
    std::int64_t steps = 0;
    double distanceMeters = 0;
    double activeCalories = 0;  // kcal
    std::int64_t activeMinutes = 0;
    std::int64_t flights = 0;
    std::int64_t previousDaySteps = 0;  // of the day before the chosen day
    bool operator==(const SelectedDayMetrics&) const = default;
};

/// Names one of a day's metrics, in the order of `SelectedDayMetrics`.
enum class StatKey { steps, distance, calories, activeMinutes, flights, previousDaySteps };

/// Names one of the amounts that a day has of its own.
enum class ActivityMetric { steps, distance, calories, activeMinutes, flights };

/// One day of a series.
struct DailyStepData {
    std::string id;  // from the date, so that the same day is the same entry
    Date date;       // start of the local day
    std::int64_t steps = 0;
    double distance = 0;        // metres
    double activeCalories = 0;  // kcal
    std::int64_t activeMinutes = 0;
    bool operator==(const DailyStepData&) const = default;
};

/// One clock hour of a day.
struct HourlyStepData {
    std::string id;
    Date date;     // start of the hour; where the clocks skip it, the moment of the skip
    int hour = 0;  // 0 to 23
    std::int64_t steps = 0;
    double distance = 0;  // metres
    bool operator==(const HourlyStepData&) const = default;
};

/// One week, its seven days in `dailyData`.
struct WeekData {
    std::string id;
    Date weekStart;
    Date weekEnd;  // start of the week's last day
    std::int64_t totalSteps = 0;
    double dailyAverage = 0;  // over the days that have begun
    std::vector<DailyStepData> dailyData;
    bool operator==(const WeekData&) const = default;
};

/// The steps of one day at its edges.
struct DailyTimeWindowSteps {
    std::string id;
    Date date;
    std::int64_t beforeNineAM = 0;
    std::int64_t afterNinePM = 0;   // from 21:00
    std::int64_t midnightHour = 0;  // before 01:00
    bool operator==(const DailyTimeWindowSteps&) const = default;
};

/// A total by origin. `total` is `ours` and `others` together.
struct SourceSplit {
    double total = 0;
    double ours = 0;  // written by Pedvar
    double others = 0;
    std::vector<HKSource> ownSources;
    std::vector<HKSource> otherSources;
    bool operator==(const SourceSplit&) const = default;
};

}  // namespace pedvar
