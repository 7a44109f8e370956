#include "hydration/hydration_manager.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

HKQuantitySample sampleOf(const Drink& drink) {
    return {{HKQuantityTypeIdentifierDietaryWater},
            HKQuantity(HKUnit::milliliter(), drink.waterMilliliters),
            drink.date,
            drink.date};
}

double waterOutsideHealth(const std::vector<Drink>& drinks) {
    double sum = 0;
    for (const Drink& drink : drinks) {
        if (!drink.isInHealth) sum += drink.waterMilliliters;
    }
    return sum;
}

}  // namespace

HydrationManager::HydrationManager(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore,
                                   ActivityReads& reads, DefaultsDomains& defaults, const SettingsStore& settings,
                                   RandomSource& random, HydrationAppGroup& group)
    : executor_(executor),
      clock_(clock),
      healthStore_(healthStore),
      reads_(reads),
      settings_(settings),
      random_(random),
      group_(group),
      documents_(defaults, settings) {}

Task<DefaultsResult> HydrationManager::changeSettings(std::function<bool(HydrationSettings&)> edit) {
    bool isEdited = false;
    auto changed = documents_.changeSettings([&](HydrationSettings& edited) { return isEdited = edit(edited); });
    if (changed && isEdited) co_await refresh();
    co_return changed;
}

Task<> HydrationManager::read() {
    const Calendar calendar = settings_.calendar();
    const Interval today = calendar.interval(calendar.day(clock_.now()));
    const double inHealth = co_await reads_.fetchWater(today.start, today.end, QueryPriority::normal);
    const double goal = co_await fetchGoal(settings());
    auto drunk = documents_.drinks(today);
    todayMilliliters = std::max(inHealth + waterOutsideHealth(drunk), 0.0);
    goalMilliliters = goal;
    todayDrinks = std::move(drunk);
}

Task<> HydrationManager::refresh() {
    co_await read();
    group_.updateWidgetSnapshot(todayMilliliters, goalMilliliters, settings());
}

Task<double> HydrationManager::fetchGoal(HydrationSettings settings) {
    if (!settings.isGoalByWeight) co_return settings.goalMilliliters;
    const auto weight = co_await reads_.fetchBodyMass(clock_.now(), QueryPriority::normal);
    co_return weight && *weight > 0 ? goalByWeight(*weight) : settings.goalMilliliters;
}

Task<std::expected<Drink, HydrationError>> HydrationManager::drink(double milliliters, DrinkType type) {
    if (!isDrinkAmount(milliliters)) co_return std::unexpected(DrinkRefusal::impossibleAmount);
    const Drink wished{.id = random_.uuid(),
                       .date = clock_.now(),
                       .milliliters = milliliters,
                       .drinkType = type,
                       .waterMilliliters = milliliters * waterShare(type),
                       .isInHealth = settings().savesToHealth};
    const auto added = documents_.add(wished);
    if (!added) co_return std::unexpected(added.error());
    if (added->isInHealth) {
        Completion<HKResult<void>> answer(executor_);
        healthStore_.save({sampleOf(*added)}, answer.resolver());
        const auto saved = co_await answer;
        if (!saved) {
            const auto removed = documents_.remove(*added);
            if (!removed) co_return std::unexpected(removed.error());
            co_return std::unexpected(saved.error());
        }
    }
    group_.saveLastAmount(milliliters);
    co_await refresh();
    co_return *added;
}

// The drink is taken out of the ledger first, so that nobody else takes the same one back.
Task<std::expected<Drink, HydrationError>> HydrationManager::undo() {
    const auto taken = documents_.takeLast(clock_.now());
    if (!taken) co_return std::unexpected(taken.error());
    if (!*taken) co_return std::unexpected(DrinkRefusal::nothingToUndo);
    const Drink drink = **taken;
    if (drink.isInHealth) {
        Completion<HKResult<void>> answer(executor_);
        healthStore_.deleteSamples({sampleOf(drink)}, answer.resolver());
        const auto deleted = co_await answer;
        if (!deleted) {
            const auto restored = documents_.add(drink);
            if (!restored) co_return std::unexpected(restored.error());
            co_return std::unexpected(deleted.error());
        }
    }
    co_await refresh();
    co_return drink;
}

Task<std::optional<std::vector<double>>> HydrationManager::fetchDays(Day first, Day last) {
    const Calendar calendar = settings_.calendar();
    const auto totals = co_await reads_.fetchDailyWater(first, last, calendar, QueryPriority::normal);
    if (!totals) co_return std::nullopt;
    std::vector<double> days;
    for (const auto& total : *totals) {
        const Day day = first + std::chrono::days(days.size());
        days.push_back(total.value_or(0) + waterOutsideHealth(documents_.drinks(calendar.interval(day))));
    }
    co_return days;
}

}  // namespace pedvar
