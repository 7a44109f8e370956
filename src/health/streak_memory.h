/// The streaks of days that are over, so that not all of them are counted each time.
#pragma once

#include "core/calendar.h"
#include "core/record.h"
#include "health/goal_history.h"
#include "health/streaks.h"
#include "platform/json_parser.h"

#include <cstdint>
#include <optional>
#include <string>

namespace pedvar {

/// The streaks when the day `until` began.
struct KnownStreaks {
    Streaks streaks;
    Day until;
};

/// The same as it is stored, with the zone and the goals that the days were counted with.
struct StreakMemory {
    std::string until;  // YYYY-MM-DD
    std::string zone;
    std::string goals;  // as `describe` writes them
    std::int64_t current = 0;
    std::int64_t longest = 0;
    std::optional<std::string> lastMet;

    using Fields = FieldList<&StreakMemory::until, &StreakMemory::zone, &StreakMemory::goals,
                             &StreakMemory::current, &StreakMemory::longest, &StreakMemory::lastMet>;
    bool operator==(const StreakMemory&) const = default;
};
static_assert(isComplete<StreakMemory>);

/// The goals of the days before `until`, as a text that differs when one of them does.
std::string describe(const GoalHistory& goals, Day until);

StreakMemory remembered(const KnownStreaks& streaks, const Calendar& calendar, const GoalHistory& goals);

/// None when the memory is of another zone, of other goals or reaches beyond the beginning of `today`.
std::optional<KnownStreaks> known(const StreakMemory& memory, Day today, const Calendar& calendar,
                                  const GoalHistory& goals);

}  // namespace pedvar
