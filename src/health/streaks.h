/// Days in a row on which the goal was met.
#pragma once

#include "core/calendar.h"
#include "health/goal_history.h"

#include <cstdint>
#include <optional>
#include <span>

namespace pedvar {

/// In days.
struct Streaks {
    std::int64_t current = 0;
    std::int64_t longest = 0;
    std::optional<Day> lastMet;
    bool operator==(const Streaks&) const = default;
};

/// The streaks after further days, the first of them `first`, all of them over. A day meets its goal with at least
/// as many steps, and breaks the current streak otherwise.
Streaks streaksAfter(Streaks before, Day first, std::span<const std::int64_t> dailySteps,
                     const GoalHistory& goals);

/// The streaks on a day that is not over: it counts once its goal is met, and breaks nothing until then.
Streaks streaksOn(Day today, Streaks before, std::int64_t steps, const GoalHistory& goals);

}  // namespace pedvar
