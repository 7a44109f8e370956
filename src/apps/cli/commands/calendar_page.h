/// A month as a page of the calendar.
#pragma once

#include "apps/cli/screen.h"
#include "core/calendar.h"
#include "health/step_records.h"

#include <optional>
#include <string>
#include <vector>

namespace pedvar {

struct CalendarPage {
    std::chrono::year_month month;
    ActivityMetric metric = ActivityMetric::steps;
    std::vector<std::optional<double>> values;  // of the month's days from the first on; none where not known
    Day today;
};

/// A grid of weeks: each day with its number, a shade that grows with its share of the best day, and its value.
std::string calendarPage(const CalendarPage& page, const Calendar& calendar, const Screen& screen);

}  // namespace pedvar
