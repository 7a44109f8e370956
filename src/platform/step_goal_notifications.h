/// Who is told of the progress towards the day's goal.
#pragma once

#include <cstdint>

namespace pedvar {

class StepGoalNotifications {
public:
    virtual ~StepGoalNotifications() = default;

    /// After each refresh of today's totals. Both in steps; `dailyGoal` is at least 1.
    virtual void goalProgressed(std::int64_t todaySteps, std::int64_t dailyGoal) = 0;
};

}  // namespace pedvar
