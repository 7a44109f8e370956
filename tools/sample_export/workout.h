/// The one workout of the sample, with its route.
#pragma once

#include "sample_export/day_plan.h"
#include "sample_export/record_writer.h"

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace pedvar::sample {

struct Workout {
    const Day* day;
    Walk walk;
    Span span;
    std::string routeName;  // "route_2026-06-13_3.04pm.gpx"
};

/// The longest walk of the last days before the export, if the watch was worn.
std::optional<Workout> plannedWorkout(const std::vector<Day>& days);

void writeWorkout(const Workout& workout, RecordWriter& writer);

/// Writes the route as the phone does; some rounds about a block, a point every few seconds. False when it could
/// not be written whole.
bool writeRoute(const Workout& workout, std::int64_t exportTime, std::FILE* file);

}  // namespace pedvar::sample
