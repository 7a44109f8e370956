/// The recorder with what stands between it and the disk.
#pragma once

#include "linux/health/sqlite_health_store.h"
#include "linux/health/sqlite_workout_store.h"
#include "linux/system/absent_services.h"
#include "linux/system/system_random.h"
#include "recording/activity_recorder_manager.h"

#include <filesystem>

namespace pedvar {

/// What a recorder is built from.
struct RecorderSurroundings {
    MainExecutor& executor;
    const Clock& clock;
    const ZoneRules& zone;
    RandomSource& random;
    CLLocationManager& receiver;
    CMPedometer& pedometer;
    DocumentParts& documents;
    SessionHistory& history;
    const SettingsStore& settings;
    PlatformLog& log;
    std::filesystem::path healthFile;
};

/// Its objects in the order in which they need each other.
class Recorder {
public:
    explicit Recorder(const RecorderSurroundings& with)
        : database_(with.healthFile),
          healthStore_(with.executor, database_, with.zone),
          workoutStore_(database_),
          checkpoints_(with.documents, with.history),
          workouts(with.executor, workoutStore_, with.history, with.documents, with.log),
          manager(with.executor, with.clock, with.random, {with.receiver, with.pedometer, haptics_, liveActivity_},
                  {healthStore_, checkpoints_, with.history, workouts, with.settings}, with.log) {}

private:
    HealthDatabase database_;
    SqliteHealthStore healthStore_;
    SqliteWorkoutStore workoutStore_;
    NoHaptics haptics_;
    NoLiveActivity liveActivity_;
    CheckpointStore checkpoints_;

public:
    WorkoutWriter workouts;
    ActivityRecorderManager manager;
};

}  // namespace pedvar
