#include "linux/health/health_administration.h"

#include "linux/health/cumulative_types.h"
#include "linux/health/health_database.h"
#include "linux/health/sample_counter.h"
#include "linux/health/sample_writer.h"
#include "linux/health/totals_keeper.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>
#include <map>
#include <numeric>
#include <set>

namespace pedvar {
namespace {

using SeriesNames = std::map<std::int32_t, std::string>;  // type by number

/// What `action` finds in the store; `whenMissing` while there is none.
template <class Answer, class Action>
StoreResult<Answer> look(HealthDatabase& database, Answer whenMissing, Action action) {
    auto connection = database.connectForReading();
    if (!connection) return std::unexpected(std::move(connection.error()));
    if (!*connection) return whenMissing;
    return attempt(database.name(), [&]() -> StoreResult<Answer> {
        Transaction moment(**connection, Transaction::Kind::read);
        return action(**connection);
    });
}

SeriesNames cumulativeSeries(Connection& connection, std::optional<std::string_view> type = {}) {
    SeriesNames series;
    Rows rows = connection.query("SELECT id, identifier FROM series");
    while (rows.next()) {
        const std::string_view identifier = rows.text(1);
        if (!isCumulative(identifier) || (type && identifier != *type)) continue;
        series.emplace(rows.integer(0), identifier);
    }
    return series;
}

/// The sources by priority, with what tells them apart, but without sums.
std::vector<SourceSummary> loadSources(Connection& connection) {
    std::vector<SourceSummary> sources;
    Rows rows = connection.query("SELECT id, kind, name, hardware FROM sources ORDER BY position, id");
    while (rows.next()) {
        SourceSummary& source = sources.emplace_back();
        source.id = static_cast<std::int32_t>(rows.integer(0));
        source.kind = sourceKindNamed(rows.text(1)).value_or(SourceKind::application);
        source.name = rows.text(2);
        source.hardware = rows.text(3);
        source.priority = static_cast<std::int32_t>(sources.size());
        source.label = source.name;
    }
    const auto extendRepeatedLabels = [&](auto extension) {
        std::map<std::string, int> uses;
        for (const SourceSummary& source : sources) ++uses[source.label];
        for (SourceSummary& source : sources) {
            if (uses[source.label] > 1) source.label += extension(source);
        }
    };
    extendRepeatedLabels([](const SourceSummary& source) {
        return fmt::format(" ({})", source.hardware.empty() ? nameOf(source.kind) : source.hardware);
    });
    extendRepeatedLabels([](const SourceSummary& source) { return fmt::format(" #{}", source.id); });
    return sources;
}

/// Why no source is meant by this label, and which labels there are.
Phrase notFound(const std::string& label, const std::vector<SourceSummary>& sources) {
    if (sources.empty()) return Phrase("No source is called \"{}\"; there are none yet.", {label});
    Phrase choice;
    for (const SourceSummary& source : sources) {
        Phrase quoted("\"{}\"", {source.label});
        choice = choice.isEmpty() ? std::move(quoted) : Phrase("{0}, {1}", {std::move(choice), std::move(quoted)});
    }
    const bool isAmbiguous = std::ranges::find(sources, label, &SourceSummary::name) != sources.end();
    return isAmbiguous ? Phrase("More than one source is called \"{}\". Choose from: {}.", {label, choice})
                       : Phrase("No source is called \"{}\". Choose from: {}.", {label, choice});
}

/// The sources with these labels, then all others.
StoreResult<std::vector<std::int32_t>> reordered(const std::vector<SourceSummary>& sources,
                                                 std::span<const std::string> labels) {
    std::vector<std::int32_t> order;
    const auto append = [&](std::int32_t source) {
        if (std::ranges::find(order, source) == order.end()) order.push_back(source);
    };
    for (const std::string& label : labels) {
        const auto named = std::ranges::find(sources, label, &SourceSummary::label);
        if (named == sources.end()) {
            return std::unexpected(StoreError{StoreError::Kind::unknownSource, notFound(label, sources)});
        }
        append(named->id);
    }
    for (const SourceSummary& source : sources) append(source.id);
    return order;
}

void addSums(Connection& connection, std::string_view type, std::vector<SourceSummary>& sources) {
    std::map<std::int32_t, SourceSummary*> byNumber;
    for (SourceSummary& source : sources) byNumber[source.id] = &source;
    const auto summary = [&](std::int64_t number) { return byNumber.find(static_cast<std::int32_t>(number)); };
    {
        Rows rows = connection.query("SELECT source, count(*) FROM samples GROUP BY source");
        while (rows.next()) {
            if (const auto source = summary(rows.integer(0)); source != byNumber.end()) {
                source->second->sampleCount = rows.integer(1);
            }
        }
    }
    for (const auto& [series, identifier] : cumulativeSeries(connection, type)) {
        {
            Rows rows = connection.query("SELECT source, sum(value) FROM samples WHERE series = ? GROUP BY source",
                                         series);
            while (rows.next()) {
                if (const auto source = summary(rows.integer(0)); source != byNumber.end()) {
                    source->second->rawSum += rows.real(1);
                }
            }
        }
        const SampleCounter counter(connection, series, SourceOrder::load(connection));
        const auto credit = [&](const CountedSample& sample) {
            byNumber.at(sample.source)->countedSum += sample.counted;
        };
        constexpr Milliseconds always = std::numeric_limits<Milliseconds>::max() / 4;
        counter.countShort({-always, always}, credit);
        counter.countLong({-always, always}, credit);
    }
}

double sumOf(const DayTotals& totals) {
    double sum = std::accumulate(totals.quarters.begin(), totals.quarters.end(), 0.0);
    for (const LongShare& share : totals.longShares) sum += share.counted;
    return sum;
}

std::string dayText(DayNumber day) {
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::year(2001) / 1 / 1) +
                                           std::chrono::days(day)};
    return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                       static_cast<unsigned>(date.day()));
}

