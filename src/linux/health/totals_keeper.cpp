#include "linux/health/totals_keeper.h"

#include "linux/health/cumulative_types.h"
#include "linux/sqlite/connection.h"

#include <algorithm>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {
namespace {

/// Days with long samples that overlap `span`.
std::set<DayNumber> daysOfLongSamples(Connection& connection, std::int32_t series, Span span) {
    std::set<DayNumber> days;
    const Milliseconds longest = longestDuration(connection, series);
    if (!isLong(longest)) return days;
    Rows rows = connection.query(
        "SELECT start FROM samples WHERE series = ? AND duration > 14400000 AND start > ? AND start < ? "
        "AND start + duration > ?",
        series, span.start - longest, span.end, span.start);
    while (rows.next()) days.insert(dayOf(rows.integer(0)));
    return days;
}

std::vector<std::int32_t> cumulativeSeries(Connection& connection) {
    std::vector<std::int32_t> found;
    Rows rows = connection.query("SELECT id, identifier FROM series");
    while (rows.next()) {
        if (isCumulative(rows.text(1))) found.push_back(static_cast<std::int32_t>(rows.integer(0)));
    }
    return found;
}

}  // namespace

std::int64_t stateOf(Connection& connection, std::string_view type) {
    return connection.number("SELECT sum(state) FROM series WHERE identifier = ?", type);
}

void TotalsKeeper::markStale(std::int32_t series, DayNumber day, Span extent, Milliseconds lastStart) {
    const auto mark = [&](Span starts) {
        connection_.run(
            "UPDATE totals SET sums = NULL WHERE series = ? AND day BETWEEN ? AND ? AND sums IS NOT NULL", series,
            dayOf(starts.start), dayOf(starts.end));
        noteChange(series, starts);
    };
    connection_.run("INSERT OR IGNORE INTO totals (series, day) VALUES (?, ?)", series, day);
    mark({extent.start - longestShortDuration, std::min(extent.end, lastStart + longestShortDuration)});
    for (const DayNumber other : daysOfLongSamples(connection_, series, extent)) {
        mark({startOf(other), startOf(other + 1) - 1});
    }
}

void TotalsKeeper::markAllStale() {
    connection_.run("UPDATE totals SET sums = NULL WHERE sums IS NOT NULL");
    noteChangeOfAll();
}

void TotalsKeeper::startAnew() {
    connection_.run(
        "UPDATE series SET longest = "
        "coalesce((SELECT max(duration) FROM samples WHERE samples.series = series.id), 0)");
    connection_.run("DELETE FROM totals");
    for (const std::int32_t series : cumulativeSeries(connection_)) {
        // Division rounds towards zero: a day is subtracted from what lies before 2001 and is no whole day.
        connection_.run(
            "INSERT OR IGNORE INTO totals (series, day) "
            "SELECT series, start / 86400000 - (start < 0 AND start % 86400000 <> 0) "
            "FROM samples WHERE series = ?",
            series);
    }
    noteChangeOfAll();
}

void TotalsKeeper::noteChange(std::int32_t series, Span starts) {
    connection_.run(
        "INSERT OR IGNORE INTO changed_days SELECT series, day FROM totals WHERE series = ? AND day BETWEEN ? AND "
        "?",
        series, dayOf(starts.start), dayOf(starts.end));
    connection_.run("DELETE FROM derived WHERE until > ? AND type = (SELECT identifier FROM series WHERE id = ?)",
                    starts.start, series);
    connection_.run("UPDATE series SET state = state + 1 WHERE id = ?", series);
}

void TotalsKeeper::noteChangeOfAll() {
    connection_.run("INSERT OR IGNORE INTO changed_days SELECT series, day FROM totals");
    connection_.run("DELETE FROM derived");
    connection_.run("UPDATE series SET state = state + 1");
}

void TotalsKeeper::update(std::int32_t series, Span sample) {
    const SampleCounter counter(connection_, series, SourceOrder::load(connection_));
    if (!isLong(sample.end - sample.start)) updateQuarters(counter, series, sample);
    updateLongShares(counter, series, countedSpan(sample));
}

void TotalsKeeper::updateAfterRemoval(std::int32_t series, Span sample) {
    const Span covered = countedSpan(sample);
    const bool wasLong = isLong(sample.end - sample.start);
    const Span starts{sample.start - (wasLong ? 0 : longestShortDuration),
                      wasLong ? sample.start : covered.end - 1};
    noteChange(series, starts);
    std::set<DayNumber> days = daysOfLongSamples(connection_, series, covered);
    for (const DayNumber day : days) noteChange(series, {startOf(day), startOf(day + 1) - 1});
    for (DayNumber day = dayOf(starts.start); day <= dayOf(starts.end); ++day) days.insert(day);
    for (const DayNumber day : days) {
        const Days kept = load(series, day, day);
        if (kept.contains(day) && kept.at(day)) make(series, day, 1);
    }
}

