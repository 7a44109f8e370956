#include "linux/import/workout_reader.h"

#include "linux/import/quantity_types.h"

#include <algorithm>

namespace pedvar {

namespace {

// Bounds for one workout, so that no file can fill memory with one.
constexpr std::size_t mostChildren = 1000;               // of one kind; real ones have a few dozen
constexpr std::size_t longestTexts = 1024 * 1024;        // bytes of all texts
constexpr std::size_t longestRoutes = 24 * 1024 * 1024;  // bytes of all routes; a day at one point a second
constexpr std::string_view activeEnergyType = "HKQuantityTypeIdentifierActiveEnergyBurned";
constexpr std::string_view anyDistance = "HKQuantityTypeIdentifierDistance";

std::string textOf(const Tag& tag, std::string_view name) {
    std::string scratch;
    const Attribute* const attribute = tag.find(name);
    return attribute == nullptr ? std::string() : std::string(valueOf(*attribute, scratch));
}

std::optional<double> numberOf(const Tag& tag, std::string_view name) {
    return parseExportNumber(textOf(tag, name));
}

/// The amount in attribute `name` with its unit in `unitName`, in the kept unit of `dimension`.
std::optional<double> amountOf(const Tag& tag, std::string_view name, std::string_view unitName,
                               Dimension dimension) {
    const auto number = numberOf(tag, name);
    const auto unit = unitNamed(textOf(tag, unitName));
    if (!number || !unit || unit->dimension != dimension) return std::nullopt;
    return unit->toKept(*number);
}

/// The type that measures the distance of an activity.
std::string_view distanceTypeOf(std::string_view activity) {
    if (activity.find("Cycling") != std::string_view::npos) return "HKQuantityTypeIdentifierDistanceCycling";
    if (activity.find("Swimming") != std::string_view::npos) return "HKQuantityTypeIdentifierDistanceSwimming";
    if (activity.find("Wheelchair") != std::string_view::npos) return "HKQuantityTypeIdentifierDistanceWheelchair";
    return "HKQuantityTypeIdentifierDistanceWalkingRunning";
}

template <class T>
void addOnce(std::vector<T>& things, T thing) {
    if (things.size() < mostChildren && std::ranges::find(things, thing) == things.end()) {
        things.push_back(std::move(thing));
    }
}

}  // namespace

WorkoutReader::WorkoutReader(const Tag& workout, ExportDateParser& dates) {
    WorkoutRow row{.activityType = textOf(workout, "workoutActivityType")};
    const auto start = dates.parse(textOf(workout, "startDate"));
    const auto end = dates.parse(textOf(workout, "endDate"));
    if (row.activityType.empty() || !start || !end || *end < *start) return;
    row.start = *start;
    row.end = *end;
    const auto minutes = amountOf(workout, "duration", "durationUnit", Dimension::time);
    row.duration = minutes ? *minutes * 60 : static_cast<double>(*end - *start) / 1000;
    row_ = std::move(row);
    attributeDistance_ = amountOf(workout, "totalDistance", "totalDistanceUnit", Dimension::length);
    attributeEnergy_ = amountOf(workout, "totalEnergyBurned", "totalEnergyBurnedUnit", Dimension::energy);
}

void WorkoutReader::addStatistic(const Tag& tag, Level level) {
    if (!row_) return;
    WorkoutStatistic statistic{.type = textOf(tag, "type"), .unit = textOf(tag, "unit")};
    if (statistic.type.empty() || !hasRoomFor(statistic.type.size() + statistic.unit.size())) return;
    // A unit that does not fit the type is kept as written, like a type that we do not know.
    const KeptUnit unit = keptUnit(statistic.type, statistic.unit).value_or(KeptUnit{.symbol = statistic.unit});
    const auto kept = [&](std::string_view name) {
        const auto number = numberOf(tag, name);
        return number ? std::optional(unit.toKept(*number)) : std::nullopt;
    };
    statistic.sum = kept("sum");
    statistic.average = kept("average");
    statistic.minimum = kept("minimum");
    statistic.maximum = kept("maximum");
    statistic.unit = unit.symbol;
    addOnce(level == Level::workout ? row_->statistics : partStatistics_, std::move(statistic));
}

void WorkoutReader::addMetadata(const Tag& tag, Level level) {
    if (!row_) return;
    std::pair entry{textOf(tag, "key"), textOf(tag, "value")};
    if (level == Level::workout && entry.first == "HKWasUserEntered" && entry.second == "1") isHandTyped_ = true;
    if (!hasRoomFor(entry.first.size() + entry.second.size())) return;
    addOnce(level == Level::workout ? row_->metadata : partMetadata_, std::move(entry));
}

void WorkoutReader::addRouteReference(const Tag& tag) {
    std::string path = textOf(tag, "path");
    if (hasRoomFor(path.size())) addOnce(references_, std::move(path));
}

void WorkoutReader::addLocation(const Tag& tag, ExportDateParser& dates) {
    if (inlineBytes_ + locations_.size() < longestRoutes) locations_.add(tag, dates);
}

void WorkoutReader::endRoute() {
    inlineBytes_ += locations_.size();
    if (auto route = std::exchange(locations_, {}).finish()) inlineRoutes_.push_back(std::move(*route));
}

WorkoutReader::Result WorkoutReader::finish(RouteFiles& routes) {
    if (!row_) return {};
    if (partCount_ == 1) adoptOnlyPart();
    const auto distance = sumOf(distanceTypeOf(row_->activityType), Dimension::length);
    row_->distance = distance ? distance : sumOf(anyDistance, Dimension::length);
    if (!row_->distance) row_->distance = attributeDistance_;
    row_->activeEnergy = sumOf(activeEnergyType, Dimension::energy);
    if (!row_->activeEnergy) row_->activeEnergy = attributeEnergy_;

    Result result;
    row_->routes = std::move(inlineRoutes_);
    std::size_t bytes = inlineBytes_;
    for (const std::string& reference : references_) {
        auto gpx = bytes < longestRoutes ? routes.read(reference) : std::nullopt;
        if (!gpx) {
            ++result.routesMissing;
            continue;
        }
        bytes += gpx->size();
        row_->routes.push_back({reference.substr(reference.find_last_of('/') + 1), std::move(*gpx)});
    }
    result.bytes = bytes + std::min(textBytes_, longestTexts);
    result.row = std::move(row_);
    return result;
}

void WorkoutReader::adoptOnlyPart() {
    for (WorkoutStatistic& statistic : partStatistics_) {
        if (std::ranges::find(row_->statistics, statistic.type, &WorkoutStatistic::type) ==
            row_->statistics.end()) {
            row_->statistics.push_back(std::move(statistic));
        }
    }
    const auto ownCount = static_cast<std::ptrdiff_t>(row_->metadata.size());
    for (auto& entry : partMetadata_) {
        const auto ownEnd = row_->metadata.begin() + ownCount;
        if (std::ranges::find(row_->metadata.begin(), ownEnd, entry.first, &Metadata::value_type::first) ==
            ownEnd) {
            row_->metadata.push_back(std::move(entry));
        }
    }
}

std::optional<double> WorkoutReader::sumOf(std::string_view typePrefix, Dimension dimension) const {
    for (const WorkoutStatistic& statistic : row_->statistics) {
        if (statistic.sum && statistic.type.starts_with(typePrefix) && statistic.unit == keptSymbol(dimension)) {
            return statistic.sum;
        }
    }
    return std::nullopt;
}

bool WorkoutReader::hasRoomFor(std::size_t textBytes) {
    textBytes_ += textBytes;
    return textBytes_ <= longestTexts;
}

}  // namespace pedvar
