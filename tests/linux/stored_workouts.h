/// Workouts as they stand in a health store.
#pragma once

#include "linux/health/health_database.h"
#include "linux/health/samples.h"

#include <doctest/doctest.h>
#include <zlib.h>

#include <string>
#include <vector>

namespace pedvar {

inline std::string inflated(const Rows& row, int sizeColumn) {
    std::string text(static_cast<std::size_t>(row.integer(sizeColumn)), ' ');
    uLongf size = text.size();
    const auto bytes = row.blob(sizeColumn + 1);
    CHECK(uncompress(reinterpret_cast<Bytef*>(text.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
                     bytes.size()) == Z_OK);
    return text;
}

/// All of them, without statistics.
inline std::vector<WorkoutRow> storedWorkouts(HealthDatabase& database) {
    std::vector<WorkoutRow> workouts;
    auto connection = database.connectForReading();
    REQUIRE(connection);
    if (!*connection) return workouts;
    Rows rows = (*connection)
                    ->query(
                        "SELECT id, activity, start, end, duration, distance, active_energy FROM workouts "
                        "ORDER BY start");
    while (rows.next()) {
        WorkoutRow& workout = workouts.emplace_back();
        workout.activityType = rows.text(1);
        workout.start = rows.integer(2);
        workout.end = rows.integer(3);
        workout.duration = rows.real(4);
        if (!rows.isNull(5)) workout.distance = rows.real(5);
        if (!rows.isNull(6)) workout.activeEnergy = rows.real(6);
        Rows entries =
            (*connection)->query("SELECT key, value FROM workout_metadata WHERE workout = ?", rows.integer(0));
        while (entries.next()) workout.metadata.emplace_back(entries.text(0), entries.text(1));
        Rows routes =
            (*connection)
                ->query("SELECT name, size, deflated FROM workout_routes WHERE workout = ?", rows.integer(0));
        while (routes.next()) workout.routes.push_back({std::string(routes.text(0)), inflated(routes, 1)});
    }
    return workouts;
}

}  // namespace pedvar
