#include "linux/health/health_reader.h"

#include "linux/health/cumulative_types.h"
#include "linux/health/totals_keeper.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <tuple>
#include <utility>

namespace pedvar {
namespace {

constexpr Seconds shortestWholeDay = std::chrono::hours(22);  // no zone's clocks go forward by more than two hours
constexpr std::int64_t invalidArgument = 3;                   // the platform's code

bool isStrict(const HKPredicate& predicate) {
    return predicate.options == HKQueryOptions::strictStartDate;
}

Span spanOf(const HKPredicate& predicate) {
    return {millisecondsOf(predicate.start), millisecondsOf(predicate.end)};
}

bool admits(const HKPredicate& predicate, std::int32_t source) {
    return predicate.sources.empty() ||
           std::ranges::find(predicate.sources, source, &HKSource::id) != predicate.sources.end();
}

/// The intervals as far as the predicate reaches.
std::vector<Bucket> bucketsOf(const HKPredicate& predicate, std::span<const Interval> intervals) {
    const Span limits = spanOf(predicate);
    std::vector<Bucket> buckets;
    for (const Interval& interval : intervals) {
        const Milliseconds start = std::max(millisecondsOf(interval.start), limits.start);
        const Milliseconds end = std::min(millisecondsOf(interval.end), limits.end);
        buckets.push_back({{start, std::max(start, end)}, interval.length() >= shortestWholeDay});
    }
    return buckets;
}

std::optional<std::size_t> bucketOf(std::span<const Bucket> buckets, const HKPredicate& predicate, Span sample) {
    const auto after =
        std::ranges::upper_bound(buckets, sample.start, {}, [](const Bucket& b) { return b.starts.start; });
    if (after == buckets.begin()) {
        const bool reachesIntoFirst = sample.end > buckets.front().starts.start;
        return reachesIntoFirst && !isStrict(predicate) ? std::optional<std::size_t>(0) : std::nullopt;
    }
    const auto bucket = static_cast<std::size_t>(after - buckets.begin()) - 1;
    return buckets[bucket].starts.contains(sample.start) ? std::optional(bucket) : std::nullopt;
}

HKSource sourceOf(const std::map<std::int32_t, HKSource>& known, std::int32_t number) {
    const auto found = known.find(number);
    return found != known.end() ? found->second : HKSource{number, {}};
}

}  // namespace

bool HealthReader::isConnected() {
    return connection_.number("SELECT EXISTS (SELECT 1 FROM sources)") != 0;
}

RecalledText HealthReader::recall(std::string_view key, std::string_view type) {
    Transaction moment(connection_, Transaction::Kind::read);
    RecalledText recalled{.state = stateOf(connection_, type)};
    Rows rows = connection_.query("SELECT text FROM derived WHERE key = ? AND type = ?", key, type);
    if (rows.next()) recalled.text = rows.text(0);
    return recalled;
}

std::optional<HealthReader::Series> HealthReader::findSeries(const std::string& type) {
    if (const auto known = series_.find(type); known != series_.end()) return known->second;
    Rows rows =
        connection_.query("SELECT id, unit FROM series WHERE identifier = ? ORDER BY id", std::string_view(type));
    while (rows.next()) {
        const auto unit = unitNamed(rows.text(1));
        if (unit)
            return series_.emplace(type, Series{static_cast<std::int32_t>(rows.integer(0)), *unit}).first->second;
    }
    return std::nullopt;
}

std::map<std::int32_t, HKSource> HealthReader::sources() {
    std::map<std::int32_t, HKSource> sources;
    Rows rows = connection_.query("SELECT id, name, kind FROM sources");
    while (rows.next()) {
        const bool isOwn = sourceKindNamed(rows.text(2)) == SourceKind::own;
        sources.emplace(rows.integer(0), HKSource{rows.integer(0), std::string(rows.text(1)), isOwn});
    }
    return sources;
}

HKResult<std::vector<HKStatistics>> HealthReader::statistics(const HKQuantityType& type,
                                                             const HKPredicate& predicate,
                                                             HKStatisticsOptions options,
                                                             std::span<const Interval> intervals) {
    const bool asksForSum = contains(options, HKStatisticsOptions::cumulativeSum);
    if (asksForSum && !isCumulative(type.identifier)) {
        return std::unexpected(
            HKError{"PedvarStore", invalidArgument, "Amounts of " + type.identifier + " do not add up."});
    }
    std::vector<HKStatistics> statistics(intervals.size());
    for (std::size_t i = 0; i < intervals.size(); ++i) statistics[i].interval = intervals[i];
    const auto series = findSeries(type.identifier);
    if (!series || intervals.empty()) return statistics;

    const std::vector<Bucket> buckets = bucketsOf(predicate, intervals);
    const bool isPlain = isStrict(predicate) && predicate.sources.empty() &&
                         !contains(options, HKStatisticsOptions::separateBySource);
    if (asksForSum && isPlain) addKeptSums(*series, buckets, statistics);
    if (asksForSum && !isPlain) addCountedSums(*series, predicate, options, buckets, statistics);
    if (contains(options, HKStatisticsOptions::discreteAverage))
        addAverages(*series, predicate, buckets, statistics);
    return statistics;
}

void HealthReader::addKeptSums(const Series& series, std::span<const Bucket> buckets,
                               std::span<HKStatistics> statistics) {
    const std::vector<double> sums = SumReader(connection_, series.number).sums(buckets);
    for (std::size_t i = 0; i < sums.size(); ++i) {
        if (hasSamples(sums[i])) statistics[i].sum.emplace(series.unit, sums[i]);
    }
}

void HealthReader::addCountedSums(const Series& series, const HKPredicate& predicate, HKStatisticsOptions options,
                                  std::span<const Bucket> buckets, std::span<HKStatistics> statistics) {
    Transaction moment(connection_, Transaction::Kind::read);
    SourceOrder order = SourceOrder::load(connection_);
    if (!predicate.sources.empty()) {
        std::vector<std::int64_t> ids;
        for (const HKSource& source : predicate.sources) ids.push_back(source.id);
        order = order.only(ids);
    }
    std::vector<std::map<std::size_t, double>> sums(buckets.size());  // by rank
    const auto credit = [&](const CountedSample& sample) {
        const auto bucket = bucketOf(buckets, predicate, sample.span);
        if (!bucket || (isLong(sample.span.end - sample.span.start) && !buckets[*bucket].holdsWholeDays)) return;
        sums[*bucket][*order.rank(sample.source)] += sample.counted;
    };
    const SampleCounter counter(connection_, series.number, order);
    const Span starts{buckets.front().starts.start, buckets.back().starts.end};
    const Milliseconds longest = longestDuration(connection_, series.number);
    const Milliseconds lookBack = isStrict(predicate) ? 0 : longest;
    counter.countShort({starts.start - std::min(lookBack, longestShortDuration), starts.end}, credit);
    counter.countLong({starts.start - lookBack, starts.end}, credit);

    const auto known = sources();
    for (std::size_t i = 0; i < sums.size(); ++i) {
        double sum = 0;
        for (const auto& [rank, amount] : sums[i]) {
            sum += amount;
            if (contains(options, HKStatisticsOptions::separateBySource)) {
                statistics[i].sumBySource.emplace_back(sourceOf(known, order.source(rank)),
                                                       HKQuantity(series.unit, amount));
            }
        }
        if (!sums[i].empty()) statistics[i].sum.emplace(series.unit, sum);
    }
}

void HealthReader::addAverages(const Series& series, const HKPredicate& predicate, std::span<const Bucket> buckets,
                               std::span<HKStatistics> statistics) {
    struct Values {
        std::int64_t count = 0;
        double sum = 0, lowest = 0, highest = 0;
    };
    std::vector<Values> values(buckets.size());
    Transaction moment(connection_, Transaction::Kind::read);
    forEachSample(series, predicate, Order::ascending, [&](const Row& row) {
        if (const auto bucket = bucketOf(buckets, predicate, row.span)) {
            Values& all = values[*bucket];
            all.lowest = all.count == 0 ? row.value : std::min(all.lowest, row.value);
            all.highest = all.count == 0 ? row.value : std::max(all.highest, row.value);
            all.sum += row.value;
            ++all.count;
        }
        return true;
    });
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i].count == 0) continue;
        statistics[i].average.emplace(series.unit, values[i].sum / static_cast<double>(values[i].count));
        statistics[i].minimum.emplace(series.unit, values[i].lowest);
        statistics[i].maximum.emplace(series.unit, values[i].highest);
    }
}

