/// The typical day of the last four weeks.
#pragma once

#include "core/async.h"
#include "core/published.h"
#include "health/health_kit_manager.h"
#include "health/settings_store.h"
#include "insights/step_pace_baseline.h"
#include "platform/clock.h"
#include "platform/json_parser.h"
#include "platform/platform_log.h"
#include "platform/user_defaults.h"

#include <optional>
#include <span>
#include <vector>

namespace pedvar {

/// Keeps the hours of the 28 days before today, also from one run of the program to the next, and the baseline
/// that they make. Lives on the main executor.
class StepPaceBaselineStore {
public:
    /// Whether days that were read are stored. Those who only look keep them in memory.
    enum class Keeping { stored, inMemory };

    /// Starts with the days that are stored.
    StepPaceBaselineStore(MainExecutor& executor, const Clock& clock, const SettingsStore& settings,
                          DefaultsDomains& defaults, const JsonParser& json, PlatformLog& log,
                          Keeping keeping = Keeping::stored);

    Published<std::vector<PaceDay>> days;                 // by date
    Published<std::optional<StepPaceBaseline>> baseline;  // none while too few days qualify
    Published<bool> isBuilding;                           // while a refresh runs that began with too few days

    /// Lets the next refresh read the days anew that `touched` intervals reach into; those that are stored stay.
    void forget(std::span<const Interval> touched);

    /// Drops the days that have left the span and reads the missing ones, newest first and one at a time; the
    /// baseline follows each. A day that cannot be read is missing until a later refresh. Yields the running
    /// refresh, which a further call does not disturb; none when no day is missing. `healthKitManager` outlives
    /// it.
    std::optional<CancellableTask> refresh(HealthKitManager& healthKitManager);

private:
    Task<> fetch(ActivityReads& reads, std::vector<Day> missing, Calendar calendar);
    void setDays(std::vector<PaceDay> newDays);
    void save();

    const Clock& clock_;
    const SettingsStore& settings_;
    DefaultsDomains& defaults_;
    const JsonParser& json_;
    PlatformLog& log_;
    Keeping keeping_;
    std::optional<CancellableTask> refreshTask_;
    TaskScope tasks_;  // last: its coroutines use what stands above
};

}  // namespace pedvar
