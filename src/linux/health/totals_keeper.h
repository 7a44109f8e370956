/// Keeping totals true.
#pragma once

#include "linux/health/day_totals.h"
#include "linux/health/overlap_count.h"
#include "linux/health/sample_counter.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

namespace pedvar {

class Connection;

/// Counts the changes of the sums of `type`.
std::int64_t stateOf(Connection& connection, std::string_view type);

/// Marks and makes the rows of `totals`, and notes the days whose sums change. All in the caller's writing
/// transaction, after the samples that it is about.
class TotalsKeeper {
public:
    explicit TotalsKeeper(Connection& connection) : connection_(connection) {}

    /// Samples were added that start on `day` and lie within `extent`, the last of them starting at `lastStart`.
    void markStale(std::int32_t series, DayNumber day, Span extent, Milliseconds lastStart);

    /// The order of the sources has changed.
    void markAllStale();

    /// Nothing that was kept is believed.
    void startAnew();

    /// One sample was added: counts anew what it changes, and nothing of days that are stale.
    void update(std::int32_t series, Span sample);
    /// One sample was removed: makes the days anew that it was counted in, and nothing of days that are stale.
    void updateAfterRemoval(std::int32_t series, Span sample);

    /// Makes up to `highestCount` stale rows; how many it made.
    std::size_t makeSome(std::size_t highestCount);

    std::int64_t staleCount();

private:
    using Days = std::map<DayNumber, std::optional<DayTotals>>;  // none when stale

    Days load(std::int32_t series, DayNumber first, DayNumber last);
    void store(std::int32_t series, DayNumber day, const DayTotals& totals);
    void noteChange(std::int32_t series, Span starts);
    void noteChangeOfAll();
    void updateQuarters(const SampleCounter& counter, std::int32_t series, Span sample);
    void updateLongShares(const SampleCounter& counter, std::int32_t series, Span sample);
    void make(std::int32_t series, DayNumber first, std::size_t dayCount);

    Connection& connection_;
};

}  // namespace pedvar