/// Compares the days of one series that are not stale with what their samples say.
void compareTotals(Connection& connection, std::int32_t series, const std::string& type,
                   std::vector<TotalsDifference>& differences) {
    std::map<DayNumber, std::optional<DayTotals>> kept;  // without sums where they are stale
    {
        Rows rows = connection.query("SELECT day, longest, sums FROM totals WHERE series = ?", series);
        while (rows.next()) {
            // Bytes that mean nothing are shown as a day that keeps nothing.
            kept.emplace(
                rows.integer(0),
                rows.isNull(2)
                    ? std::nullopt
                    : std::optional(DayTotals::decode(rows.integer(1), rows.blob(2)).value_or(DayTotals())));
        }
    }
    std::set<DayNumber> days;
    for (const auto& [day, totals] : kept) days.insert(day);
    {
        Rows rows = connection.query(
            "SELECT DISTINCT start / 86400000 - (start < 0 AND start % 86400000 <> 0) "
            "FROM samples WHERE series = ?",
            series);
        while (rows.next()) days.insert(rows.integer(0));
    }
    const SampleCounter counter(connection, series, SourceOrder::load(connection));
    for (const DayNumber day : days) {
        const auto found = kept.find(day);
        if (found != kept.end() && !found->second) continue;
        const DayTotals keptTotals = found != kept.end() ? *found->second : DayTotals();
        const DayTotals counted = counter.countDays(day, 1).front();
        if (keptTotals != counted) differences.push_back({type, dayText(day), sumOf(keptTotals), sumOf(counted)});
    }
}

/// The folder, and the databases in it; what SQLite lays beside them has their mode.
std::vector<LoosePermissions> loosePermissions(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> paths{folder};
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".sqlite") paths.push_back(entry.path());
    }
    std::vector<LoosePermissions> loose;
    for (const auto& path : paths) {
        struct stat status = {};
        if (::stat(path.c_str(), &status) != 0) continue;
        const unsigned mode = status.st_mode & 0777;
        if ((mode & 077) != 0) loose.push_back({path.string(), mode});
    }
    std::ranges::sort(loose, {}, &LoosePermissions::path);
    return loose;
}

