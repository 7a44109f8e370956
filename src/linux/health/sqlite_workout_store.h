/// Recorded workouts on SQLite.
#pragma once

#include "linux/health/health_database.h"
#include "platform/workout_store.h"

#include <memory>

namespace pedvar {

/// Writes workouts beside the imported ones, on a thread of its own that starts when it is needed. Completions are
/// called on that thread. A workout is known by its `uuid`, which stands in its metadata, and by its activity,
/// start and end; routes are kept as GPX text.
class SqliteWorkoutStore : public HKWorkoutStore {
public:
    /// Keeps the reference. Saving creates the store.
    explicit SqliteWorkoutStore(HealthDatabase& database);
    /// Stores what was given to it, then ends its thread.
    ~SqliteWorkoutStore() override;

    void save(const HKWorkout& workout, HKHandler<void> completion) override;
    std::unique_ptr<HKWorkoutRouteBuilder> routeBuilder() override;

private:
    struct State;
    class RouteBuilder;

    std::shared_ptr<State> state_;
};

}  // namespace pedvar
