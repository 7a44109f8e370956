#include "insights/monthly_recap.h"

#include <algorithm>
#include <array>
#include <string>

namespace pedvar {

namespace {

void addDay(MonthlyRecap& recap, Day day, std::int64_t steps, std::int64_t goal) {
    recap.totalSteps += steps;
    if (steps > (recap.bestDay ? recap.bestDay->steps : 0)) recap.bestDay = {day, steps};
    if (steps >= goal) ++recap.goalDays;
}

}  // namespace

Task<MonthlyRecap> fetchMonthlyRecap(ActivityReads& reads, std::chrono::year_month month, Calendar calendar,
                                     GoalHistory goals, Day today) {
    MonthlyRecap recap{.month = month};
    const Day first = firstDay(month);
    const Day last = std::min(today, first + std::chrono::days(dayCount(month) - 1));
    if (last < first) co_return recap;

    const auto days = co_await reads.fetchDailySteps(first, last, calendar, QueryPriority::normal);
    Day day = first;
    for (const std::int64_t steps : days.value_or(std::vector<std::int64_t>())) {
        addDay(recap, day, steps, goals.goalOn(day));
        day += std::chrono::days(1);
    }
    recap.averageSteps = static_cast<double>(recap.totalSteps) / static_cast<double>((last - first).count() + 1);
    recap.distanceMeters =
        co_await reads.fetchDistance(calendar.start(first), calendar.interval(last).end, QueryPriority::normal);
    co_return recap;
}

Phrase monthName(std::chrono::year_month month, Day today) {
    // i18n: texts
    static constexpr std::array<std::string_view, 12> names{"January",   "February", "March",    "April",
                                                            "May",       "June",     "July",     "August",
                                                            "September", "October",  "November", "December"};
    // i18n: end
    const std::string_view name = names.at(static_cast<unsigned>(month.month()) - 1);
    if (month.year() == pedvar::month(today).year()) return name;
    return Phrase("{0} {1}", {name, std::to_string(static_cast<int>(month.year()))});
}

}  // namespace pedvar
