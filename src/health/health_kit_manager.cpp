#include "health/health_kit_manager.h"

#include "health/streaks.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

constexpr std::chrono::days accessProbeSpan{30};
constexpr std::chrono::days oneDay{1};
constexpr std::chrono::days week{7};

HKTypeSets authorizedTypes() {
    const std::vector<std::string> shared{
        HKQuantityTypeIdentifierBodyMass, HKQuantityTypeIdentifierHeight, HKQuantityTypeIdentifierDietaryWater,
        HKWorkoutTypeIdentifier,          HKWorkoutRouteTypeIdentifier,
    };
    std::vector<std::string> read{
        HKQuantityTypeIdentifierStepCount,          HKQuantityTypeIdentifierDistanceWalkingRunning,
        HKQuantityTypeIdentifierActiveEnergyBurned, HKQuantityTypeIdentifierAppleExerciseTime,
        HKQuantityTypeIdentifierFlightsClimbed,     HKQuantityTypeIdentifierHeartRate,
    };
    read.insert(read.end(), shared.begin(), shared.end());
    return {shared, read};
}

WeekData weekOf(Day weekStart, std::vector<DailyStepData> days, Day today) {
    WeekData result{isoText(weekStart), days.front().date, days.back().date};
    for (const DailyStepData& day : days) result.totalSteps += day.steps;
    const auto daysBegun = std::clamp(today + oneDay - weekStart, std::chrono::days(0), week);
    if (daysBegun.count() > 0) {
        result.dailyAverage = static_cast<double>(result.totalSteps) / static_cast<double>(daysBegun.count());
    }
    result.dailyData = std::move(days);
    return result;
}

Date weekStartOf(const Calendar& calendar, Date moment) {
    return calendar.start(calendar.weekStart(calendar.day(moment)));
}

constexpr std::string_view streakMemoryKey = "streaks";

/// Keeps `flag` up while at least one of them lives.
class Mark {
public:
    Mark(int& count, Published<bool>& flag) : count_(count), flag_(flag) {
        ++count_;
        flag_ = true;
    }
    Mark(const Mark&) = delete;
    Mark& operator=(const Mark&) = delete;
    ~Mark() {
        if (--count_ == 0) flag_ = false;
    }

private:
    int& count_;
    Published<bool>& flag_;
};

}  // namespace

HealthKitManager::HealthKitManager(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore,
                                   SettingsStore& settings, HealthDiagnostics& diagnostics,
                                   StepGoalNotifications& notificationManager)
    : currentSelectedDate(clock.now()),
      currentWeekStart(weekStartOf(settings.calendar(), clock.now())),
      loading(executor),
      executor_(executor),
      clock_(clock),
      healthStore_(healthStore),
      settings_(settings),
      diagnostics_(diagnostics),
      notificationManager_(notificationManager),
      reads_(executor, healthStore, diagnostics),
      activity_(reads_),
      body_(executor, clock, healthStore, reads_, settings, diagnostics),
      workouts_(executor, clock, settings, reads_),
      refresh_(executor, [this] { return refreshToday(); }),
      tasks_(executor) {}

Task<HKAuthorizationRequestStatus> HealthKitManager::fetchRequestStatus() {
    Completion<HKResult<HKAuthorizationRequestStatus>> answer(executor_);
    healthStore_.getRequestStatusForAuthorization(authorizedTypes(), answer.resolver());
    const auto status = co_await answer;
    co_return status.value_or(HKAuthorizationRequestStatus::unknown);
}

Task<> HealthKitManager::ensureAuthorization() {
    const auto status = co_await fetchRequestStatus();
    if (status == HKAuthorizationRequestStatus::unnecessary) isAuthorized = true;
    if (status != HKAuthorizationRequestStatus::shouldRequest) co_return;
    if (std::exchange(hasRequestedAuthorization_, true)) co_return;

    diagnostics_.log(LogLevel::standard,
                     "HKDiag requestStatus=shouldRequest at launch - presenting the permission sheet");
    Completion<HKResult<void>> answer(executor_);
    healthStore_.requestAuthorization(authorizedTypes(), answer.resolver());
    const auto outcome = co_await answer;
    if (!outcome) {
        const HKError& error = outcome.error();
        diagnostics_.log(LogLevel::error, "HKDiag requestAuthorization THREW " + describe(error));
        authorizationError = "HealthKit authorization completed with note: " + error.localizedDescription;
    }
    isAuthorized = true;
}

