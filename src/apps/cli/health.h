/// The health store and the manager that reads it.
#pragma once

#include "health/health_diagnostics.h"
#include "health/health_kit_manager.h"
#include "linux/health/sqlite_health_store.h"

#include <filesystem>

namespace pedvar {

/// What the adapters around the health store are built from.
struct HealthSurroundings {
    MainExecutor& executor;
    const Clock& clock;
    const ZoneRules& zone;
    SettingsStore& settings;
    PlatformLog& log;
    std::optional<Date> horizon;  // what lies behind it is not looked at
    std::size_t threadCount = 0;  // of the store; without any, it answers on the thread that asks
};

/// Passes on how the goal is coming along.
class StepGoalNews : public StepGoalNotifications {
public:
    Event<std::int64_t, std::int64_t> progressed;

    void goalProgressed(std::int64_t todaySteps, std::int64_t dailyGoal) override {
        progressed.notify(todaySteps, dailyGoal);
    }
};

/// The objects from the store's file up to its manager, in the order in which they need each other.
class Health {
public:
    Health(const HealthSurroundings& surroundings, const std::filesystem::path& file)
        : database(file),
          store(surroundings.executor, database, surroundings.zone, surroundings.horizon,
                surroundings.threadCount),
          diagnostics_(surroundings.log),
          manager(surroundings.executor, surroundings.clock, store, surroundings.settings, diagnostics_,
                  goalNews) {}

    HealthDatabase database;
    SqliteHealthStore store;
    StepGoalNews goalNews;

private:
    HealthDiagnostics diagnostics_;

public:
    HealthKitManager manager;
};

}  // namespace pedvar
