/// Drinking enough.
#pragma once

#include "core/async.h"
#include "core/published.h"
#include "health/activity_reads.h"
#include "hydration/hydration_app_group.h"
#include "hydration/hydration_documents.h"
#include "platform/clock.h"
#include "platform/health_store.h"
#include "platform/random_source.h"

#include <expected>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace pedvar {

/// Why nothing was drunk or undone.
enum class DrinkRefusal {
    impossibleAmount,
    nothingToUndo,
};
using HydrationError = std::variant<DrinkRefusal, DefaultsError, HKError>;

/// Keeps today's water and the goal. A drink goes into a ledger of our own, and its water into the health store
/// too where the person allows it; the total is what the health store has from all sources, and the drinks that
/// only the ledger has. So a drink counts as long as the ledger has it, also when the program ends before the
/// health store has followed. Lives on the main executor.
class HydrationManager {
public:
    /// What lies behind `horizon` is not looked at.
    HydrationManager(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore, ActivityReads& reads,
                     DefaultsDomains& defaults, const SettingsStore& settings, RandomSource& random,
                     HydrationAppGroup& group, std::optional<Date> horizon = std::nullopt);

    Published<double> todayMilliliters;  // of water
    Published<double> goalMilliliters;
    Published<std::vector<Drink>> todayDrinks;  // our own, oldest first

    HydrationSettings settings() const { return documents_.settings(); }
    /// Saves what `edit` makes of the settings, unless it yields false, and tells the widgets.
    Task<DefaultsResult> changeSettings(std::function<bool(HydrationSettings&)> edit);

    /// Publishes today's figures and stores nothing.
    Task<> read();
    /// The same, then the widgets.
    Task<> refresh();

    /// Adds a drink of this moment. All of it is stored or nothing.
    Task<std::expected<Drink, HydrationError>> drink(double milliliters, DrinkType type);
    /// Takes the last drink of ours back.
    Task<std::expected<Drink, HydrationError>> undo();

    /// Our own drinks, oldest first.
    Task<std::vector<Drink>> fetchDrinks(Interval within);
    /// The water of each day from `first` to `last`, in millilitres; none when it cannot be read.
    Task<std::optional<std::vector<double>>> fetchDays(Day first, Day last);

    /// The keys of the documents of late that count as absent because they do not decode.
    std::vector<std::string> unreadableKeys() const { return documents_.unreadableKeys(clock_.now()); }

private:
    Task<double> fetchGoal(HydrationSettings settings);
    Task<HKResult<void>> save(Drink drink);
    Task<HKResult<void>> deleteSample(Drink drink);

    MainExecutor& executor_;
    const Clock& clock_;
    HKHealthStore& healthStore_;
    ActivityReads& reads_;
    const SettingsStore& settings_;
    RandomSource& random_;
    HydrationAppGroup& group_;
    std::optional<Date> horizon_;
    HydrationDocuments documents_;
};

}  // namespace pedvar
