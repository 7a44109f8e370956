#include "recording/activity_recorder_manager.h"

#include "core/reflection.h"
#include "platform/fault_point.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

constexpr Seconds tickInterval{1};
constexpr std::uint64_t ticksBetweenSettings = 10;  // reading the preferences costs more than a fix

AutoPauseMode autoPauseMode(const SettingsStore& settings) {
    return settings.preferences().autoPauseEnabled ? AutoPauseMode::on : AutoPauseMode::off;
}

}  // namespace

ActivityRecorderManager::ActivityRecorderManager(MainExecutor& executor, const Clock& clock, RandomSource& random,
                                                 const RecorderDevices& devices, const RecorderStores& stores,
                                                 PlatformLog& log)
    : executor_(executor),
      clock_(clock),
      random_(random),
      locationManager_(devices.locationManager),
      pedometer_(devices.pedometer),
      haptics_(devices.haptics),
      checkpoints_(stores.checkpoints),
      history_(stores.history),
      workouts_(stores.workouts),
      settings_(stores.settings),
      log_(log),
      pipeline_(clock, random, log_),
      liveActivity_(executor, devices.liveActivity),
      heartRate_(executor, clock, stores.healthStore, [this](HeartRate rate) {
          currentHeartRate = rate.current;
          averageHeartRate = rate.average;
      }) {
    locationManager_.setDelegate(this);
    restore();
}

ActivityRecorderManager::~ActivityRecorderManager() {
    locationManager_.setDelegate(nullptr);
    pedometer_.detach();
}

GPSQuality ActivityRecorderManager::gpsQuality() const {
    return pedvar::gpsQuality(currentLocation.value() ? std::optional(gpsAccuracy.value()) : std::nullopt);
}

DefaultsResult ActivityRecorderManager::startRecording(ActivityType type) {
    if (!isRestored_) restore();
    if (!isRestored_) return std::unexpected(DefaultsError{storageProblem->value_or(Phrase())});
    if (isRunning()) return {};
    prepareLocationManager();
    const Date now = clock_.now();
    sessionStartDate_ = now;
    pauseStartDate_.reset();
    totalPausedTime_ = {};
    guidance_ = {};
    pipeline_.reset();
    zeroNumbers();
    publishReadings();
    activityType = type;
    currentSession =
        ActivitySession{.id = random_.uuid(), .activityType = type, .startTime = now, .isActive = true};
    didRestoreInProgressSession = false;
    isRecording = true;
    if (isAuthorized(locationManager_.authorizationStatus())) startLocationUpdates();
    scheduleTick();
    startPedometer();
    heartRate_.start(now);
    liveActivity_.start(liveActivityState());
    saveCheckpoint(CheckpointTiming::forced);
    haptics_.notify(NotificationFeedback::success);
    return {};
}

void ActivityRecorderManager::pauseRecording() {
    if (!isRecording) return;
    isPaused = true;
    isRecording = false;
    pauseStartDate_ = clock_.now();
    timer_.cancel();
    locationManager_.stopUpdatingLocation();
    locationManager_.stopUpdatingHeading();
    pipeline_.pause();
    haptics_.impact(ImpactStyle::medium);
    liveActivity_.force(liveActivityState());
    saveCheckpoint(CheckpointTiming::forced);
}

void ActivityRecorderManager::resumeRecording() {
    if (!isPaused) return;
    if (pauseStartDate_) totalPausedTime_ += clock_.now() - *pauseStartDate_;
    pauseStartDate_.reset();
    isPaused = false;
    isRecording = true;
    autoPauseMode_ = autoPauseMode(settings_);
    startLocationUpdates();
    scheduleTick();
    if (!isPedometerRunning_) startPedometer();
    haptics_.impact(ImpactStyle::medium);
    liveActivity_.force(liveActivityState());
    saveCheckpoint(CheckpointTiming::forced);
}

DefaultsResult ActivityRecorderManager::stopRecording() {
    if (!isRunning()) return {};
    const ActivitySession session = completedSession();
    if (auto finished = checkpoints_.finish(session); !finished) {
        storageProblem = finished.error().message;
        return finished;
    }
    faultPoint("session in history");
    isRecording = false;
    isPaused = false;
    timer_.cancel();
    locationManager_.stopUpdatingLocation();
    pedometer_.stopUpdates();
    isPedometerRunning_ = false;
    log_.pedometerStopped();
    totalPausedTime_ = {};
    pauseStartDate_.reset();
    sessionStartDate_.reset();
    guidance_ = {};
    heartRate_.stop();
    liveActivity_.end();
    workouts_.request();
    currentSession = session;
    zeroNumbers();
    storageProblem = std::nullopt;
    return {};
}

