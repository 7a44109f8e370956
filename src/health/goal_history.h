/// The daily goal through time.
#pragma once

#include "core/calendar.h"

#include <cstdint>
#include <map>
#include <vector>

namespace pedvar {

/// A goal from `day` on.
struct GoalChange {
    Day day;
    std::int64_t goal;
    bool operator==(const GoalChange&) const = default;
};

/// The goals of all days. The earliest known goal holds for the days before it too.
class GoalHistory {
public:
    /// `changes` in any order, of several of one day the last counts; `fallback` where there are none.
    GoalHistory(const std::vector<GoalChange>& changes, std::int64_t fallback);

    void add(const GoalChange& change) { changes_.insert_or_assign(change.day, change.goal); }

    const std::map<Day, std::int64_t>& changes() const { return changes_; }
    std::int64_t goalOn(Day day) const;

private:
    std::map<Day, std::int64_t> changes_;
    std::int64_t fallback_;
};

}  // namespace pedvar
