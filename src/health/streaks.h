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
    std::int64_t current = 0;  // ends today, or yesterday while today's goal is not met yet
    std::int64_t longest = 0;
    std::optional<Day> lastMet;
    bool operator==(const Streaks&) const = default;
};

/// The streaks of consecutive days from `first` on, the last of which is today. A day meets its goal with at least
/// as many steps.
Streaks streaksOf(Day first, std::span<const std::int64_t> dailySteps, const GoalHistory& goals);

}  // namespace pedvar
