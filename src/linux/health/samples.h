/// Rows of the health store, as writers hand them over.
#pragma once

#include "core/date.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pedvar {

/// What kind of thing a source is, in the default order of priority where sources overlap: the first wins.
enum class SourceKind { own, watch, band, phone, application, handTyped };

/// The name of a kind in `sources --json` and in messages ("watch", "hand-typed").
std::string_view nameOf(SourceKind kind);
/// Back again; none for other texts.
std::optional<SourceKind> sourceKindNamed(std::string_view name);

/// Who wrote a sample: what stays the same for one device or application over the years. Two descriptions that are
/// equal are one source.
struct SourceDescription {
    SourceKind kind = SourceKind::application;
    std::string name;      // the person's own text, "Anna's Phone"
    std::string hardware;  // "Watch2,4"; empty when unknown
    auto operator<=>(const SourceDescription&) const = default;
};

/// Milliseconds since 2001-01-01 UTC.
using Milliseconds = std::int64_t;

/// The nearest one; moments 30,000 years off or more are taken as that far off.
Milliseconds millisecondsOf(Date date);
Date dateOfMilliseconds(Milliseconds milliseconds);

/// One quantity sample. Two samples that are equal in every field are one sample.
struct SampleRow {
    std::int32_t series;  // from SampleWriter::series
    std::int32_t source;  // from SampleWriter::source
    Milliseconds start;
    Milliseconds duration;  // 0 for an instant, never negative
    double value;           // in the unit of the series, finite
};

/// A statistic of a workout: "HKQuantityTypeIdentifierDistanceWalkingRunning", "sum", in the kept unit of the
/// quantity where it is known and as written elsewhere.
struct WorkoutStatistic {
    std::string type;
    std::string unit;
    std::optional<double> sum, average, minimum, maximum;
    bool operator==(const WorkoutStatistic&) const = default;
};

struct WorkoutRouteFile {
    std::string name;  // "route_2024-05-01_6.30am.gpx"; never used as a path
    std::string gpx;   // the file's bytes
};

/// A workout with all that came with it. Two workouts of the same activity, start, end and source are one.
struct WorkoutRow {
    std::string activityType;  // "HKWorkoutActivityTypeWalking"
    std::int32_t source = 0;
    Milliseconds start = 0;
    Milliseconds end = 0;
    double duration = 0;                 // seconds without pauses
    std::optional<double> distance;      // metres
    std::optional<double> activeEnergy;  // kilocalories
    std::vector<WorkoutStatistic> statistics;
    std::vector<std::pair<std::string, std::string>> metadata;  // key and value as written, each once
    std::vector<WorkoutRouteFile> routes;
};

}  // namespace pedvar
