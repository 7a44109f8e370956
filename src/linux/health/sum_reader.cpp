#include "linux/health/sum_reader.h"

#include "linux/sqlite/connection.h"

#include <algorithm>
#include <numeric>

namespace pedvar {

std::vector<double> SumReader::sums(std::span<const Bucket> buckets) {
    std::vector<double> sums(buckets.size(), noSamples);
    if (buckets.empty()) return sums;
    // As long as its rows are read, everything else is read as it was at the same moment.
    Rows rows = connection_.query("SELECT day, longest, sums FROM totals WHERE series = ? AND day BETWEEN ? AND ?",
                                  series_, dayOf(buckets.front().starts.start), dayOf(buckets.back().starts.end));
    std::size_t first = 0;  // of the buckets that reach into the day
    while (rows.next()) {
        const DayNumber day = rows.integer(0);
        auto totals = rows.isNull(2) ? std::nullopt : DayTotals::decode(rows.integer(1), rows.blob(2));
        if (!totals) totals = counter().countDays(day, 1).front();
        while (first < buckets.size() && buckets[first].starts.end <= startOf(day)) ++first;
        for (std::size_t i = first; i < buckets.size() && buckets[i].starts.start < startOf(day + 1); ++i) {
            sums[i] += sumOfDay(day, *totals, buckets[i]);
        }
    }
    return sums;
}

double SumReader::sumOfDay(DayNumber day, const DayTotals& totals, const Bucket& bucket) {
    const Milliseconds dayStart = startOf(day);
    const Span starts{std::max(bucket.starts.start, dayStart), std::min(bucket.starts.end, startOf(day + 1))};
    const auto quarterAt = [&](Milliseconds moment) {
        return static_cast<std::size_t>((moment - dayStart) / quarterHour);
    };
    const auto partSum = [&](Span part) {
        return part.start < part.end ? sumOfPart(totals, totals.quarters[quarterAt(part.start)], part) : noSamples;
    };
    const Milliseconds wholeStart = std::min(ceilTo(quarterHour, starts.start), starts.end);
    const Milliseconds wholeEnd = std::max(floorTo(quarterHour, starts.end), wholeStart);
    double sum = partSum({starts.start, wholeStart});
    if (wholeStart < wholeEnd) {
        sum = std::accumulate(totals.quarters.begin() + static_cast<std::ptrdiff_t>(quarterAt(wholeStart)),
                              totals.quarters.begin() + static_cast<std::ptrdiff_t>(quarterAt(wholeEnd)), sum);
    }
    sum += partSum({wholeEnd, starts.end});
    if (bucket.holdsWholeDays) {
        for (const LongShare& share : totals.longShares) {
            if (starts.contains(share.start)) sum += share.counted;
        }
    }
    return sum;
}

double SumReader::sumOfPart(const DayTotals& day, double sumOfQuarter, Span part) {
    if (!hasSamples(sumOfQuarter)) return noSamples;
    const Milliseconds quarter = floorTo(quarterHour, part.start);
    const bool isAll =
        !hasSamplesWithin({quarter, part.start}) && !hasSamplesWithin({part.end, quarter + quarterHour});
    if (isAll) return sumOfQuarter;
    // What covers samples of the part starts on the same day, unless the day is young.
    const bool isYoung = part.start - floorTo(utcDay, part.start) < longestShortDuration;
    double sum = noSamples;
    counter().countShort(
        part, [&](const CountedSample& sample) { sum += sample.counted; },
        isYoung ? longestShortDuration : day.longest);
    return sum;
}

bool SumReader::hasSamplesWithin(Span starts) {
    return starts.start < starts.end &&
           connection_.number(
               "SELECT EXISTS (SELECT 1 FROM samples WHERE series = ? AND start >= ? AND start < ?)", series_,
               starts.start, starts.end) != 0;
}

const SampleCounter& SumReader::counter() {
    if (!counter_) counter_.emplace(connection_, series_, SourceOrder::load(connection_));
    return *counter_;
}

}  // namespace pedvar
