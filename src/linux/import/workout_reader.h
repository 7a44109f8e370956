/// Workouts of an export.
#pragma once

#include "core/units.h"
#include "linux/health/samples.h"
#include "linux/import/export_values.h"
#include "linux/import/location_route.h"
#include "linux/import/route_files.h"
#include "linux/import/tag.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pedvar {

/// Gathers one `<Workout>` from its start tag and what stands inside it.
class WorkoutReader {
public:
    /// A part of a workout has statistics and metadata too. Those of the only part are the workout's own where it
    /// has none itself; those of several are left out, for they cannot be told from the whole by adding.
    enum class Level { workout, part };

    WorkoutReader(const Tag& workout, ExportDateParser& dates);

    void addPart() { ++partCount_; }
    void addStatistic(const Tag& tag, Level level);
    void addMetadata(const Tag& tag, Level level);
    void addRouteReference(const Tag& tag);
    void addLocation(const Tag& tag, ExportDateParser& dates);
    /// Ends a route; the locations after it are another one.
    void endRoute();

    bool isHandTyped() const { return isHandTyped_; }

    struct Result {
        std::optional<WorkoutRow> row;  // none when activity or dates cannot be read; without its source
        std::int64_t routesMissing = 0;
        std::size_t bytes = 0;  // of texts and routes
    };
    Result finish(RouteFiles& routes);

private:
    using Metadata = std::vector<std::pair<std::string, std::string>>;

    bool hasRoomFor(std::size_t textBytes);
    void adoptOnlyPart();
    /// The first sum in a unit of `dimension` of a type that begins with `typePrefix`.
    std::optional<double> sumOf(std::string_view typePrefix, Dimension dimension) const;

    std::optional<WorkoutRow> row_;
    std::optional<double> attributeDistance_;
    std::optional<double> attributeEnergy_;
    std::vector<WorkoutStatistic> partStatistics_;
    Metadata partMetadata_;
    int partCount_ = 0;
    std::vector<std::string> references_;
    LocationRoute locations_;
    std::vector<WorkoutRouteFile> inlineRoutes_;
    std::size_t inlineBytes_ = 0;
    std::size_t textBytes_ = 0;  // of statistics, metadata and references
    bool isHandTyped_ = false;
};

}  // namespace pedvar
