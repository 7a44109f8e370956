/// Values of the command line.
#pragma once

#include "apps/cli/error.h"
#include "apps/cli/texts.h"
#include "core/calendar.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace pedvar {

/// A day: "2024-05-01", "today" or "yesterday".
CommandResult<Day> dayNamed(std::string_view name, Day today, const Texts& text);

/// A number written with digits and nothing else around it, the decimal separator being a point; none when it is
/// anything else or does not fit.
std::optional<std::int64_t> wholeNumberNamed(std::string_view name);
std::optional<double> numberNamed(std::string_view name);

}  // namespace pedvar
