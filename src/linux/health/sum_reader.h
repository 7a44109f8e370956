/// Sums from the kept totals.
#pragma once

#include "linux/health/day_totals.h"
#include "linux/health/overlap_count.h"
#include "linux/health/sample_counter.h"

#include <optional>
#include <span>
#include <vector>

namespace pedvar {

class Connection;

/// Samples that are summed together: those that start within `starts`.
struct Bucket {
    Span starts;
    bool holdsWholeDays;  // samples longer than four hours count here
};

/// Sums one series, quarter hour by quarter hour where totals are kept; what is stale, or only part of a quarter
/// hour, is counted from the samples.
class SumReader {
public:
    SumReader(Connection& connection, std::int32_t series) : connection_(connection), series_(series) {}

    /// The sum of each bucket, `noSamples` for an empty one. Buckets are in order and do not overlap.
    std::vector<double> sums(std::span<const Bucket> buckets);

private:
    double sumOfDay(DayNumber day, const DayTotals& totals, const Bucket& bucket);
    double sumOfPart(const DayTotals& day, double sumOfQuarter, Span part);
    bool hasSamplesWithin(Span starts);
    const SampleCounter& counter();

    Connection& connection_;
    std::int32_t series_;
    std::optional<SampleCounter> counter_;
};

}  // namespace pedvar
