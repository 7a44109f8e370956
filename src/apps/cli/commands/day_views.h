/// Parts of screens and documents that show days.
#pragma once

#include "apps/cli/screen.h"
#include "core/json_value.h"
#include "health/settings_store.h"
#include "health/step_records.h"

#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

/// A label and a value each, one line each.
std::string labelled(const std::vector<std::pair<std::string, std::string>>& lines);

/// Steps, the share of the goal and the bar towards it; two lines.
std::string goalView(std::int64_t steps, std::int64_t goal, const Screen& screen);

/// The day's other totals, to be `labelled`.
std::vector<std::pair<std::string, std::string>> metricLines(const SelectedDayMetrics& metrics,
                                                             const Screen& screen);

/// The steps of 24 hours as a chart of screen width.
std::string hourChart(std::span<const HourlyStepData> hours, const Screen& screen);

/// One line a day: steps, distance, a bar, and a mark where the goal was met. Days after `today` are blank.
std::string dayChart(std::span<const DailyStepData> days, const GoalHistory& goals, const Calendar& calendar,
                     Day today, const Screen& screen);

/// The members that documents of one day have in common.
JsonObject metricsDocument(Day day, const SelectedDayMetrics& metrics);
JsonArray dailyDocument(std::span<const DailyStepData> days, const Calendar& calendar);

}  // namespace pedvar