void HealthReader::forEachSample(const Series& series, const HKPredicate& predicate, Order order,
                                 const std::function<bool(const Row&)>& act) {
    const Span limits = spanOf(predicate);
    const Milliseconds lookBack = isStrict(predicate) ? 0 : longestDuration(connection_, series.number);
    Rows rows = connection_.query(
        order == Order::ascending
            ? "SELECT start, duration, source, value FROM samples WHERE series = ? AND start >= ? AND start < ? "
              "ORDER BY start, duration, source, value"
            : "SELECT start, duration, source, value FROM samples WHERE series = ? AND start >= ? AND start < ? "
              "ORDER BY start DESC, duration DESC, source DESC, value DESC",
        series.number, limits.start - lookBack, limits.end);
    while (rows.next()) {
        const Milliseconds start = rows.integer(0);
        const Row row{{start, start + rows.integer(1)}, static_cast<std::int32_t>(rows.integer(2)), rows.real(3)};
        const bool reachesInto = limits.contains(row.span.start) || row.span.end > limits.start;
        if (reachesInto && admits(predicate, row.source) && !act(row)) return;
    }
}

std::vector<HKQuantitySample> HealthReader::samples(const HKSampleQuery& query) {
    const auto series = findSeries(query.sampleType.identifier);
    if (!series) return {};
    Transaction moment(connection_, Transaction::Kind::read);
    const bool isDescending =
        query.sort == HKSampleSort::startDateDescending || query.sort == HKSampleSort::endDateDescending;
    const bool isByEnd =
        query.sort == HKSampleSort::endDateAscending || query.sort == HKSampleSort::endDateDescending;
    const std::size_t limit = query.limit == 0 ? SIZE_MAX : query.limit;
    const Milliseconds longest = longestDuration(connection_, series->number);

    // By end, samples are read on until none can come that would be among the first.
    std::vector<Row> rows;
    Milliseconds bound = std::numeric_limits<Milliseconds>::min();
    const auto canBeAmongFirst = [&](const Row& row) {
        return isDescending ? row.span.start + longest >= bound : row.span.start <= bound;
    };
    forEachSample(*series, query.predicate, isDescending ? Order::descending : Order::ascending,
                  [&](const Row& row) {
                      if (rows.size() >= limit && !(isByEnd && canBeAmongFirst(row))) return false;
                      rows.push_back(row);
                      if (rows.size() <= limit)
                          bound = isDescending ? row.span.start : std::max(bound, row.span.end);
                      return true;
                  });
    if (isByEnd) {
        const auto key = [](const Row& row) {
            return std::tuple(row.span.end, row.span.start, row.source, row.value);
        };
        std::ranges::sort(
            rows, [&](const Row& a, const Row& b) { return isDescending ? key(b) < key(a) : key(a) < key(b); });
    }
    rows.resize(std::min(rows.size(), limit));

    const auto known = sources();
    std::vector<HKQuantitySample> samples;
    samples.reserve(rows.size());
    for (const Row& row : rows) {
        samples.push_back({query.sampleType, HKQuantity(series->unit, row.value),
                           dateOfMilliseconds(row.span.start), dateOfMilliseconds(row.span.end),
                           sourceOf(known, row.source)});
    }
    return samples;
}

}  // namespace pedvar
