#include "linux/health/workout_table.h"

#include "core/check.h"
#include "linux/sqlite/connection.h"

#include <zlib.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace pedvar {
namespace {

using Metadata = std::pair<std::string, std::string>;

DeflatedRoute deflated(const WorkoutRouteFile& route) {
    uLongf size = compressBound(route.gpx.size());
    std::vector<std::byte> bytes(size);
    const int result = compress2(reinterpret_cast<Bytef*>(bytes.data()), &size,
                                 reinterpret_cast<const Bytef*>(route.gpx.data()), route.gpx.size(), Z_BEST_SPEED);
    check(result == Z_OK, "a route could not be deflated");
    bytes.resize(size);
    bytes.shrink_to_fit();
    return {route.name, route.gpx.size(), std::move(bytes)};
}

}  // namespace

std::vector<DeflatedRoute> WorkoutTable::newRoutes(const WorkoutRow& workout) {
    std::vector<DeflatedRoute> routes;
    const auto known = find(workout);
    for (const WorkoutRouteFile& route : workout.routes) {
        const bool isThere = known && connection_.number(
                                          "SELECT EXISTS (SELECT 1 FROM workout_routes "
                                          "WHERE workout = ? AND name = ?)",
                                          *known, std::string_view(route.name)) != 0;
        if (!isThere) routes.push_back(deflated(route));
    }
    return routes;
}

WorkoutTable::Added WorkoutTable::add(const WorkoutRow& workout, std::span<const DeflatedRoute> routes) {
    const auto known = find(workout);
    const std::int64_t id = known ? *known : insert(workout);
    Added added{.isNew = !known, .routes = 0};
    for (const DeflatedRoute& route : routes) {
        added.routes += connection_.run(
            "INSERT OR IGNORE INTO workout_routes (workout, name, size, deflated, import) "
            "VALUES (?, ?, ?, ?, ?)",
            id, std::string_view(route.name), static_cast<std::int64_t>(route.size), std::span(route.bytes),
            import_);
    }
    return added;
}

std::optional<std::int64_t> WorkoutTable::find(const WorkoutRow& workout) {
    if (const auto named = findByUUID(workout)) return named;
    Rows rows =
        connection_.query("SELECT id FROM workouts WHERE start = ? AND end = ? AND activity = ? AND source = ?",
                          workout.start, workout.end, std::string_view(workout.activityType), workout.source);
    if (!rows.next()) return std::nullopt;
    return rows.integer(0);
}

std::optional<std::int64_t> WorkoutTable::findByUUID(const WorkoutRow& workout) {
    const auto uuid = std::ranges::find(workout.metadata, externalUUIDKey, &Metadata::first);
    if (uuid == workout.metadata.end()) return std::nullopt;
    Rows rows = connection_.query(
        "SELECT id FROM workouts JOIN workout_metadata ON workout = id "
        "WHERE start = ? AND source = ? AND key = ? AND value = ?",
        workout.start, workout.source, externalUUIDKey, std::string_view(uuid->second));
    if (!rows.next()) return std::nullopt;
    return rows.integer(0);
}

std::int64_t WorkoutTable::insert(const WorkoutRow& workout) {
    connection_.run(
        "INSERT INTO workouts (activity, start, end, source, duration, distance, active_energy, import) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
        std::string_view(workout.activityType), workout.start, workout.end, workout.source, workout.duration,
        workout.distance, workout.activeEnergy, import_);
    const std::int64_t id = connection_.lastInsertedRow();
    for (const WorkoutStatistic& statistic : workout.statistics) {
        connection_.run(
            "INSERT OR IGNORE INTO workout_statistics (workout, type, unit, sum, average, minimum, maximum) "
            "VALUES (?, ?, ?, ?, ?, ?, ?)",
            id, std::string_view(statistic.type), std::string_view(statistic.unit), statistic.sum,
            statistic.average, statistic.minimum, statistic.maximum);
    }
    for (const auto& [key, value] : workout.metadata) {
        connection_.run("INSERT OR IGNORE INTO workout_metadata (workout, key, value) VALUES (?, ?, ?)", id,
                        std::string_view(key), std::string_view(value));
    }
    return id;
}

}  // namespace pedvar
