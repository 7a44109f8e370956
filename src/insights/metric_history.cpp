#include "insights/metric_history.h"

#include <algorithm>
#include <numeric>

namespace pedvar {

std::vector<double> MetricHistory::known(Day first, Day last) const {
    std::vector<double> known;
    Day day = first_;
    for (const std::optional<double>& total : totals_) {
        if (total && first <= day && day <= last) known.push_back(*total);
        day += std::chrono::days(1);
    }
    return known;
}

double MetricHistory::on(Day day) const {
    return sum(day, day);
}

double MetricHistory::sum(Day first, Day last) const {
    const auto days = known(first, last);
    return std::accumulate(days.begin(), days.end(), 0.0);
}

double MetricHistory::average(Day first, Day last) const {
    const auto days = known(first, last);
    return days.empty() ? 0 : sum(first, last) / static_cast<double>(days.size());
}

double MetricHistory::best(Day first, Day last) const {
    const auto days = known(first, last);
    return days.empty() ? 0 : std::ranges::max(days);
}

}  // namespace pedvar
