#include "platform/stored_workouts.h"

#include "linux/health/health_reader.h"

#include <zlib.h>

#include <charconv>
#include <string_view>

namespace pedvar {
namespace {

/// The metres of an amount as exports write it ("1234 cm").
std::optional<double> metersOf(std::string_view text) {
    double amount = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), amount);
    if (error != std::errc{}) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (!text.starts_with(' ')) return std::nullopt;
    const auto unit = unitNamed(text.substr(1));
    if (!unit || unit->dimension != Dimension::length) return std::nullopt;
    return unit->toKept(amount);
}

std::optional<double> realIn(const Rows& rows, int column) {
    return rows.isNull(column) ? std::nullopt : std::optional(rows.real(column));
}

/// The document that was deflated to `bytes`; none when they are damaged.
std::optional<std::string> inflated(std::span<const std::byte> bytes, std::int64_t size) {
    constexpr std::int64_t largest = 1 << 30;  // bytes; far beyond what an import keeps
    if (size < 0 || size > largest) return std::nullopt;
    std::string text(static_cast<std::size_t>(size), '\0');
    uLongf length = text.size();
    const int result = uncompress(reinterpret_cast<Bytef*>(text.data()), &length,
                                  reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    if (result != Z_OK || length != text.size()) return std::nullopt;
    return text;
}

}  // namespace

std::vector<StoredWorkout> HealthReader::workouts(const Interval& interval) {
    Transaction moment(connection_, Transaction::Kind::read);
    const auto known = sources();
    const auto sourceOf = [&](std::int64_t id) {
        const auto found = known.find(static_cast<std::int32_t>(id));
        return found != known.end() ? found->second : HKSource{id, {}};
    };
    std::vector<StoredWorkout> workouts;
    Rows rows = connection_.query(
        "SELECT id, activity, start, end, duration, distance, active_energy, source,"
        " (SELECT value FROM workout_metadata WHERE workout = id AND key = 'HKElevationAscended'),"
        " (SELECT value FROM workout_metadata WHERE workout = id AND key = 'HKElevationDescended'),"
        " (SELECT count(*) FROM workout_routes WHERE workout = id) "
        "FROM workouts WHERE start < ?2 AND (end > ?1 OR start >= ?1) ORDER BY start, end, id",
        millisecondsOf(interval.start), millisecondsOf(interval.end));
    while (rows.next()) {
        workouts.push_back({.id = rows.integer(0),
                            .activityType = std::string(rows.text(1)),
                            .start = dateOfMilliseconds(rows.integer(2)),
                            .end = dateOfMilliseconds(rows.integer(3)),
                            .duration = rows.real(4),
                            .distance = realIn(rows, 5),
                            .activeEnergy = realIn(rows, 6),
                            .elevationGain = metersOf(rows.text(8)),
                            .elevationLoss = metersOf(rows.text(9)),
                            .routeCount = static_cast<std::size_t>(rows.integer(10)),
                            .source = sourceOf(rows.integer(7))});
    }
    return workouts;
}

std::vector<StoredRoute> HealthReader::routes(std::int64_t workout) {
    std::vector<StoredRoute> routes;
    Rows rows = connection_.query(
        "SELECT name, size, deflated FROM workout_routes WHERE workout = ? ORDER BY name", workout);
    while (rows.next()) {
        auto gpx = inflated(rows.blob(2), rows.integer(1));
        if (gpx) routes.push_back({std::string(rows.text(0)), std::move(*gpx)});
    }
    return routes;
}

}  // namespace pedvar
