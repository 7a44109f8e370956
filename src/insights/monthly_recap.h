/// What a month was.
#pragma once

#include "core/async.h"
#include "core/calendar.h"
#include "health/activity_reads.h"
#include "health/goal_history.h"
#include "platform/phrase.h"

#include <cstdint>
#include <optional>

namespace pedvar {

struct MonthlyRecap {
    struct BestDay {
        Day day;
        std::int64_t steps = 0;
        bool operator==(const BestDay&) const = default;
    };

    std::chrono::year_month month;
    std::int64_t totalSteps = 0;
    double averageSteps = 0;         // over the days that have begun
    std::optional<BestDay> bestDay;  // the first of equal ones; none in a month without steps
    std::int64_t goalDays = 0;       // on which the goal of their own day was met
    double distanceMeters = 0;
    bool operator==(const MonthlyRecap&) const = default;
};

/// The month as far as it has come by `today`. What cannot be read is 0.
Task<MonthlyRecap> fetchMonthlyRecap(ActivityReads& reads, std::chrono::year_month month, Calendar calendar,
                                     GoalHistory goals, Day today);

/// "March", with its year in another year than that of `today`.
Phrase monthName(std::chrono::year_month month, Day today);

}  // namespace pedvar