Task<bool> HealthKitManager::computeHealthAccessBlocked() {
    const auto status = co_await fetchRequestStatus();
    if (status != HKAuthorizationRequestStatus::unnecessary) co_return false;

    const HKQuantityType type{HKQuantityTypeIdentifierStepCount};
    const Date from = settings_.calendar().start(today() - accessProbeSpan);
    const HKPredicate predicate{from, clock_.now(), HKQueryOptions::strictStartDate};
    const auto samples =
        co_await reads_.fetchSamples(type, predicate, 1, HKSampleSort::none, QueryPriority::normal);
    if (!samples || !samples->empty()) co_return false;  // what could not be read says nothing
    diagnostics_.log(LogLevel::standard,
                     "HKDiag no step samples in 30 days with authorization already requested - surfacing the "
                     "Health access hint");
    co_return true;
}

void HealthKitManager::observeNewSamples() {
    const HKQuantityType type{HKQuantityTypeIdentifierStepCount};
    newSamples_ = healthStore_.observeNewSamples(type, [this] { refresh_.request(); });
    healthStore_.enableBackgroundDelivery(
        type, HKUpdateFrequency::immediate, [&diagnostics = diagnostics_](const HKResult<void>& outcome) {
            if (outcome) {
                diagnostics.log(LogLevel::standard, "✅ Background delivery enabled for step count updates");
            } else {
                diagnostics.log(LogLevel::error, "❌ Failed to enable background delivery: " +
                                                     outcome.error().localizedDescription);
            }
        });
}

Task<> HealthKitManager::refreshToday() {
    const Mark mark(refreshCount_, isLoading);
    adoptSharedValues();

    Day day;
    SelectedDayMetrics metrics;
    do {
        day = today();
        metrics = co_await activity_.fetchDayMetrics(day, settings_.calendar(), QueryPriority::normal);
    } while (day != today());  // midnight has passed meanwhile
    if (co_await isCancelled()) co_return;

    todaySteps = metrics.steps;
    todayDistance = metrics.distanceMeters;
    todayActiveCalories = metrics.activeCalories;
    todayActiveMinutes = metrics.activeMinutes;
    todayFlightsClimbed = metrics.flights;
    todayPreviousDaySteps = metrics.previousDaySteps;
    notificationManager_.goalProgressed(metrics.steps, settings_.dailyGoal());
    refreshed.notify();
}

void HealthKitManager::adoptSharedValues() {
    auto result = settings_.adoptSharedValues(today());
    if (result) result = settings_.rememberFirstGoal(today());
    if (!result)
        diagnostics_.log(LogLevel::error, "HKDiag settings not saved: " + result.error().message.inEnglish());
    body_.reloadPersonalMetrics();
}

std::optional<KnownStreaks> HealthKitManager::knownStreaks(const std::string& memory, Day day) const {
    const auto decoded = settings_.decode<StreakMemory>(memory);
    return decoded ? known(*decoded, day, settings_.calendar(), settings_.goalHistory()) : std::nullopt;
}

Task<> HealthKitManager::updateStreaks() {
    const Calendar calendar = settings_.calendar();
    const GoalHistory goals = settings_.goalHistory();
    const Day last = today();

    const HKQuantityType type{HKQuantityTypeIdentifierStepCount};
    Completion<HKResult<RecalledText>> answer(executor_);
    healthStore_.recall(std::string(streakMemoryKey), type, answer.resolver());
    const auto recalled = co_await answer;
    auto past = recalled && recalled->text ? knownStreaks(*recalled->text, last) : std::nullopt;
    if (!past) {
        const auto oldest = co_await activity_.fetchOldestStepDate(clock_.now(), QueryPriority::normal);
        past = KnownStreaks{{}, oldest ? calendar.day(*oldest) : last};
    }
    const auto steps = co_await activity_.fetchDailySteps(past->until, last, calendar, QueryPriority::normal);
    if (co_await isCancelled()) co_return;

    unremembered_.reset();
    Streaks streaks;
    if (steps && !steps->empty()) {
        const std::span<const std::int64_t> daysOver = std::span(*steps).first(steps->size() - 1);
        const Streaks before = streaksAfter(past->streaks, past->until, daysOver, goals);
        streaks = streaksOn(last, before, steps->back(), goals);
        if (recalled && !daysOver.empty()) unremembered_ = CountedStreaks{{before, last}, recalled->state};
    }
    currentStreak = streaks.current;
    longestStreak = streaks.longest;
    lastMetDate = streaks.lastMet;
}