ChangedDays notedDays(Connection& connection) {
    ChangedDays changed;
    Rows rows = connection.query(
        "SELECT identifier, day FROM changed_days JOIN series ON series.id = series ORDER BY identifier, day");
    while (rows.next()) {
        std::vector<Interval>& intervals = changed[std::string(rows.text(0))];
        const DayNumber day = rows.integer(1);
        const Date start = dateOfMilliseconds(startOf(day));
        if (intervals.empty() || intervals.back().end < start) intervals.push_back({start, start});
        intervals.back().end = dateOfMilliseconds(startOf(day + 1));
    }
    return changed;
}

StoreResult<> changeTotals(HealthDatabase& database, const std::function<StoreResult<>(Connection&)>& change,
                           const std::function<bool(double)>& progress) {
    auto connection = database.connectForWriting();
    if (!connection) return std::unexpected(std::move(connection.error()));
    auto changed = attempt(database.name(), [&]() -> StoreResult<> {
        Transaction transaction(*connection, Transaction::Kind::write);
        if (auto done = change(*connection); !done) return done;
        transaction.commit();
        return {};
    });
    return changed ? SampleWriter(database).refreshTotals(progress) : changed;
}

/// What is removed of a day of one series.
struct RemovedSamples {
    Span extent;
    Milliseconds lastStart;
};
using RemovedDays = std::map<std::pair<std::int32_t, DayNumber>, RemovedSamples>;

RemovedDays daysOfImport(Connection& connection, std::int64_t import) {
    RemovedDays days;
    const SeriesNames cumulative = cumulativeSeries(connection);
    Rows rows = connection.query("SELECT series, start, duration FROM samples WHERE import = ?", import);
    while (rows.next()) {
        const auto series = static_cast<std::int32_t>(rows.integer(0));
        if (!cumulative.contains(series)) continue;
        const Milliseconds start = rows.integer(1);
        const Span span = countedSpan({start, start + rows.integer(2)});
        auto& [extent, lastStart] =
            days.try_emplace({series, dayOf(start)}, RemovedSamples{span, start}).first->second;
        extent = {std::min(extent.start, span.start), std::max(extent.end, span.end)};
        lastStart = std::max(lastStart, start);
    }
    return days;
}

UndoneImport remove(Connection& connection, std::int64_t import) {
    UndoneImport undone;
    undone.begun = dateOfMilliseconds(connection.number("SELECT begun FROM imports WHERE number = ?", import));
    const RemovedDays days = daysOfImport(connection, import);
    undone.samples = connection.run("DELETE FROM samples WHERE import = ?", import);
    constexpr const char* ofWorkouts =
        "DELETE FROM {} WHERE workout IN (SELECT id FROM workouts WHERE import = ?)";
    connection.run(fmt::format(ofWorkouts, "workout_statistics"), import);
    connection.run(fmt::format(ofWorkouts, "workout_metadata"), import);
    undone.routes = connection.run("DELETE FROM workout_routes WHERE import = ?", import);
    undone.workouts = connection.run("DELETE FROM workouts WHERE import = ?", import);
    undone.sources = connection.run(
        "DELETE FROM sources WHERE import = ? AND id NOT IN (SELECT source FROM samples) "
        "AND id NOT IN (SELECT source FROM workouts)",
        import);
    connection.run("DELETE FROM imports WHERE number = ?", import);
    TotalsKeeper totals(connection);
    for (const auto& [day, removed] : days) {
        totals.markStale(day.first, day.second, removed.extent, removed.lastStart);
    }
    return undone;
}

}  // namespace

StoreResult<bool> HealthAdministration::isConnected() const {
    return look(database_, false, [](Connection& connection) {
        return connection.number("SELECT EXISTS (SELECT 1 FROM sources)") != 0;
    });
}

StoreResult<std::optional<Date>> HealthAdministration::newestSample(std::string_view type) const {
    return look(database_, std::optional<Date>(), [&](Connection& connection) {
        std::optional<Date> newest;
        // The last to end started no earlier than the last to start, less the longest duration.
        Rows rows = connection.query(
            "SELECT max(start + duration) FROM samples, series WHERE identifier = ? AND samples.series = "
            "series.id "
            "AND start >= (SELECT max(start) FROM samples AS last WHERE last.series = series.id) - longest "
            "GROUP BY series.id",
            type);
        while (rows.next()) newest = std::max(newest, std::optional(dateOfMilliseconds(rows.integer(0))));
        return newest;
    });
}

