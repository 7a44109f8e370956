#include "health/goal_history.h"

#include <iterator>

namespace pedvar {

GoalHistory::GoalHistory(const std::vector<GoalChange>& changes, std::int64_t fallback) : fallback_(fallback) {
    for (const GoalChange& change : changes) add(change);
}

std::int64_t GoalHistory::goalOn(Day day) const {
    if (changes_.empty()) return fallback_;
    const auto later = changes_.upper_bound(day);
    return later == changes_.begin() ? later->second : std::prev(later)->second;
}

}  // namespace pedvar