Task<> HealthKitManager::rememberStreaks() {
    if (!unremembered_) co_return;
    const auto [counted, state] = *std::exchange(unremembered_, std::nullopt);
    const Calendar calendar = settings_.calendar();
    const StreakMemory memory = remembered(counted, calendar, settings_.goalHistory());
    DerivedDocument document{std::string(streakMemoryKey),
                             {HKQuantityTypeIdentifierStepCount},
                             calendar.start(counted.until),
                             *encodeJson(memory)};
    Completion<HKResult<void>> answer(executor_);
    healthStore_.keep(std::move(document), state, answer.resolver());
    const auto kept = co_await answer;
    if (!kept) diagnostics_.log(LogLevel::error, "HKDiag streaks not remembered: " + describe(kept.error()));
}

Task<std::vector<std::int64_t>> HealthKitManager::fetchLastSevenDays() {
    const Day last = today();
    const auto steps = co_await activity_.fetchDailySteps(last + oneDay - week, last, settings_.calendar(),
                                                          QueryPriority::normal);
    co_return steps.value_or(std::vector<std::int64_t>(7));
}

CancellableTask HealthKitManager::selectDate(Date date) {
    currentSelectedDate = date;
    return replace(dayFetchTask_, fetchDay(settings_.calendar().day(date)));
}

CancellableTask HealthKitManager::loadWeek(Date inWeek) {
    const Calendar calendar = settings_.calendar();
    const Day weekStart = calendar.weekStart(calendar.day(inWeek));
    currentWeekStart = calendar.start(weekStart);
    return replace(weekFetchTask_, fetchWeek(weekStart));
}

CancellableTask HealthKitManager::loadMonth(std::chrono::year_month month) {
    return replace(monthFetchTask_, fetchMonth(month));
}

CancellableTask HealthKitManager::replace(std::optional<CancellableTask>& running, Task<> load) {
    if (running) running->cancel();
    running = tasks_.spawn(counted(loading.begin(), std::move(load)));
    return *running;
}

Task<> HealthKitManager::counted(LoadingState::Load, Task<> load) {
    co_await load;
}

Task<> HealthKitManager::fetchDay(Day day) {
    const Calendar calendar = settings_.calendar();
    const auto metrics = co_await activity_.fetchDayMetrics(day, calendar, QueryPriority::normal);
    if (co_await isCancelled()) co_return;
    selectedDayMetrics = metrics;

    auto hours = co_await activity_.fetchHourlyData(day, calendar, QueryPriority::normal);
    if (co_await isCancelled()) co_return;
    if (hours.empty()) hours = hourlyEntries(day, calendar, HourTotals{}, HourTotals{});
    hourlyStepData = std::move(hours);
}

Task<> HealthKitManager::fetchWeek(Day weekStart) {
    auto days = co_await activity_.fetchDailyData(weekStart, weekStart + week - oneDay, settings_.calendar(),
                                                  QueryPriority::normal);
    if (co_await isCancelled()) co_return;
    weekStepsData = std::vector{weekOf(weekStart, std::move(days), today())};
}

Task<> HealthKitManager::fetchMonth(std::chrono::year_month month) {
    const Day first = firstDay(month);
    const Day last = first + std::chrono::days(dayCount(month)) - oneDay;
    auto days = co_await activity_.fetchDailyData(first, last, settings_.calendar(), QueryPriority::normal);
    if (co_await isCancelled()) co_return;
    dailyStepData = std::move(days);
}

}  // namespace pedvar
