#include "hydration/hydration_documents.h"

#include "core/check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view settingsKey = "hydrationSettings";

std::string keyOf(std::chrono::year_month month) {
    return "hydrationDrinks." + monthKey(month);
}

/// Samples are told apart by their millisecond.
std::int64_t millisecondOf(Date date) {
    return std::llround(date.time_since_epoch().count() * 1e3);
}

}  // namespace

std::optional<HydrationSettings> HydrationDocuments::storedSettings() const {
    const auto data = defaults_.standard().data(settingsKey);
    auto stored = data ? settings_.decode<HydrationSettings>(data->bytes) : std::nullopt;
    return stored && isSound(*stored) ? stored : std::nullopt;
}

HydrationSettings HydrationDocuments::settings() const {
    HydrationSettings settings = storedSettings().value_or(defaultHydrationSettings());
    if (!settings.volumeUnit) settings.volumeUnit = settings_.preferences().volumeUnit;
    return settings;
}

template <class Value>
std::vector<DefaultsChange> HydrationDocuments::replacing(const std::string& key, const Value& value,
                                                          bool isReadable) const {
    const UserDefaults& store = defaults_.standard();
    std::vector<DefaultsChange> changes{{&store, key, Data{*encodeJson(value)}}};
    if (!isReadable) {
        if (auto kept = setAside(store, key)) changes.push_back(std::move(*kept));
    }
    return changes;
}

DefaultsResult HydrationDocuments::changeSettings(const std::function<bool(HydrationSettings&)>& edit) {
    HydrationSettings tried = storedSettings().value_or(defaultHydrationSettings());
    if (!edit(tried)) return {};
    return defaults_.update([&] {
        const auto stored = storedSettings();
        HydrationSettings edited = stored.value_or(defaultHydrationSettings());
        if (!edit(edited)) return std::vector<DefaultsChange>();
        check(isSound(edited), "hydration settings that are none were to be stored");
        return replacing(std::string(settingsKey), edited, stored.has_value());
    });
}

std::optional<std::vector<Drink>> HydrationDocuments::storedDrinks(Month month) const {
    const auto data = defaults_.standard().data(keyOf(month));
    return data ? settings_.decode<std::vector<Drink>>(data->bytes) : std::nullopt;
}

HydrationDocuments::Month HydrationDocuments::monthOf(Date date) const {
    return month(settings_.calendar().day(date));
}

std::vector<Drink> HydrationDocuments::drinks(const Interval& within) const {
    std::vector<Drink> found;
    constexpr std::chrono::days otherZones{1};  // a drink is in the month that it had where it was drunk
    const Month last = monthOf(within.end + otherZones);
    for (Month month = monthOf(within.start - otherZones); month <= last; month += std::chrono::months(1)) {
        for (const Drink& drink : storedDrinks(month).value_or(std::vector<Drink>())) {
            if (within.contains(drink.date)) found.push_back(drink);
        }
    }
    std::ranges::sort(found, {}, &Drink::date);
    return found;
}

std::expected<Drink, DefaultsError> HydrationDocuments::add(Drink drink) {
    const Date wished = drink.date;
    const auto added = defaults_.update([&] {
        drink.date = wished;
        const Month month = monthOf(wished);
        const auto stored = storedDrinks(month);
        auto drinks = stored.value_or(std::vector<Drink>());
        const auto isTaken = [&](const Drink& other) {
            return millisecondOf(other.date) == millisecondOf(drink.date);
        };
        while (std::ranges::any_of(drinks, isTaken)) drink.date += std::chrono::milliseconds(1);
        drinks.push_back(drink);
        return replacing(keyOf(month), drinks, stored.has_value());
    });
    if (!added) return std::unexpected(added.error());
    return drink;
}

DefaultsResult HydrationDocuments::remove(const Drink& drink) {
    return defaults_.update([&] {
        for (const Month month : {monthOf(drink.date), monthOf(drink.date) - std::chrono::months(1)}) {
            auto drinks = storedDrinks(month);
            if (!drinks || std::erase_if(*drinks, [&](const Drink& other) { return other.id == drink.id; }) == 0) {
                continue;
            }
            return replacing(keyOf(month), *drinks, true);
        }
        return std::vector<DefaultsChange>();
    });
}

std::expected<std::optional<Drink>, DefaultsError> HydrationDocuments::takeLast(Date now) {
    const std::array months{monthOf(now), monthOf(now) - std::chrono::months(1)};
    const auto isEmpty = [&](Month month) { return storedDrinks(month).value_or(std::vector<Drink>()).empty(); };
    if (std::ranges::all_of(months, isEmpty)) return std::nullopt;
    std::optional<Drink> taken;
    const auto changed = defaults_.update([&] {
        taken.reset();
        for (const Month month : months) {
            auto drinks = storedDrinks(month);
            if (!drinks || drinks->empty()) continue;
            const auto last = std::ranges::max_element(*drinks, {}, &Drink::date);
            taken = *last;
            drinks->erase(last);
            return replacing(keyOf(month), *drinks, true);
        }
        return std::vector<DefaultsChange>();
    });
    if (!changed) return std::unexpected(changed.error());
    return taken;
}

}  // namespace pedvar
