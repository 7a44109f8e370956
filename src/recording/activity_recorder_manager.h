/// The recorder.
#pragma once

#include "core/published.h"
#include "health/settings_store.h"
#include "platform/clock.h"
#include "platform/haptics.h"
#include "platform/location_manager.h"
#include "platform/pedometer.h"
#include "platform/random_source.h"
#include "recording/checkpoint_store.h"
#include "recording/gps_quality.h"
#include "recording/heart_rate_feed.h"
#include "recording/live_activity_feed.h"
#include "recording/location_pipeline.h"
#include "recording/route_line.h"
#include "recording/session_history.h"
#include "recording/workout_writer.h"

#include <cstdint>
#include <optional>
#include <string>

namespace pedvar {

/// What a recording is made with.
struct RecorderDevices {
    CLLocationManager& locationManager;
    CMPedometer& pedometer;
    Haptics& haptics;
    LiveActivity& liveActivity;
};

/// Where a recording goes, and what it reads.
struct RecorderStores {
    HKHealthStore& healthStore;
    CheckpointStore& checkpoints;
    SessionHistory& history;
    WorkoutWriter& workouts;
    const SettingsStore& settings;
};

/// Records one walk, run, hike or ride at a time. There is one for each person at any time, in all processes.
/// Lives on the main executor.
///
/// When it is made, a recording that the end of the program has interrupted goes on in the state of its
/// checkpoint, or joins the history when that is more than twelve hours old; and workouts that are still to be
/// written to the health store are.
class ActivityRecorderManager : private CLLocationManagerDelegate {
public:
    ActivityRecorderManager(MainExecutor& executor, const Clock& clock, RandomSource& random,
                            const RecorderDevices& devices, const RecorderStores& stores, PlatformLog& log);
    ActivityRecorderManager(const ActivityRecorderManager&) = delete;
    ActivityRecorderManager& operator=(const ActivityRecorderManager&) = delete;
    /// Leaves a recording as its last checkpoint has it.
    ~ActivityRecorderManager() override;

    Published<std::optional<ActivitySession>> currentSession;  // after the end the finished one
    Published<bool> isRecording;                               // and not paused by hand
    Published<ActivityType> activityType;
    Published<bool> motionAccessDenied;
    Published<std::int64_t> currentSteps;
    Published<double> currentDistance;  // metres
    Published<double> currentDuration;  // seconds without pauses by hand
    Published<std::int64_t> currentCalories;
    Published<double> elapsedTime;                      // seconds, as the duration
    Published<double> totalDistance;                    // metres
    Published<double> currentPace;                      // minutes per kilometre
    Published<double> currentSpeed;                     // metres per second
    Published<double> averageSpeed;                     // metres per second
    Published<double> elevationGain;                    // metres
    Published<std::optional<double>> currentElevation;  // metres
    Published<double> currentHeartRate;                 // beats per minute, 0 while none is known
    Published<double> averageHeartRate;                 // beats per minute
    Published<bool> isPaused;                           // by hand
    Published<bool> isAutoPaused;
    Published<RouteLine> routeCoordinates;
    Published<std::optional<CLLocation>> currentLocation;
    Published<double> gpsAccuracy;                // metres, of the current location
    Published<bool> didRestoreInProgressSession;  // the recording was begun by an earlier process
    /// Why the last checkpoint could not be written, for people; none when it was.
    Published<std::optional<Phrase>> storageProblem;
    /// Why the step counter, which counted or could, does not now, for people.
    Published<std::optional<Phrase>> stepProblem;

    /// The finished sessions, newest first; their version tells of changes.
    const SessionHistory& savedSessions() const { return history_; }
    /// Whether a recording is there, paused or not.
    bool isRunning() const { return isRecording || isPaused; }
    GPSQuality gpsQuality() const;
    /// Spent standing, in finished automatic pauses; the duration counts it.
    Seconds totalAutoPausedTime() const { return pipeline_.autoPause().totalAutoPausedTime(); }

    // What makes no sense in the present state does nothing.

    /// Fails, and begins nothing, while an interrupted recording is there that can neither go on nor be put into
    /// the history.
    DefaultsResult startRecording(ActivityType type);
    void pauseRecording();
    void resumeRecording();
    /// Puts the session into the history and has its workout written. When the history cannot be written the
    /// recording goes on.
    DefaultsResult stopRecording();

    /// Writes a checkpoint now, for a program that is about to end.
    void saveCheckpoint() { saveCheckpoint(CheckpointTiming::forced); }

private:
    void didUpdateLocations(std::span<const CLLocation> locations) override;
    void didChangeAuthorization(CLAuthorizationStatus status) override;

    void restore();
    void goOnWith(const InProgressState& state);
    /// Receiver and tick. The pedometer is another matter: it runs through pauses.
    void prepareLocationManager();
    void startLocationUpdates();
    void startPedometer();
    void takeSteps(const std::expected<CMPedometerData, CMError>& update);
    void scheduleTick();
    void tick();
    void refreshSession();
    void publishReadings();
    void zeroNumbers();
    std::int64_t calories() const;
    ActivitySession completedSession() const;
    InProgressState makeCheckpoint() const;
    void saveCheckpoint(CheckpointTiming timing);
    LiveActivityState liveActivityState() const;

    MainExecutor& executor_;
    const Clock& clock_;
    RandomSource& random_;
    CLLocationManager& locationManager_;
    CMPedometer& pedometer_;
    Haptics& haptics_;
    CheckpointStore& checkpoints_;
    SessionHistory& history_;
    WorkoutWriter& workouts_;
    const SettingsStore& settings_;

    RecorderLog log_;
    LocationPipeline pipeline_;
    LiveActivityFeed liveActivity_;
    HeartRateFeed heartRate_;
    Timer timer_;  // the tick
    std::optional<Date> sessionStartDate_;
    std::optional<Date> pauseStartDate_;
    Seconds totalPausedTime_{};
    bool isRestored_ = false;  // no interrupted recording waits in the store any more
    bool isPedometerRunning_ = false;
    InProgressState guidance_;  // the fields of the guided program, kept as they were found
    AutoPauseMode autoPauseMode_ = AutoPauseMode::off;
    std::uint64_t ticks_ = 0;
};

}  // namespace pedvar
