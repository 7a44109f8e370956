/// A metric over the days up to a chosen one.
#pragma once

#include "core/calendar.h"
#include "health/activity_reads.h"

namespace pedvar {

/// The totals of consecutive days. Days outside are days without samples.
class MetricHistory {
public:
    MetricHistory(Day first, DayTotals totals) : first_(first), totals_(std::move(totals)) {}

    /// 0 without samples.
    double on(Day day) const;
    /// From `first` to `last`, both included, as are the spans below.
    double sum(Day first, Day last) const;
    /// Over the days with samples; 0 without any.
    double average(Day first, Day last) const;
    /// The highest total of a day; 0 without any.
    double best(Day first, Day last) const;

private:
    /// The totals of the days with samples.
    std::vector<double> known(Day first, Day last) const;

    Day first_;
    DayTotals totals_;
};

}  // namespace pedvar
