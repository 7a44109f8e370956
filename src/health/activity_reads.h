/// Steps and what goes with them, read from the health store.
#pragma once

#include "core/async.h"
#include "core/calendar.h"
#include "health/gated_reads.h"
#include "health/step_records.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace pedvar {

/// Sums over the 24 clock hours of one day.
using HourTotals = std::array<double, 24>;

/// `total` as a count: truncated, 0 for what is no number, and never so large that adding up counts overflows.
std::int64_t wholeNumber(double total);

/// The hours as counts that add up to `wholeNumber` of their sum: each is what it adds to the truncated total so
/// far.
std::array<std::int64_t, 24> wholeHours(const HourTotals& totals);

/// The 24 entries of `day`.
std::vector<HourlyStepData> hourlyEntries(Day day, const Calendar& calendar, const HourTotals& steps,
                                          const HourTotals& distance);

/// One total a day; none for a day without samples.
using DayTotals = std::vector<std::optional<double>>;

struct ActivityQuantity;

/// Totals and series of steps, distance, energy, minutes and flights. A sum counts samples that start in its
/// interval. What cannot be read is 0, unless said otherwise. Lives on the main executor.
class ActivityReads {
public:
    explicit ActivityReads(GatedReads& reads) : reads_(reads) {}

    Task<std::int64_t> fetchSteps(Date from, Date to, QueryPriority priority);
    /// Metres on foot.
    Task<double> fetchDistance(Date from, Date to, QueryPriority priority);
    /// Kilocalories.
    Task<double> fetchActiveCalories(Date from, Date to, QueryPriority priority);
    Task<std::int64_t> fetchActiveMinutes(Date from, Date to, QueryPriority priority);
    Task<std::int64_t> fetchFlightsClimbed(Date from, Date to, QueryPriority priority);

    /// Millilitres of water drunk.
    Task<double> fetchWater(Date from, Date to, QueryPriority priority);
    Task<std::optional<DayTotals>> fetchDailyWater(Day first, Day last, Calendar calendar, QueryPriority priority);
    /// When the samples of water that Pedvar wrote start; none when they cannot be read.
    Task<std::optional<std::vector<Date>>> fetchOwnWater(Interval within, QueryPriority priority);
    /// Kilograms, as weighed last before `before`; none without a weight or when it cannot be read.
    Task<std::optional<double>> fetchBodyMass(Date before, QueryPriority priority);

    Task<SelectedDayMetrics> fetchDayMetrics(Day day, Calendar calendar, QueryPriority priority);

    /// The totals of `metric` on the days from `first` to `last`, counts whole; none when they cannot be read.
    Task<std::optional<DayTotals>> fetchDayTotals(ActivityMetric metric, Day first, Day last, Calendar calendar,
                                                  QueryPriority priority);
    /// One entry for each day from `first` to `last`.
    Task<std::vector<DailyStepData>> fetchDailyData(Day first, Day last, Calendar calendar,
                                                    QueryPriority priority);
    /// The steps of each day from `first` to `last`; none when they cannot be read.
    Task<std::optional<std::vector<std::int64_t>>> fetchDailySteps(Day first, Day last, Calendar calendar,
                                                                   QueryPriority priority);

    /// The steps of the hours of each day from `first` to `last`; none when they cannot be read.
    Task<std::optional<std::vector<std::array<std::int64_t, 24>>>> fetchHourlySteps(Day first, Day last,
                                                                                    Calendar calendar,
                                                                                    QueryPriority priority);

    /// The 24 hours of `day` with steps and distance; no entries when the steps cannot be read.
    Task<std::vector<HourlyStepData>> fetchHourlyData(Day day, Calendar calendar, QueryPriority priority);
    /// The 24 hours of the day that lasts from `from` to `to`, without distance; no entries when they cannot be
    /// read.
    Task<std::vector<HourlyStepData>> hourlyStepsViaCollectionQuery(HKQuantityType stepType, Date from, Date to,
                                                                    Calendar calendar, QueryPriority priority);
    /// One entry for each day from `first` to `last`; no entries when they cannot be read.
    Task<std::vector<DailyTimeWindowSteps>> fetchTimeWindowSteps(Day first, Day last, Calendar calendar,
                                                                 QueryPriority priority);

    /// When the first step sample starts, and when the last one that starts before `before` does; none without
    /// samples or when they cannot be read.
    Task<std::optional<Date>> fetchOldestStepDate(Date before, QueryPriority priority);
    Task<std::optional<Date>> fetchNewestStepDate(Date before, QueryPriority priority);

    /// The same of another type.
    Task<std::optional<Date>> fetchOldestDate(HKQuantityType type, Date before, QueryPriority priority);

    /// The times that samples of `type` from `sources` cover, oldest first, without overlap; none without sources.
    Task<std::vector<Interval>> ownSampleWindows(HKQuantityType type, Interval within,
                                                 std::vector<HKSource> sources, QueryPriority priority);
    /// How much of the sum of `type`, in `unit`, Pedvar contributed.
    Task<SourceSplit> fetchSourceSplit(HKQuantityType type, HKUnit unit, Interval within, QueryPriority priority);

private:
    Task<double> fetchSum(ActivityQuantity quantity, Date from, Date to, QueryPriority priority);
    Task<std::int64_t> fetchCount(ActivityQuantity quantity, Date from, Date to, QueryPriority priority);
    Task<std::optional<DayTotals>> fetchDayTotals(ActivityQuantity quantity, Day first, Day last,
                                                  Calendar calendar, QueryPriority priority);
    /// By day, from the one that holds `from` on.
    Task<std::optional<std::vector<HourTotals>>> fetchHourTotals(HKQuantityType type, HKUnit unit, Date from,
                                                                 Date to, Calendar calendar,
                                                                 QueryPriority priority);
    /// The first sample in the order of `sort`.
    Task<std::optional<HKQuantitySample>> fetchSample(HKQuantityType type, Date before, HKSampleSort sort,
                                                      QueryPriority priority);

    GatedReads& reads_;
};

}  // namespace pedvar
