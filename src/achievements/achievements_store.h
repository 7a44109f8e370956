/// The badges of the person.
#pragma once

#include "achievements/achievement.h"
#include "achievements/tally_memory.h"
#include "core/async.h"
#include "core/event.h"
#include "core/published.h"
#include "health/activity_reads.h"
#include "health/settings_store.h"
#include "platform/clock.h"
#include "platform/health_store.h"
#include "platform/platform_log.h"
#include "platform/user_defaults.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// What the days of one type came to.
template <class Tally>
struct Evaluated {
    Tally all;
    Tally before;  // without the last day of which there is something, which may not be complete
    Day until;     // that day
    std::int64_t state = 0;
    bool isNews = false;  // more than the health store remembers

    /// Before `day`, of which there is something, is added to `all`.
    void startDay(Day day) {
        if (day <= until) return;
        before = all;
        until = day;
        isNews = true;
    }
};

/// Evaluates the badges over everything in the health store. A badge that was unlocked once stays unlocked. Lives
/// on the main executor.
class AchievementsStore {
public:
    /// Starts with the badges that are stored.
    AchievementsStore(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore, ActivityReads& reads,
                      const SettingsStore& settings, DefaultsDomains& defaults, PlatformLog& log);

    Published<std::vector<Achievement>> achievements;  // in the order of the catalogue
    Event<std::vector<Achievement>> unlocked;          // what a `remember` found new; never of the first one

    /// Publishes the badges as they are now and stores nothing. They stay as they were when steps or distances
    /// cannot be read.
    Task<> evaluate();
    /// Stores what the last evaluation found. What did not decode is kept under its key with ".unreadable" behind
    /// it.
    Task<DefaultsResult> remember();

private:
    template <class Tally>
    Task<Evaluated<Tally>> recall(std::string_view key, HKQuantityType type, Day today);
    Task<std::optional<Evaluated<StepTally>>> evaluateSteps(Day today);
    Task<std::optional<Evaluated<BadgeMarks>>> evaluateDistances(Day today);
    template <class Tally>
    Task<> keep(std::string_view key, HKQuantityType type, std::optional<Evaluated<Tally>> evaluated);

    /// What a tally of the days before `until` follows from besides samples.
    std::string basis(const StepTally& tally, Day until) const;
    std::string basis(const BadgeMarks& marks, Day until) const;
    std::vector<Achievement> judged(const StepTally& steps, const BadgeMarks& distances, Day today) const;
    std::optional<AchievementsSnapshot> stored() const;

    MainExecutor& executor_;
    const Clock& clock_;
    HKHealthStore& healthStore_;
    ActivityReads& reads_;
    const SettingsStore& settings_;
    DefaultsDomains& defaults_;
    PlatformLog& log_;
    AchievementsSnapshot snapshot_;                   // as it was stored when it was last looked at
    std::optional<std::vector<Achievement>> judged_;  // by the last evaluation, without what is stored
    std::optional<Evaluated<StepTally>> steps_;
    std::optional<Evaluated<BadgeMarks>> distances_;
};

}  // namespace pedvar
