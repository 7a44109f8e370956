/// The one reader and writer of the health store.
#pragma once

#include "core/async.h"
#include "core/coalesced_work.h"
#include "core/published.h"
#include "health/activity_reads.h"
#include "health/body_metrics.h"
#include "health/gated_reads.h"
#include "health/loading_state.h"
#include "health/settings_store.h"
#include "health/step_records.h"
#include "health/streak_memory.h"
#include "health/workout_reading.h"
#include "platform/clock.h"
#include "platform/health_store.h"
#include "platform/step_goal_notifications.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// Keeps today's totals, the chosen day, week and month, and the streaks. Lives on the main executor. What cannot
/// be read shows 0; no failure reaches the person as an error.
class HealthKitManager {
public:
    HealthKitManager(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore,
                     SettingsStore& settings, HealthDiagnostics& diagnostics,
                     StepGoalNotifications& notificationManager);

    Published<bool> isAuthorized;
    Published<std::optional<std::string>> authorizationError;
    Published<bool> isLoading;  // while today's totals are read

    Published<std::int64_t> todaySteps;
    Published<double> todayDistance;        // metres
    Published<double> todayActiveCalories;  // kcal
    Published<std::int64_t> todayActiveMinutes;
    Published<std::int64_t> todayFlightsClimbed;
    Published<std::int64_t> todayPreviousDaySteps;

    Published<Date> currentSelectedDate;
    Published<SelectedDayMetrics> selectedDayMetrics;
    Published<std::vector<HourlyStepData>> hourlyStepData;  // of the selected day; 24 entries once loaded
    Published<Date> currentWeekStart;
    Published<std::vector<WeekData>> weekStepsData;       // the week from `currentWeekStart` on
    Published<std::vector<DailyStepData>> dailyStepData;  // of the month loaded last, all its days

    Published<std::int64_t> currentStreak;  // days
    Published<std::int64_t> longestStreak;  // days
    Published<std::optional<Day>> lastMetDate;

    LoadingState loading;  // of day, week and month
    Event<> refreshed;     // after each refresh of today's totals

    /// Asks for access to the health store if the person was not asked yet, at most once in the manager's life.
    Task<> ensureAuthorization();
    /// Whether the person was asked for access, but the last 30 days hold no steps that can be read.
    Task<bool> computeHealthAccessBlocked();
    /// Refreshes whenever steps are added to the store, also while Pedvar is in the background.
    void observeNewSamples();

    /// Adopts what widgets and watch have stored, reads today's totals, tells of the goal's progress, then
    /// `refreshed`. A cancelled refresh publishes and tells nothing.
    Task<> refreshToday();
    /// Publishes both streaks, over everything in the store.
    Task<> updateStreaks();
    /// Lets the store remember what the last update found of the days before today, so that the next one need not
    /// count them.
    Task<> rememberStreaks();
    /// Oldest day first, today last.
    Task<std::vector<std::int64_t>> fetchLastSevenDays();

    /// Choosing a day, week or month replaces the running load of its kind.
    CancellableTask selectDate(Date date);
    CancellableTask loadWeek(Date inWeek);
    CancellableTask loadMonth(std::chrono::year_month month);

    /// The reads behind the published fields, for those who keep days of their own.
    ActivityReads& reads() { return activity_; }
    BodyMetrics& body() { return body_; }
    WorkoutReading& workouts() { return workouts_; }
    std::int64_t activeQueryCount() const { return reads_.activeQueryCount(); }

private:
    /// The streaks when `until` began, as they follow from a state of the store.
    struct CountedStreaks {
        KnownStreaks streaks;
        std::int64_t state;
    };

    Task<HKAuthorizationRequestStatus> fetchRequestStatus();
    std::optional<KnownStreaks> knownStreaks(const std::string& memory, Day day) const;
    void adoptSharedValues();
    Task<> fetchDay(Day day);
    Task<> fetchWeek(Day weekStart);
    Task<> fetchMonth(std::chrono::year_month month);
    /// Starts `load` in place of the `running` one.
    CancellableTask replace(std::optional<CancellableTask>& running, Task<> load);
    /// Runs `load`; the first argument counts it for as long as the task lives.
    static Task<> counted(LoadingState::Load, Task<> load);
    Day today() const { return settings_.calendar().day(clock_.now()); }

    MainExecutor& executor_;
    const Clock& clock_;
    HKHealthStore& healthStore_;
    SettingsStore& settings_;
    HealthDiagnostics& diagnostics_;
    StepGoalNotifications& notificationManager_;

    GatedReads reads_;
    ActivityReads activity_;
    BodyMetrics body_;
    WorkoutReading workouts_;
    bool hasRequestedAuthorization_ = false;
    int refreshCount_ = 0;  // running refreshes
    std::optional<CountedStreaks> unremembered_;
    std::optional<CancellableTask> dayFetchTask_, weekFetchTask_, monthFetchTask_;
    CoalescedWork refresh_;
    Subscription newSamples_;
    TaskScope tasks_;  // last: its coroutines use what stands above
};

}  // namespace pedvar