StoreResult<std::vector<SourceSummary>> HealthAdministration::sources(std::string_view type) const {
    return look(database_, std::vector<SourceSummary>(), [&](Connection& connection) {
        std::vector<SourceSummary> sources = loadSources(connection);
        addSums(connection, type, sources);
        return sources;
    });
}

StoreResult<> HealthAdministration::setOrder(std::span<const std::string> labels,
                                             const std::function<bool(double)>& progress) {
    const auto change = [&](Connection& connection) -> StoreResult<> {
        const auto order = reordered(loadSources(connection), labels);
        if (!order) return std::unexpected(order.error());
        for (std::size_t i = 0; i < order->size(); ++i) {
            connection.run("UPDATE sources SET position = ? WHERE id = ?", static_cast<std::int64_t>(i),
                           (*order)[i]);
        }
        TotalsKeeper(connection).markAllStale();
        return {};
    };
    return changeTotals(database_, change, progress);
}

StoreResult<ChangedDays> HealthAdministration::changedDays() const {
    return look(database_, ChangedDays(), notedDays);
}

StoreResult<> HealthAdministration::settleChangedDays(const std::function<bool(const ChangedDays&)>& act) {
    const auto noted = changedDays();
    if (!noted) return std::unexpected(noted.error());
    if (noted->empty()) return {};
    auto connection = database_.connectForWriting();
    if (!connection) return std::unexpected(std::move(connection.error()));
    return attempt(database_.name(), [&] {
        Transaction transaction(*connection, Transaction::Kind::write);
        if (!act(notedDays(*connection))) return;
        connection->run("DELETE FROM changed_days");
        transaction.commit();
    });
}

StoreResult<StoreExamination> HealthAdministration::examine() const {
    auto examination = look(database_, StoreExamination(), [](Connection& connection) {
        StoreExamination found;
        {
            Rows rows = connection.query("PRAGMA integrity_check");
            while (rows.next()) found.damages.emplace_back(rows.text(0));
        }
        if (found.damages == std::vector<std::string>{"ok"}) found.damages.clear();
        const std::array<std::pair<const char*, const char*>, 5> tables{{
            {"series", "SELECT count(*) FROM series"},
            {"sources", "SELECT count(*) FROM sources"},
            {"samples", "SELECT count(*) FROM samples"},
            {"workouts", "SELECT count(*) FROM workouts"},
            {"routes", "SELECT count(*) FROM workout_routes"},
        }};
        for (const auto& [table, sql] : tables) found.rows.emplace_back(table, connection.number(sql));
        found.staleDays = TotalsKeeper(connection).staleCount();
        for (const auto& [series, type] : cumulativeSeries(connection)) {
            compareTotals(connection, series, type, found.differences);
        }
        return found;
    });
    if (examination) examination->permissions = loosePermissions(database_.path().parent_path());
    return examination;
}

StoreResult<std::optional<UndoneImport>> HealthAdministration::undoImport(
    const std::function<bool(double)>& progress) {
    std::optional<UndoneImport> undone;
    const auto change = [&](Connection& connection) -> StoreResult<> {
        Rows last = connection.query("SELECT number FROM imports WHERE has_added ORDER BY number DESC LIMIT 1");
        if (last.next()) undone = remove(connection, last.integer(0));
        return {};
    };
    const auto exists = database_.verify();
    if (!exists) return std::unexpected(exists.error());
    if (!*exists) return undone;
    if (auto changed = changeTotals(database_, change, progress); !changed)
        return std::unexpected(changed.error());
    return undone;
}

StoreResult<> HealthAdministration::rebuildTotals(const std::function<bool(double)>& progress) {
    const auto change = [](Connection& connection) -> StoreResult<> {
        TotalsKeeper(connection).startAnew();
        return {};
    };
    return changeTotals(database_, change, progress);
}

}  // namespace pedvar
