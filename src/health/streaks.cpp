#include "health/streaks.h"

#include <algorithm>

namespace pedvar {

Streaks streaksOf(Day first, std::span<const std::int64_t> dailySteps, const GoalHistory& goals) {
    Streaks streaks;
    const std::size_t count = dailySteps.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Day day = first + std::chrono::days(i);
        const bool isToday = i + 1 == count;
        if (dailySteps[i] >= goals.goalOn(day)) {
            ++streaks.current;
            streaks.longest = std::max(streaks.longest, streaks.current);
            streaks.lastMet = day;
        } else if (!isToday) {
            streaks.current = 0;
        }
    }
    return streaks;
}

}  // namespace pedvar
