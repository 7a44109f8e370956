/// Counting the samples of a series.
#pragma once

#include "linux/health/day_totals.h"
#include "linux/health/overlap_count.h"
#include "linux/health/source_order.h"

#include <functional>
#include <vector>

namespace pedvar {

class Connection;

/// A sample with what it counts.
struct CountedSample {
    Span span;
    std::int32_t source;
    double counted;
};

/// Counts samples of one series where the sources of an order are all there are. The samples and the order have to
/// be of one moment: use it within a transaction or while a statement runs.
class SampleCounter {
public:
    using Credit = std::function<void(const CountedSample&)>;

    SampleCounter(Connection& connection, std::int32_t series, SourceOrder order)
        : connection_(connection), series_(series), order_(std::move(order)) {}

    /// Samples of at most four hours that start within `starts`, whatever its length. `reach` is an upper bound of
    /// the duration of samples that start within `starts` or that much before or after.
    void countShort(Span starts, const Credit& credit, Milliseconds reach = longestShortDuration) const;

    /// Longer samples that start within `starts`, in order of start: of each what no sample of at most four hours
    /// and no other long one of a source of higher priority covers.
    void countLong(Span starts, const Credit& credit) const;

    /// `dayCount` days from `first` on.
    std::vector<DayTotals> countDays(DayNumber first, std::size_t dayCount) const;

private:
    struct LongSample {
        Span span;
        std::size_t rank;
        double value;
    };

    std::optional<Milliseconds> edge(std::string_view sql) const;
    void countWindow(Span starts, const Credit& credit, Milliseconds reach) const;
    std::vector<LongSample> longSamples(Span starts) const;
    double countedOf(const LongSample& sample) const;

    Connection& connection_;
    std::int32_t series_;
    SourceOrder order_;
};

/// Duration of the longest sample of a series.
Milliseconds longestDuration(Connection& connection, std::int32_t series);

}  // namespace pedvar
