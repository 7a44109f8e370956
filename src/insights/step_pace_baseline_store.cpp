#include "insights/step_pace_baseline_store.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

constexpr int spanInDays = 28;
constexpr int daysPerSave = 7;

/// The hours of the day that lasts through `moments`; none unless there are 24 of them. An hour that the clocks
/// skip at the end of a day has the moment of the skip, which is the day's end.
std::optional<std::array<std::int64_t, 24>> hoursOf(std::span<const HourlyStepData> entries,
                                                    const Interval& moments) {
    std::array<std::int64_t, 24> hours{};
    int count = 0;
    for (const HourlyStepData& entry : entries) {
        const bool isOfDay = moments.start <= entry.date && entry.date <= moments.end;
        if (!isOfDay || entry.hour < 0 || entry.hour > 23) continue;
        hours[static_cast<std::size_t>(entry.hour)] = entry.steps;
        ++count;
    }
    return count == 24 ? std::optional(hours) : std::nullopt;
}

}  // namespace

StepPaceBaselineStore::StepPaceBaselineStore(MainExecutor& executor, const Clock& clock,
                                             const SettingsStore& settings, DefaultsDomains& defaults,
                                             const JsonParser& json, PlatformLog& log, Keeping keeping)
    : clock_(clock),
      settings_(settings),
      defaults_(defaults),
      json_(json),
      log_(log),
      keeping_(keeping),
      tasks_(executor) {
    setDays(loadPaceDays(defaults, json));
}

void StepPaceBaselineStore::forget(std::span<const Interval> touched) {
    std::vector<PaceDay> rest = days;
    if (dropTouched(rest, settings_.calendar(), touched) > 0) setDays(std::move(rest));
}

std::optional<CancellableTask> StepPaceBaselineStore::refresh(HealthKitManager& healthKitManager) {
    if (refreshTask_) return refreshTask_;
    const Calendar calendar = settings_.calendar();
    const Day today = calendar.day(clock_.now());
    std::vector<PaceDay> kept;
    std::vector<Day> missing;
    for (int daysAgo = 1; daysAgo <= spanInDays; ++daysAgo) {
        const Day day = today - std::chrono::days(daysAgo);
        const auto stored = std::ranges::find(*days, calendar.start(day), &PaceDay::date);
        if (stored != days->end()) {
            kept.push_back(*stored);
        } else {
            missing.push_back(day);
        }
    }
    if (kept.size() < days->size()) setDays(std::move(kept));
    isBuilding = !missing.empty() && std::ssize(*days) < StepPaceBaseline::fewestDays;
    if (missing.empty()) return std::nullopt;
    refreshTask_ = tasks_.spawn(fetch(healthKitManager.reads(), std::move(missing), calendar));
    return refreshTask_;
}

Task<> StepPaceBaselineStore::fetch(ActivityReads& reads, std::vector<Day> missing, Calendar calendar) {
    const HKQuantityType stepType{HKQuantityTypeIdentifierStepCount};
    int unsaved = 0;
    for (const Day day : missing) {
        if (co_await isCancelled()) break;
        const Interval moments = calendar.interval(day);
        const auto entries = co_await reads.hourlyStepsViaCollectionQuery(stepType, moments.start, moments.end,
                                                                          calendar, QueryPriority::background);
        const auto hours = hoursOf(entries, moments);
        if (!hours) continue;
        std::vector<PaceDay> more = days;
        more.push_back({moments.start, *hours});
        setDays(std::move(more));
        if (++unsaved == daysPerSave) {
            save();
            unsaved = 0;
        }
    }
    if (unsaved > 0) save();
    isBuilding = false;
    refreshTask_.reset();
}

void StepPaceBaselineStore::setDays(std::vector<PaceDay> newDays) {
    std::ranges::sort(newDays, {}, &PaceDay::date);
    const auto repeated = std::ranges::unique(newDays, {}, &PaceDay::date);
    newDays.erase(repeated.begin(), repeated.end());
    days = std::move(newDays);
    baseline = stepPaceBaseline(*days);
}

void StepPaceBaselineStore::save() {
    if (keeping_ == Keeping::inMemory) return;
    const auto result = savePaceDays(defaults_, json_, days);
    if (!result) log_.log(logSubsystem, "StepPace", LogLevel::error, result.error().message.inEnglish());
}

}  // namespace pedvar