void TotalsKeeper::updateQuarters(const SampleCounter& counter, std::int32_t series, Span sample) {
    // What the sample may cover starts up to `reach` before it; what shares a quarter hour with that may be
    // covered by what starts as much earlier again.
    constexpr Milliseconds farthest = 2 * longestShortDuration + quarterHour;
    const Span changed = countedSpan(sample);
    Days days = load(series, dayOf(sample.start - farthest), dayOf(changed.end - 1));
    Milliseconds reach = sample.end - sample.start;
    for (const auto& [day, totals] : days)
        reach = std::max(reach, totals ? totals->longest : longestShortDuration);

    const Span starts{floorTo(quarterHour, sample.start - reach), ceilTo(quarterHour, changed.end)};
    std::vector<double> sums(static_cast<std::size_t>((starts.end - starts.start) / quarterHour), noSamples);
    counter.countShort(
        starts,
        [&](const CountedSample& other) {
            sums[static_cast<std::size_t>((other.span.start - starts.start) / quarterHour)] += other.counted;
        },
        reach);

    std::set<DayNumber> changedDays;
    Milliseconds quarter = starts.start;
    for (const double sum : sums) {
        const DayNumber day = dayOf(quarter);
        const auto at = static_cast<std::size_t>((quarter - startOf(day)) / quarterHour);
        quarter += quarterHour;
        if (!hasSamples(sum)) continue;
        std::optional<DayTotals>& totals = days.try_emplace(day, DayTotals()).first->second;
        if (!totals) continue;
        totals->quarters[at] = sum;
        changedDays.insert(day);
    }
    std::optional<DayTotals>& ownDay = days[dayOf(sample.start)];
    if (ownDay) ownDay->longest = std::max(ownDay->longest, sample.end - sample.start);
    for (const DayNumber day : changedDays) store(series, day, *days[day]);
    noteChange(series, {starts.start, starts.end - 1});
}

void TotalsKeeper::updateLongShares(const SampleCounter& counter, std::int32_t series, Span sample) {
    for (const DayNumber day : daysOfLongSamples(connection_, series, sample)) {
        const Days days = load(series, day, day);
        if (days.contains(day) && !days.at(day)) continue;
        DayTotals totals = days.empty() ? DayTotals() : *days.at(day);
        totals.longShares.clear();
        counter.countLong({startOf(day), startOf(day + 1)}, [&](const CountedSample& other) {
            totals.longShares.push_back({other.span.start, other.counted});
        });
        store(series, day, totals);
        noteChange(series, {startOf(day), startOf(day + 1) - 1});
    }
}

std::size_t TotalsKeeper::makeSome(std::size_t highestCount) {
    struct Run {
        std::int32_t series;
        DayNumber first;
        std::size_t dayCount;
        bool isFollowedBy(std::int32_t otherSeries, DayNumber day) const {
            return series == otherSeries && first + static_cast<DayNumber>(dayCount) == day;
        }
    };
    std::vector<Run> runs;
    std::size_t count = 0;
    {
        Rows stale =
            connection_.query("SELECT series, day FROM totals WHERE sums IS NULL ORDER BY series, day LIMIT ?",
                              static_cast<std::int64_t>(highestCount));
        for (; stale.next(); ++count) {
            const auto series = static_cast<std::int32_t>(stale.integer(0));
            const DayNumber day = stale.integer(1);
            if (!runs.empty() && runs.back().isFollowedBy(series, day)) {
                ++runs.back().dayCount;
            } else {
                runs.push_back({series, day, 1});
            }
        }
    }
    for (const Run& run : runs) make(run.series, run.first, run.dayCount);
    return count;
}

void TotalsKeeper::make(std::int32_t series, DayNumber first, std::size_t dayCount) {
    const SampleCounter counter(connection_, series, SourceOrder::load(connection_));
    DayNumber day = first;
    for (const DayTotals& totals : counter.countDays(first, dayCount)) {
        if (totals.isEmpty()) {
            connection_.run("DELETE FROM totals WHERE series = ? AND day = ?", series, day);
        } else {
            store(series, day, totals);
        }
        ++day;
    }
}

std::int64_t TotalsKeeper::staleCount() {
    return connection_.number("SELECT count(*) FROM totals WHERE sums IS NULL");
}

TotalsKeeper::Days TotalsKeeper::load(std::int32_t series, DayNumber first, DayNumber last) {
    Days days;
    Rows rows = connection_.query("SELECT day, longest, sums FROM totals WHERE series = ? AND day BETWEEN ? AND ?",
                                  series, first, last);
    while (rows.next()) {
        days.emplace(rows.integer(0),
                     rows.isNull(2) ? std::nullopt : DayTotals::decode(rows.integer(1), rows.blob(2)));
    }
    return days;
}

void TotalsKeeper::store(std::int32_t series, DayNumber day, const DayTotals& totals) {
    const std::vector<std::byte> sums = totals.encode();
    connection_.run(
        "INSERT INTO totals (series, day, longest, sums) VALUES (?, ?, ?, ?) "
        "ON CONFLICT DO UPDATE SET longest = excluded.longest, sums = excluded.sums",
        series, day, totals.longest, std::span(sums));
}

}  // namespace pedvar
