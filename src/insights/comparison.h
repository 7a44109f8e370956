/// A day against the person's own past.
#pragma once

#include "core/async.h"
#include "core/calendar.h"
#include "health/activity_reads.h"
#include "insights/metric_history.h"
#include "platform/phrase.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

using ComparisonMetric = ActivityMetric;

/// "Active Min".
std::string_view title(ComparisonMetric metric);

/// A day's value, or that of a period, beside what it is compared with.
struct ComparisonDelta {
    double current = 0;
    double reference = 0;

    double difference() const { return current - reference; }
    /// The difference as a share of the reference, rounded; none when the reference is not above 0.
    std::optional<std::int64_t> percent() const;
    bool operator==(const ComparisonDelta&) const = default;
};

/// Shows an amount of the metric the way the person reads it.
using AmountText = std::function<std::string(double)>;

/// "1,240 more, 12%"; "the same" when the difference shows as none.
Phrase wording(const ComparisonDelta& delta, const AmountText& amountText);

struct ComparisonRowSpec {
    std::string_view id;  // "sameDayLastWeek"
    std::string_view icon;
    std::string_view title;
    std::string_view subtitle;
    ComparisonDelta delta;
    bool operator==(const ComparisonRowSpec&) const = default;
};

struct ComparisonSection {
    std::string_view title;
    std::vector<ComparisonRowSpec> rows;
    bool operator==(const ComparisonSection&) const = default;
};

/// All that the comparison cards show of one day.
struct Comparison {
    ComparisonMetric metric = ComparisonMetric::steps;
    double current = 0;
    double sevenDayAverage = 0;
    std::optional<Phrase> sentence;
    std::vector<ComparisonSection> sections;
    bool operator==(const Comparison&) const = default;
};

/// How the day does against its 7-day average, in one sentence; none when either is not above 0.
std::optional<Phrase> summarySentence(ComparisonMetric metric, double current, double sevenDayAverage);

/// Averages and the best are over the days before `day`, it not included. Of a month without the day's number the
/// last day stands for it. `goal` is the one in force on `day`, which steps alone are compared with.
Comparison compare(ComparisonMetric metric, Day day, const MetricHistory& history, const Calendar& calendar,
                   std::int64_t goal);

/// The same with the history read in one pass. What cannot be read is 0.
Task<Comparison> fetchComparison(ActivityReads& reads, ComparisonMetric metric, Day day, Calendar calendar,
                                 std::int64_t goal);

}  // namespace pedvar
