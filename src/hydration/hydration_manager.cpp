#include "hydration/hydration_manager.h"

#include <algorithm>
#include <set>
#include <utility>

namespace pedvar {

namespace {

HKQuantitySample sampleOf(const Drink& drink) {
    return {{HKQuantityTypeIdentifierDietaryWater},
            HKQuantity(HKUnit::milliliter(), drink.waterMilliliters),
            drink.date,
            drink.date};
}

/// Of those of the drinks that are `within`.
double waterOutsideHealth(const std::vector<Drink>& drinks, const Interval& within) {
    double sum = 0;
    for (const Drink& drink : drinks) {
        if (!drink.isInHealth && within.contains(drink.date)) sum += drink.waterMilliliters;
    }
    return sum;
}

}  // namespace

HydrationManager::HydrationManager(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore,
                                   ActivityReads& reads, DefaultsDomains& defaults, const SettingsStore& settings,
                                   RandomSource& random, HydrationAppGroup& group, std::optional<Date> horizon)
    : executor_(executor),
      clock_(clock),
      healthStore_(healthStore),
      reads_(reads),
      settings_(settings),
      random_(random),
      group_(group),
      horizon_(horizon),
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
    auto drunk = co_await fetchDrinks(today);
    todayMilliliters = std::max(inHealth + waterOutsideHealth(drunk, today), 0.0);
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
        const auto saved = co_await save(*added);
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

Task<HKResult<void>> HydrationManager::save(Drink drink) {
    Completion<HKResult<void>> answer(executor_);
    healthStore_.save({sampleOf(drink)}, answer.resolver());
    auto saved = co_await answer;
    const bool isUndoneMeanwhile = saved && !documents_.contains(drink);  // by another process
    if (isUndoneMeanwhile) co_return co_await deleteSample(drink);
    co_return saved;
}

Task<HKResult<void>> HydrationManager::deleteSample(Drink drink) {
    Completion<HKResult<void>> answer(executor_);
    healthStore_.deleteSamples({sampleOf(drink)}, answer.resolver());
    co_return co_await answer;
}

// The ledger is changed last: until then the drink counts, and whoever takes it out has undone it.
Task<std::expected<Drink, HydrationError>> HydrationManager::undo() {
    while (const auto last = documents_.last(clock_.now())) {
        if (last->isInHealth) {
            const auto deleted = co_await deleteSample(*last);
            if (!deleted) co_return std::unexpected(deleted.error());
        }
        const auto removed = documents_.remove(*last);
        if (!removed) co_return std::unexpected(removed.error());
        if (!*removed) continue;
        co_await refresh();
        co_return *last;
    }
    co_return std::unexpected(DrinkRefusal::nothingToUndo);
}

Task<std::vector<Drink>> HydrationManager::fetchDrinks(Interval within) {
    if (horizon_) within.end = std::max(within.start, std::min(within.end, *horizon_));
    auto found = documents_.drinks(within);
    const auto own = co_await reads_.fetchOwnWater(within, QueryPriority::normal);
    if (!own) co_return found;
    std::set<std::int64_t> moments;
    for (const Date moment : *own) moments.insert(millisecondOf(moment));
    for (Drink& drink : found) drink.isInHealth = moments.contains(millisecondOf(drink.date));
    co_return found;
}

Task<std::optional<std::vector<double>>> HydrationManager::fetchDays(Day first, Day last) {
    const Calendar calendar = settings_.calendar();
    const auto totals = co_await reads_.fetchDailyWater(first, last, calendar, QueryPriority::normal);
    if (!totals) co_return std::nullopt;
    const Interval all{calendar.start(first), calendar.interval(last).end};
    const auto drunk = co_await fetchDrinks(all);
    std::vector<double> days;
    for (const auto& total : *totals) {
        const Day day = first + std::chrono::days(days.size());
        days.push_back(total.value_or(0) + waterOutsideHealth(drunk, calendar.interval(day)));
    }
    co_return days;
}

}  // namespace pedvar