void ActivityRecorderManager::didUpdateLocations(std::span<const CLLocation> locations) {
    for (const CLLocation& location : locations) {
        if (!isRecording || isPaused) return;
        const bool goesOn = pipeline_.take(location, autoPauseMode_);
        publishReadings();
        if (!goesOn) continue;
        elapsedTime = currentDuration.value();
        currentDistance = totalDistance.value();
        refreshSession();
    }
}

void ActivityRecorderManager::didChangeAuthorization(CLAuthorizationStatus status) {
    if (isRecording && isAuthorized(status)) startLocationUpdates();
}

/// Takes up what an earlier process has left. What keeps it from that stays in `storageProblem`.
void ActivityRecorderManager::restore() {
    const auto state = checkpoints_.restore(clock_.now());
    workouts_.request();
    if (!state) {
        storageProblem = state.error().message;
        return;
    }
    isRestored_ = true;
    storageProblem = std::nullopt;
    if (*state) goOnWith(**state);
}

void ActivityRecorderManager::goOnWith(const InProgressState& state) {
    guidance_ = state;
    guidance_.session.route = {};
    guidance_.routePoints = {};
    sessionStartDate_ = state.sessionStartDate.value_or(state.session.startTime);
    pauseStartDate_ = state.pauseStartDate;
    totalPausedTime_ = Seconds{state.totalPausedTime};
    pipeline_.restore(state);
    currentSession = state.session;
    activityType = state.session.activityType;
    currentSteps = state.currentSteps;
    currentDistance = state.currentDistance;
    currentDuration = state.currentDuration;
    currentCalories = state.currentCalories;
    elapsedTime = state.elapsedTime;
    publishReadings();
    isPaused = state.isPaused;
    isRecording = !state.isPaused;
    prepareLocationManager();
    if (isRecording) {
        if (isAuthorized(locationManager_.authorizationStatus())) startLocationUpdates();
        scheduleTick();
    }
    startPedometer();
    heartRate_.start(*sessionStartDate_);
    liveActivity_.start(liveActivityState());
    saveCheckpoint(CheckpointTiming::forced);
    didRestoreInProgressSession = true;
}

void ActivityRecorderManager::prepareLocationManager() {
    autoPauseMode_ = autoPauseMode(settings_);
    if (locationManager_.authorizationStatus() == CLAuthorizationStatus::notDetermined) {
        locationManager_.requestWhenInUseAuthorization();
    }
    locationManager_.configure({.allowsBackgroundLocationUpdates = true,
                                .desiredAccuracy = kCLLocationAccuracyBestForNavigation,
                                .distanceFilter = kCLDistanceFilterNone,
                                .activityType = CLActivityType::fitness});
}

void ActivityRecorderManager::startLocationUpdates() {
    locationManager_.startUpdatingLocation();
    locationManager_.startUpdatingHeading();
}

void ActivityRecorderManager::startPedometer() {
    stepProblem = std::nullopt;
    if (!pedometer_.isStepCountingAvailable()) return log_.stepCountingUnavailable();
    motionAccessDenied = pedometer_.authorizationStatus() == CMAuthorizationStatus::denied;
    if (motionAccessDenied) return log_.motionAccessDenied();
    log_.pedometerStarted(*sessionStartDate_);
    isPedometerRunning_ = true;
    pedometer_.startUpdates(*sessionStartDate_, currentSteps, [this](const auto& update) { takeSteps(update); });
}

void ActivityRecorderManager::takeSteps(const std::expected<CMPedometerData, CMError>& update) {
    stepProblem = update ? std::nullopt : std::optional(update.error().localizedDescription);
    if (!update) return log_.pedometerFailed(update.error().localizedDescription.inEnglish());
    currentSteps = update->numberOfSteps;
    log_.stepsUpdated(currentSteps);
    if (isRecording) refreshSession();
}

void ActivityRecorderManager::scheduleTick() {
    timer_ = executor_.after(tickInterval, [this] { tick(); });
}

