#include "health/activity_reads.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <string>
#include <utility>

namespace pedvar {

/// A cumulative quantity and the unit in which it is asked for.
struct ActivityQuantity {
    const char* identifier;
    HKUnit unit;
};

namespace {

// Samples count with shares that binary fractions cannot always hold: a whole total may come out this much short.
constexpr double shareTolerance = 1e-6;
// Exact as a double, and thousands of it fit in 64 bits.
constexpr double highestTotal = 1e15;

// No device that writes steps is older, so earlier dates are mistakes of sources.
constexpr Date oldestSensibleDate = dateFromUnix(0);

ActivityQuantity stepCount() {
    return {HKQuantityTypeIdentifierStepCount, HKUnit::count()};
}
ActivityQuantity distanceOnFoot() {
    return {HKQuantityTypeIdentifierDistanceWalkingRunning, HKUnit::meter()};
}
ActivityQuantity activeEnergy() {
    return {HKQuantityTypeIdentifierActiveEnergyBurned, HKUnit::kilocalorie()};
}
ActivityQuantity exerciseTime() {
    return {HKQuantityTypeIdentifierAppleExerciseTime, HKUnit::minute()};
}
ActivityQuantity flightsClimbed() {
    return {HKQuantityTypeIdentifierFlightsClimbed, HKUnit::count()};
}

ActivityQuantity waterDrunk() {
    return {HKQuantityTypeIdentifierDietaryWater, HKUnit::milliliter()};
}

/// 0 without samples, and for an amount of another dimension: sources are not held to the unit of a type.
double amount(const std::optional<HKQuantity>& quantity, HKUnit unit) {
    return quantity && quantity->dimension() == unit.dimension ? quantity->doubleValue(unit) : 0;
}

int hourOf(LocalTime time) {
    return static_cast<int>(
        std::chrono::floor<std::chrono::hours>(time - std::chrono::floor<std::chrono::days>(time)).count());
}

std::string idOf(Day day, int hour) {
    return isoText(day) + (hour < 10 ? "T0" : "T") + std::to_string(hour);
}

std::size_t daysBetween(Day first, Day end) {
    return end > first ? static_cast<std::size_t>((end - first).count()) : 0;
}

ActivityQuantity quantityOf(ActivityMetric metric) {
    switch (metric) {
        case ActivityMetric::steps:
            return stepCount();
        case ActivityMetric::distance:
            return distanceOnFoot();
        case ActivityMetric::calories:
            return activeEnergy();
        case ActivityMetric::activeMinutes:
            return exerciseTime();
        case ActivityMetric::flights:
            break;
    }
    return flightsClimbed();
}

bool isCounted(ActivityMetric metric) {
    return metric != ActivityMetric::distance && metric != ActivityMetric::calories;
}

double valueAt(const std::optional<DayTotals>& totals, std::size_t index) {
    return totals ? (*totals)[index].value_or(0) : 0;
}

std::vector<Interval> merged(std::span<const HKQuantitySample> byStart) {
    std::vector<Interval> windows;
    for (const HKQuantitySample& sample : byStart) {
        if (windows.empty() || sample.start > windows.back().end) {
            windows.push_back({sample.start, sample.end});
        } else {
            windows.back().end = std::max(windows.back().end, sample.end);
        }
    }
    return windows;
}

}  // namespace

std::int64_t wholeNumber(double total) {
    if (std::isnan(total)) return 0;
    return static_cast<std::int64_t>(std::clamp(total + shareTolerance, 0.0, highestTotal));
}

std::array<std::int64_t, 24> wholeHours(const HourTotals& totals) {
    std::array<std::int64_t, 24> hours{};
    double sum = 0;
    std::int64_t counted = 0;
    for (std::size_t hour = 0; hour < hours.size(); ++hour) {
        sum += totals[hour];
        const std::int64_t total = std::max(wholeNumber(sum), counted);  // never fewer, whatever sources claim
        hours[hour] = total - counted;
        counted = total;
    }
    return hours;
}

std::vector<HourlyStepData> hourlyEntries(Day day, const Calendar& calendar, const HourTotals& steps,
                                          const HourTotals& distance) {
    const auto counts = wholeHours(steps);
    std::vector<HourlyStepData> entries;
    for (int hour = 0; hour < 24; ++hour) {
        const auto index = static_cast<std::size_t>(hour);
        entries.push_back({idOf(day, hour), calendar.hour(day, hour).start, hour, counts[index], distance[index]});
    }
    return entries;
}

Task<double> ActivityReads::fetchSum(ActivityQuantity quantity, Date from, Date to, QueryPriority priority) {
    const HKQuantityType type{quantity.identifier};
    const HKPredicate predicate{from, to, HKQueryOptions::strictStartDate};
    const auto sumOf = [unit = quantity.unit](const HKStatistics& statistics) {
        return amount(statistics.sumQuantity(), unit);
    };
    const auto sum =
        co_await reads_.fetchGatedStatistics(type, predicate, HKStatisticsOptions::cumulativeSum, priority, sumOf);
    co_return sum.value_or(0);
}

Task<std::int64_t> ActivityReads::fetchCount(ActivityQuantity quantity, Date from, Date to,
                                             QueryPriority priority) {
    const double sum = co_await fetchSum(quantity, from, to, priority);
    co_return wholeNumber(sum);
}

Task<std::int64_t> ActivityReads::fetchSteps(Date from, Date to, QueryPriority priority) {
    return fetchCount(stepCount(), from, to, priority);
}

Task<double> ActivityReads::fetchDistance(Date from, Date to, QueryPriority priority) {
    return fetchSum(distanceOnFoot(), from, to, priority);
}

Task<double> ActivityReads::fetchActiveCalories(Date from, Date to, QueryPriority priority) {
    return fetchSum(activeEnergy(), from, to, priority);
}

Task<std::int64_t> ActivityReads::fetchActiveMinutes(Date from, Date to, QueryPriority priority) {
    return fetchCount(exerciseTime(), from, to, priority);
}

Task<std::int64_t> ActivityReads::fetchFlightsClimbed(Date from, Date to, QueryPriority priority) {
    return fetchCount(flightsClimbed(), from, to, priority);
}

Task<double> ActivityReads::fetchWater(Date from, Date to, QueryPriority priority) {
    return fetchSum(waterDrunk(), from, to, priority);
}

Task<std::optional<DayTotals>> ActivityReads::fetchDailyWater(Day first, Day last, Calendar calendar,
                                                              QueryPriority priority) {
    return fetchDayTotals(waterDrunk(), first, last, calendar, priority);
}

Task<std::optional<std::vector<Date>>> ActivityReads::fetchOwnWater(Interval within, QueryPriority priority) {
    const HKQuantityType type{waterDrunk().identifier};
    const HKPredicate predicate{within.start, within.end, HKQueryOptions::strictStartDate};
    const auto samples = co_await reads_.fetchSamples(type, predicate, 0, HKSampleSort::none, priority);
    if (!samples) co_return std::nullopt;
    std::vector<Date> moments;
    for (const HKQuantitySample& sample : *samples) {
        if (sample.source.isOwn) moments.push_back(sample.start);
    }
    co_return moments;
}

Task<std::optional<double>> ActivityReads::fetchBodyMass(Date before, QueryPriority priority) {
    const HKQuantityType type{HKQuantityTypeIdentifierBodyMass};
    const auto sample = co_await fetchSample(type, before, HKSampleSort::startDateDescending, priority);
    if (!sample) co_return std::nullopt;
    co_return amount(sample->quantity, HKUnit::kilogram());
}

Task<SelectedDayMetrics> ActivityReads::fetchDayMetrics(Day day, Calendar calendar, QueryPriority priority) {
    const Date start = calendar.start(day);
    const Date end = calendar.start(day + std::chrono::days(1));
    const Date previousStart = calendar.start(day - std::chrono::days(1));
    SelectedDayMetrics metrics;
    metrics.steps = co_await fetchSteps(start, end, priority);
    metrics.distanceMeters = co_await fetchDistance(start, end, priority);
    metrics.activeCalories = co_await fetchActiveCalories(start, end, priority);
    metrics.activeMinutes = co_await fetchActiveMinutes(start, end, priority);
    metrics.flights = co_await fetchFlightsClimbed(start, end, priority);
    metrics.previousDaySteps = co_await fetchSteps(previousStart, start, priority);
    co_return metrics;
}

Task<std::optional<DayTotals>> ActivityReads::fetchDayTotals(ActivityQuantity quantity, Day first, Day last,
                                                             Calendar calendar, QueryPriority priority) {
    const Day end = last + std::chrono::days(1);
    const HKQuantityType type{quantity.identifier};
    const HKPredicate predicate{calendar.start(first), calendar.start(end), HKQueryOptions::strictStartDate};
    const DateComponents daily{.day = 1};
    const auto days = co_await reads_.fetchCollection(type, predicate, daily, priority);
    if (!days) co_return std::nullopt;

    DayTotals totals(daysBetween(first, end));
    for (const HKStatistics& statistics : *days) {
        const Day day = calendar.day(statistics.interval.start);
        if (day < first || end <= day || !statistics.sum) continue;
        auto& total = totals[daysBetween(first, day)];
        total = total.value_or(0) + amount(statistics.sum, quantity.unit);
    }
    co_return totals;
}

Task<std::optional<DayTotals>> ActivityReads::fetchDayTotals(ActivityMetric metric, Day first, Day last,
                                                             Calendar calendar, QueryPriority priority) {
    auto totals = co_await fetchDayTotals(quantityOf(metric), first, last, calendar, priority);
    if (!totals || !isCounted(metric)) co_return totals;
    for (auto& total : *totals) {
        if (total) total = static_cast<double>(wholeNumber(*total));
    }
    co_return totals;
}

Task<std::vector<DailyStepData>> ActivityReads::fetchDailyData(Day first, Day last, Calendar calendar,
                                                               QueryPriority priority) {
    const auto steps = co_await fetchDayTotals(stepCount(), first, last, calendar, priority);
    const auto distance = co_await fetchDayTotals(distanceOnFoot(), first, last, calendar, priority);
    const auto energy = co_await fetchDayTotals(activeEnergy(), first, last, calendar, priority);
    const auto minutes = co_await fetchDayTotals(exerciseTime(), first, last, calendar, priority);
    std::vector<DailyStepData> entries;
    for (std::size_t i = 0; first + std::chrono::days(i) <= last; ++i) {
        const Day day = first + std::chrono::days(i);
        entries.push_back({isoText(day), calendar.start(day), wholeNumber(valueAt(steps, i)), valueAt(distance, i),
                           valueAt(energy, i), wholeNumber(valueAt(minutes, i))});
    }
    co_return entries;
}

Task<std::optional<std::vector<std::int64_t>>> ActivityReads::fetchDailySteps(Day first, Day last,
                                                                              Calendar calendar,
                                                                              QueryPriority priority) {
    const auto totals = co_await fetchDayTotals(stepCount(), first, last, calendar, priority);
    if (!totals) co_return std::nullopt;
    std::vector<std::int64_t> steps;
    for (const auto& total : *totals) steps.push_back(wholeNumber(total.value_or(0)));
    co_return steps;
}

Task<std::optional<std::vector<HourTotals>>> ActivityReads::fetchHourTotals(HKQuantityType type, HKUnit unit,
                                                                            Date from, Date to, Calendar calendar,
                                                                            QueryPriority priority) {
    const HKPredicate predicate{from, to, HKQueryOptions::strictStartDate};
    const DateComponents hourly{.hour = 1};
    const auto hours = co_await reads_.fetchCollection(type, predicate, hourly, priority);
    if (!hours) co_return std::nullopt;

    const Day first = calendar.day(from);
    const Day last = calendar.day(to);
    const bool endsAtMidnight = calendar.start(last) == to;
    std::vector<HourTotals> totals(daysBetween(first, last) + (endsAtMidnight ? 0 : 1));
    for (const HKStatistics& statistics : *hours) {
        const Day day = calendar.day(statistics.interval.start);
        if (day < first || daysBetween(first, day) >= totals.size()) continue;
        const auto hour = static_cast<std::size_t>(hourOf(calendar.localTime(statistics.interval.start)));
        totals[daysBetween(first, day)][hour] += amount(statistics.sum, unit);
    }
    co_return totals;
}

Task<std::optional<std::vector<std::array<std::int64_t, 24>>>> ActivityReads::fetchHourlySteps(
    Day first, Day last, Calendar calendar, QueryPriority priority) {
    const Date from = calendar.start(first);
    const Date to = calendar.start(last + std::chrono::days(1));
    const HKQuantityType type{HKQuantityTypeIdentifierStepCount};
    const auto days = co_await fetchHourTotals(type, HKUnit::count(), from, to, calendar, priority);
    if (!days) co_return std::nullopt;
    std::vector<std::array<std::int64_t, 24>> hours;
    for (const HourTotals& day : *days) hours.push_back(wholeHours(day));
    co_return hours;
}

Task<std::vector<HourlyStepData>> ActivityReads::hourlyStepsViaCollectionQuery(HKQuantityType stepType, Date from,
                                                                               Date to, Calendar calendar,
                                                                               QueryPriority priority) {
    const auto days = co_await fetchHourTotals(stepType, HKUnit::count(), from, to, calendar, priority);
    if (!days || days->empty()) co_return std::vector<HourlyStepData>();
    co_return hourlyEntries(calendar.day(from), calendar, days->front(), HourTotals{});
}

Task<std::vector<HourlyStepData>> ActivityReads::fetchHourlyData(Day day, Calendar calendar,
                                                                 QueryPriority priority) {
    const Date from = calendar.start(day);
    const Date to = calendar.start(day + std::chrono::days(1));
    const HKQuantityType stepType{HKQuantityTypeIdentifierStepCount};
    auto entries = co_await hourlyStepsViaCollectionQuery(stepType, from, to, calendar, priority);
    if (entries.empty()) co_return entries;

    const HKQuantityType distanceType{HKQuantityTypeIdentifierDistanceWalkingRunning};
    const auto distances = co_await fetchHourTotals(distanceType, HKUnit::meter(), from, to, calendar, priority);
    if (!distances || distances->empty()) co_return entries;
    for (std::size_t hour = 0; hour < entries.size(); ++hour) entries[hour].distance = distances->front()[hour];
    co_return entries;
}

Task<std::vector<DailyTimeWindowSteps>> ActivityReads::fetchTimeWindowSteps(Day first, Day last, Calendar calendar,
                                                                            QueryPriority priority) {
    const auto days = co_await fetchHourlySteps(first, last, calendar, priority);
    std::vector<DailyTimeWindowSteps> entries;
    for (std::size_t i = 0; days && i < days->size(); ++i) {
        const Day day = first + std::chrono::days(i);
        const auto& hours = (*days)[i];
        const auto stepsOf = [&hours](std::ptrdiff_t begin, std::ptrdiff_t end) {
            return std::accumulate(hours.begin() + begin, hours.begin() + end, std::int64_t{0});
        };
        entries.push_back({isoText(day), calendar.start(day), stepsOf(0, 9), stepsOf(21, 24), stepsOf(0, 1)});
    }
    co_return entries;
}

Task<std::optional<HKQuantitySample>> ActivityReads::fetchSample(HKQuantityType type, Date before,
                                                                 HKSampleSort sort, QueryPriority priority) {
    const HKPredicate predicate{oldestSensibleDate, before, HKQueryOptions::strictStartDate};
    const auto samples = co_await reads_.fetchSamples(type, predicate, 1, sort, priority);
    if (!samples || samples->empty()) co_return std::nullopt;
    co_return samples->front();
}

Task<std::optional<Date>> ActivityReads::fetchOldestStepDate(Date before, QueryPriority priority) {
    return fetchOldestDate({HKQuantityTypeIdentifierStepCount}, before, priority);
}

Task<std::optional<Date>> ActivityReads::fetchNewestStepDate(Date before, QueryPriority priority) {
    const HKQuantityType type{HKQuantityTypeIdentifierStepCount};
    const auto sample = co_await fetchSample(type, before, HKSampleSort::startDateDescending, priority);
    co_return sample ? std::optional(sample->start) : std::nullopt;
}

Task<std::optional<Date>> ActivityReads::fetchOldestDate(HKQuantityType type, Date before,
                                                         QueryPriority priority) {
    const auto sample = co_await fetchSample(type, before, HKSampleSort::startDateAscending, priority);
    co_return sample ? std::optional(sample->start) : std::nullopt;
}

Task<std::vector<Interval>> ActivityReads::ownSampleWindows(HKQuantityType type, Interval within,
                                                            std::vector<HKSource> sources,
                                                            QueryPriority priority) {
    if (sources.empty()) co_return std::vector<Interval>();  // a predicate without sources means all of them
    const HKPredicate predicate{within.start, within.end, HKQueryOptions::none, sources};
    const auto samples =
        co_await reads_.fetchSamples(type, predicate, 0, HKSampleSort::startDateAscending, priority);
    if (!samples) co_return std::vector<Interval>();
    co_return merged(*samples);
}

Task<SourceSplit> ActivityReads::fetchSourceSplit(HKQuantityType type, HKUnit unit, Interval within,
                                                  QueryPriority priority) {
    const HKPredicate predicate{within.start, within.end, HKQueryOptions::strictStartDate};
    const auto options = HKStatisticsOptions::cumulativeSum | HKStatisticsOptions::separateBySource;
    const auto splitOf = [unit](const HKStatistics& statistics) {
        SourceSplit split;
        for (const auto& [source, sum] : statistics.sumBySource) {
            (source.isOwn ? split.ours : split.others) += amount(sum, unit);
            (source.isOwn ? split.ownSources : split.otherSources).push_back(source);
        }
        split.total = split.ours + split.others;
        return split;
    };
    auto split = co_await reads_.fetchGatedStatistics(type, predicate, options, priority, splitOf);
    co_return split.value_or(SourceSplit{});
}

}  // namespace pedvar
