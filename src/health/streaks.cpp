#include "health/streaks.h"

#include <algorithm>

namespace pedvar {

Streaks streaksAfter(Streaks before, Day first, std::span<const std::int64_t> dailySteps,
                     const GoalHistory& goals) {
    Streaks streaks = before;
    Day day = first;
    for (const std::int64_t steps : dailySteps) {
        const bool isMet = steps >= goals.goalOn(day);
        streaks = isMet ? streaksOn(day, streaks, steps, goals) : Streaks{0, streaks.longest, streaks.lastMet};
        day += std::chrono::days(1);
    }
    return streaks;
}

Streaks streaksOn(Day today, Streaks before, std::int64_t steps, const GoalHistory& goals) {
    if (steps < goals.goalOn(today)) return before;
    return {before.current + 1, std::max(before.longest, before.current + 1), today};
}

}  // namespace pedvar