void ActivityRecorderManager::tick() {
    scheduleTick();
    if (++ticks_ % ticksBetweenSettings == 0) autoPauseMode_ = autoPauseMode(settings_);
    // A clock that was set back behind the start has no duration to tell.
    const Seconds elapsed = clock_.now() - *sessionStartDate_ - totalPausedTime_;
    currentDuration = std::max(0.0, elapsed.count());
    elapsedTime = currentDuration.value();
    refreshSession();
}

void ActivityRecorderManager::refreshSession() {
    ActivitySession session = *currentSession.value();
    session.steps = currentSteps;
    session.distance = totalDistance;
    session.duration = currentDuration;
    session.calories = calories();
    session.route = pipeline_.readings().route;
    if (totalDistance > 0) session.averagePace = averagePace(currentDuration, totalDistance);
    currentCalories = session.calories;
    currentSession = std::move(session);
    liveActivity_.update(liveActivityState());
    saveCheckpoint(CheckpointTiming::whenDue);
}

void ActivityRecorderManager::publishReadings() {
    const LocationReadings& readings = pipeline_.readings();
    currentLocation = readings.currentLocation;
    gpsAccuracy = readings.gpsAccuracy;
    totalDistance = readings.totalDistance;
    currentSpeed = readings.currentSpeed;
    averageSpeed = readings.averageSpeed;
    currentPace = readings.currentPace;
    currentElevation = readings.currentElevation;
    elevationGain = pipeline_.elevationTracker().gain;
    routeCoordinates = RouteLine(readings.route);
    isAutoPaused = pipeline_.autoPause().isPaused();
}

void ActivityRecorderManager::zeroNumbers() {
    currentSteps = 0;
    currentCalories = 0;
    for (Published<double>* const number :
         {&currentDistance, &currentDuration, &elapsedTime, &totalDistance, &currentPace, &currentSpeed,
          &averageSpeed, &elevationGain, &gpsAccuracy, &currentHeartRate, &averageHeartRate}) {
        *number = 0;
    }
    currentElevation = std::nullopt;
    isAutoPaused = false;
}

std::int64_t ActivityRecorderManager::calories() const {
    const auto& session = currentSession.value();
    const int factor = session ? calorieFactor(session->activityType) : calorieFactorWithoutSession;
    return static_cast<std::int64_t>(totalDistance / 1000 * factor);
}

ActivitySession ActivityRecorderManager::completedSession() const {
    ActivitySession session = *currentSession.value();
    session.endTime = clock_.now();
    session.isActive = false;
    session.steps = currentSteps;
    session.distance = totalDistance;
    session.duration = currentDuration;
    session.calories = calories();
    session.route = pipeline_.readings().route;
    session.elevationGain = pipeline_.elevationTracker().gain;
    session.elevationLoss = pipeline_.elevationTracker().loss;
    session.averagePace = averagePace(session.duration, session.distance);
    return session;
}

InProgressState ActivityRecorderManager::makeCheckpoint() const {
    InProgressState state = guidance_;
    state.session = *currentSession.value();
    state.sessionStartDate = sessionStartDate_;
    state.pauseStartDate = pauseStartDate_;
    state.totalPausedTime = totalPausedTime_.count();
    state.routePoints = pipeline_.readings().route;
    state.isPaused = isPaused;
    state.currentSteps = currentSteps;
    state.currentDistance = currentDistance;
    state.currentDuration = currentDuration;
    state.currentCalories = currentCalories;
    state.elevationGain = elevationGain;
    state.elevationLoss = pipeline_.elevationTracker().loss;
    state.currentElevation = currentElevation;
    state.totalDistance = totalDistance;
    state.elapsedTime = elapsedTime;
    state.checkpointDate = clock_.now();
    return state;
}

void ActivityRecorderManager::saveCheckpoint(CheckpointTiming timing) {
    if (!isRunning()) return;
    const DefaultsResult saved = checkpoints_.save(makeCheckpoint(), timing);
    storageProblem = saved ? std::nullopt : std::optional(saved.error().message);
}

LiveActivityState ActivityRecorderManager::liveActivityState() const {
    const ActivitySession& session = *currentSession.value();
    return {.activityType = std::string(caseName(session.activityType)),
            .startTime = session.startTime,
            .duration = Seconds{currentDuration},
            .steps = currentSteps,
            .distance = totalDistance,
            .pace = currentPace,
            .calories = currentCalories,
            .isPaused = isPaused};
}

}  // namespace pedvar
