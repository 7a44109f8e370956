#include "linux/health/collection_intervals.h"

#include <algorithm>

namespace pedvar {

std::vector<Interval> collectionIntervals(const ZoneRules& zone, Date anchor, Date end, DateComponents step) {
    // A day that has no midnight is walked from the midnight that it would have.
    const LocalTime shown = zone.localTime(anchor);
    const LocalTime midnight = std::chrono::floor<std::chrono::days>(shown);
    const LocalTime first = zone.instant(midnight) == anchor ? midnight : shown;

    const Seconds length = std::chrono::days(step.day) + std::chrono::hours(step.hour);
    std::vector<Interval> intervals;
    for (Date start = anchor; start < end && intervals.size() < highestIntervalCount;) {
        const auto number = static_cast<double>(intervals.size() + 1);
        const Date next = std::max(start, zone.instant(first + number * length));
        intervals.push_back({start, next});
        start = next;
    }
    return intervals;
}

}  // namespace pedvar
