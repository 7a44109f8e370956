#include "health/streak_memory.h"

namespace pedvar {

std::string describe(const GoalHistory& goals, Day until) {
    std::string text = std::to_string(goals.goalOn(until - std::chrono::days(1)));
    for (const auto& [day, goal] : goals.changes()) {
        if (day < until) text += " " + isoText(day) + ":" + std::to_string(goal);
    }
    return text;
}

StreakMemory remembered(const KnownStreaks& known, const Calendar& calendar, const GoalHistory& goals) {
    const auto& [streaks, until] = known;
    const auto lastMet = streaks.lastMet ? std::optional(isoText(*streaks.lastMet)) : std::nullopt;
    return {isoText(until),  calendar.zoneName(), describe(goals, until),
            streaks.current, streaks.longest,     lastMet};
}

std::optional<KnownStreaks> known(const StreakMemory& memory, Day today, const Calendar& calendar,
                                  const GoalHistory& goals) {
    const auto until = parseDay(memory.until);
    if (!until || *until > today || memory.zone != calendar.zoneName()) return std::nullopt;
    if (memory.goals != describe(goals, *until)) return std::nullopt;
    const auto lastMet = memory.lastMet ? parseDay(*memory.lastMet) : std::nullopt;
    return KnownStreaks{{memory.current, memory.longest, lastMet}, *until};
}

}  // namespace pedvar
