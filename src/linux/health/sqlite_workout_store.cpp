#include "linux/health/sqlite_workout_store.h"

#include "linux/health/health_error.h"
#include "linux/health/route_text.h"
#include "linux/health/sample_writer.h"
#include "linux/health/worker_pool.h"
#include "linux/health/workout_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pedvar {
namespace {

std::string_view nameOf(HKWorkoutActivityType type) {
    switch (type) {
        case HKWorkoutActivityType::cycling:
            return "HKWorkoutActivityTypeCycling";
        case HKWorkoutActivityType::hiking:
            return "HKWorkoutActivityTypeHiking";
        case HKWorkoutActivityType::running:
            return "HKWorkoutActivityTypeRunning";
        case HKWorkoutActivityType::walking:
            return "HKWorkoutActivityTypeWalking";
    }
    return "HKWorkoutActivityTypeOther";
}

double keptValue(const HKQuantity& quantity) {
    return quantity.doubleValue(*unitNamed(keptSymbol(quantity.dimension())));
}

bool isSound(const HKWorkout& workout) {
    return std::isfinite(workout.duration.count()) && std::isfinite(keptValue(workout.totalDistance)) &&
           std::isfinite(keptValue(workout.totalEnergyBurned)) && workout.startDate <= workout.endDate;
}

/// Without its source and its route.
WorkoutRow rowOf(const HKWorkout& workout) {
    WorkoutRow row{.activityType = std::string(nameOf(workout.workoutActivityType)),
                   .start = millisecondsOf(workout.startDate),
                   .end = millisecondsOf(workout.endDate),
                   .duration = workout.duration.count(),
                   .distance = workout.totalDistance.doubleValue(HKUnit::meter()),
                   .activeEnergy = workout.totalEnergyBurned.doubleValue(HKUnit::kilocalorie())};
    row.metadata.emplace_back(externalUUIDKey, workout.uuid.text());
    for (const auto& [key, quantity] : workout.metadata) {
        row.metadata.emplace_back(key,
                                  fmt::format("{} {}", keptValue(quantity), keptSymbol(quantity.dimension())));
    }
    return row;
}

std::optional<double> unlessNegative(double value) {
    return value < 0 ? std::nullopt : std::optional(value);
}

RouteTextPoint pointOf(const CLLocation& location) {
    const auto verticalAccuracy = unlessNegative(location.verticalAccuracy);
    return {.time = millisecondsOf(location.timestamp),
            .latitude = location.latitude,
            .longitude = location.longitude,
            .altitude = verticalAccuracy ? std::optional(location.altitude) : std::nullopt,
            .speed = unlessNegative(location.speed),
            .course = unlessNegative(location.course),
            .horizontalAccuracy = unlessNegative(location.horizontalAccuracy),
            .verticalAccuracy = verticalAccuracy};
}

bool isFinite(const CLLocation& location) {
    const auto numbers = {location.latitude,
                          location.longitude,
                          location.altitude,
                          location.horizontalAccuracy,
                          location.verticalAccuracy,
                          location.course,
                          location.speed,
                          location.timestamp.time_since_epoch().count()};
    return std::ranges::all_of(numbers, [](double number) { return std::isfinite(number); });
}

}  // namespace

struct SqliteWorkoutStore::State {
    struct Worker {
        std::optional<SampleWriter> writer;
    };

    explicit State(HealthDatabase& healthDatabase) : database(healthDatabase) {}

    HealthDatabase& database;
    WorkerPool<Worker> pool{1};

    void write(WorkoutRow row, HKHandler<void> completion) {
        pool.add([this, row = std::move(row), completion = std::move(completion)](Worker& worker) mutable {
            if (!worker.writer) worker.writer.emplace(database);
            const auto written = store(*worker.writer, std::move(row));
            if (!written) return completion(std::unexpected(healthError(written.error())));
            completion({});
        });
    }

    static StoreResult<WriteCounts> store(SampleWriter& writer, WorkoutRow row) {
        const auto source = writer.source({.kind = SourceKind::own, .name = "Pedvar", .hardware = ""});
        if (!source) return std::unexpected(source.error());
        row.source = *source;
        return writer.write({}, {&row, 1});
    }
};

class SqliteWorkoutStore::RouteBuilder : public HKWorkoutRouteBuilder {
public:
    explicit RouteBuilder(std::shared_ptr<State> state) : state_(std::move(state)) {}

    void insertRouteData(std::vector<CLLocation> locations, HKHandler<void> completion) override {
        if (!std::ranges::all_of(locations, isFinite)) {
            return completion(std::unexpected(invalidArgument("A location of the route is not a place.")));
        }
        for (const CLLocation& location : locations) text_.add(pointOf(location));
        completion({});
    }

    void finishRoute(const HKWorkout& workout, HKHandler<void> completion) override {
        auto file = text_.finish();
        if (!file || !isSound(workout)) {
            return completion(std::unexpected(invalidArgument("The route has no locations or no workout.")));
        }
        WorkoutRow row = rowOf(workout);
        row.routes.push_back(std::move(*file));
        state_->write(std::move(row), std::move(completion));
    }

private:
    std::shared_ptr<State> state_;
    RouteText text_;
};

SqliteWorkoutStore::SqliteWorkoutStore(HealthDatabase& database) : state_(std::make_shared<State>(database)) {}
SqliteWorkoutStore::~SqliteWorkoutStore() = default;

void SqliteWorkoutStore::save(const HKWorkout& workout, HKHandler<void> completion) {
    if (!isSound(workout)) {
        return completion(
            std::unexpected(invalidArgument("A workout has no duration, or an amount that is no number.")));
    }
    state_->write(rowOf(workout), std::move(completion));
}

std::unique_ptr<HKWorkoutRouteBuilder> SqliteWorkoutStore::routeBuilder() {
    return std::make_unique<RouteBuilder>(state_);
}

}  // namespace pedvar
