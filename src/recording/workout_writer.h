/// Finished sessions on their way into the health store.
#pragma once

#include "core/coalesced_work.h"
#include "platform/workout_store.h"
#include "recording/pending_workouts.h"
#include "recording/recorder_log.h"
#include "recording/session_history.h"

namespace pedvar {

/// The workout that stands for a finished session. It has the session's identifier.
HKWorkout workoutOf(const ActivitySession& session);

/// Writes the pending sessions to the health store as workouts with their routes. One that cannot be written stays
/// pending; the log says why. Lives on the main executor.
class WorkoutWriter {
public:
    /// Keeps references. `history` holds all sessions that are pending.
    WorkoutWriter(MainExecutor& executor, HKWorkoutStore& healthStore, const SessionHistory& history,
                  DocumentParts& documents, PlatformLog& log);

    /// Writes what is pending. What becomes pending meanwhile is written too when it is asked for.
    void request() { writing_.request(); }
    /// `co_await writer.finished()`: returns once all that was asked for has been tried.
    Task<> finished() { return writing_.finished(); }

private:
    Task<> writePending();
    /// Whether all of the session is in the health store now.
    Task<bool> write(const ActivitySession& session);
    Task<bool> saveWorkoutRoute(const HKWorkout& workout, const Route& routePoints);

    MainExecutor& executor_;
    HKWorkoutStore& healthStore_;
    const SessionHistory& history_;
    PendingWorkouts pending_;
    RecorderLog log_;
    CoalescedWork writing_;  // last: its coroutines use what stands above
};

}  // namespace pedvar
