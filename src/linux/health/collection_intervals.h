/// The intervals of a collection query.
#pragma once

#include "core/calendar.h"
#include "platform/health_store.h"

#include <vector>

namespace pedvar {

inline constexpr std::size_t highestIntervalCount = 300'000;  // 34 years of hours

/// Consecutive intervals of the zone's clock from `anchor` on, until one reaches `end`. An hour that the clocks
/// skip is empty, one that they show twice is one. Ends early at the highest count.
std::vector<Interval> collectionIntervals(const ZoneRules& zone, Date anchor, Date end, DateComponents step);

}  // namespace pedvar
