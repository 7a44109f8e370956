#include "linux/health/sample_counter.h"

#include "linux/sqlite/connection.h"

#include <algorithm>

namespace pedvar {
namespace {

constexpr Milliseconds windowLength = 64 * utcDay;  // bounds the memory that a count takes

}  // namespace

void SampleCounter::countShort(Span starts, const Credit& credit, Milliseconds reach) const {
    if (starts.end - starts.start > windowLength) {
        const auto first = edge("SELECT min(start) FROM samples WHERE series = ?");
        const auto last = edge("SELECT max(start) FROM samples WHERE series = ?");
        if (!first || !last) return;
        starts = {std::max(starts.start, *first), std::min(starts.end, *last + 1)};
    }
    while (starts.start < starts.end) {
        const Milliseconds end = std::min(starts.end, starts.start + windowLength);
        countWindow({starts.start, end}, credit, reach);
        starts.start = end;
    }
}

std::optional<Milliseconds> SampleCounter::edge(std::string_view sql) const {
    Rows rows = connection_.query(sql, series_);
    if (!rows.next() || rows.isNull(0)) return std::nullopt;
    return rows.integer(0);
}

void SampleCounter::countWindow(Span starts, const Credit& credit, Milliseconds reach) const {
    OverlapCount count(order_.count());
    {
        Rows rows = connection_.query(
            "SELECT start, duration, source, value FROM samples WHERE series = ? AND start > ? AND start < ? "
            "ORDER BY start, duration, source, value",
            series_, starts.start - reach, starts.end + reach);
        while (rows.next()) {
            const Milliseconds duration = rows.integer(1);
            const auto rank = order_.rank(static_cast<std::int32_t>(rows.integer(2)));
            if (!rank || isLong(duration)) continue;
            const Milliseconds start = rows.integer(0);
            count.add(*rank, {start, start + duration}, rows.real(3));
        }
    }
    count.count([&](std::size_t rank, Span span, double counted) {
        if (starts.contains(span.start)) credit({span, order_.source(rank), counted});
    });
}

void SampleCounter::countLong(Span starts, const Credit& credit) const {
    for (const LongSample& sample : longSamples(starts)) {
        credit({sample.span, order_.source(sample.rank), countedOf(sample)});
    }
}

std::vector<SampleCounter::LongSample> SampleCounter::longSamples(Span starts) const {
    std::vector<LongSample> samples;
    // The comparison stands as in the index, which is then all that is read.
    Rows rows = connection_.query(
        "SELECT start, duration, source, value FROM samples "
        "WHERE series = ? AND duration > 14400000 AND start >= ? AND start < ? "
        "ORDER BY start, duration, source, value",
        series_, starts.start, starts.end);
    while (rows.next()) {
        const Milliseconds start = rows.integer(0);
        const auto rank = order_.rank(static_cast<std::int32_t>(rows.integer(2)));
        if (rank) samples.push_back({{start, start + rows.integer(1)}, *rank, rows.real(3)});
    }
    return samples;
}

double SampleCounter::countedOf(const LongSample& sample) const {
    Milliseconds covered = 0;
    Milliseconds coveredUntil = sample.span.start;
    const auto cover = [&](Span span) {  // in order of their starts
        const Milliseconds from = std::max(span.start, coveredUntil);
        const Milliseconds to = std::min(span.end, sample.span.end);
        if (from >= to) return;
        covered += to - from;
        coveredUntil = to;
    };
    const auto coverWithLong = [&](Span span, std::size_t rank) {
        if (rank < sample.rank) cover(span);
    };
    const Milliseconds scanStart = sample.span.start - longestShortDuration;
    const Milliseconds lookBack = longestDuration(connection_, series_);
    for (const LongSample& other : longSamples({sample.span.start - lookBack, scanStart})) {
        coverWithLong(other.span, other.rank);
    }
    Rows rows = connection_.query(
        "SELECT start, duration, source FROM samples WHERE series = ? AND start >= ? AND start < ? ORDER BY start",
        series_, scanStart, sample.span.end);
    while (rows.next() && coveredUntil < sample.span.end) {
        const Milliseconds start = rows.integer(0);
        const Span span{start, start + rows.integer(1)};
        const auto rank = order_.rank(static_cast<std::int32_t>(rows.integer(2)));
        if (!rank) continue;
        if (isLong(span.end - span.start)) {
            coverWithLong(span, *rank);
        } else {
            cover(span);
        }
    }
    return countedShare(sample.value, sample.span, covered);
}

std::vector<DayTotals> SampleCounter::countDays(DayNumber first, std::size_t dayCount) const {
    std::vector<DayTotals> days(dayCount);
    const Span starts{startOf(first), startOf(first + static_cast<DayNumber>(dayCount))};
    const auto dayAt = [&](Milliseconds start) -> DayTotals& {
        return days[static_cast<std::size_t>(dayOf(start) - first)];
    };
    countShort(starts, [&](const CountedSample& sample) {
        DayTotals& day = dayAt(sample.span.start);
        const Milliseconds time = sample.span.start - floorTo(utcDay, sample.span.start);
        day.quarters[static_cast<std::size_t>(time / quarterHour)] += sample.counted;
        day.longest = std::max(day.longest, sample.span.end - sample.span.start);
    });
    countLong(starts, [&](const CountedSample& sample) {
        dayAt(sample.span.start).longShares.push_back({sample.span.start, sample.counted});
    });
    return days;
}

Milliseconds longestDuration(Connection& connection, std::int32_t series) {
    return connection.number("SELECT longest FROM series WHERE id = ?", series);
}

}  // namespace pedvar
