/// Values of the command line.
#pragma once

#include "apps/cli/error.h"
#include "apps/cli/texts.h"
#include "core/calendar.h"
#include "health/step_records.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace pedvar {

/// A day: "2024-05-01", "today" or "yesterday".
CommandResult<Day> dayNamed(std::string_view name, Day today, const Texts& text);

/// The same, and not after `today`.
CommandResult<Day> pastDayNamed(std::string_view name, Day today, const Texts& text);

/// A month, "2024-05", not after that of `today`.
CommandResult<std::chrono::year_month> pastMonthNamed(std::string_view name, Day today, const Texts& text);

/// One of "steps", "distance", "calories", "activeMinutes" and "flights".
CommandResult<ActivityMetric> metricNamed(std::string_view name, const Texts& text);

/// A number written with digits and nothing else around it; none when it is anything else or does not fit.
std::optional<std::int64_t> wholeNumberNamed(std::string_view name);
/// The same with decimals behind a point or a comma. "1,000", which may be a thousand or one, is none.
std::optional<double> numberNamed(std::string_view name);
/// The same of what nobody counts in thousandths: "1.000", a thousand in half of Europe, is none either.
std::optional<double> coarseNumberNamed(std::string_view name);

}  // namespace pedvar
