#include "hydration/hydration_documents.h"

#include "core/check.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view settingsKey = "hydrationSettings";
// A drink is in the month that it had where it was drunk; zones differ by up to 26 hours.
constexpr std::chrono::days otherZones{2};

std::string keyOf(std::chrono::year_month month) {
    return "hydrationDrinks." + monthKey(month);
}

}  // namespace

std::int64_t millisecondOf(Date date) {
    return std::llround(date.time_since_epoch().count() * 1e3);
}

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
    auto stored = data ? settings_.decode<std::vector<Drink>>(data->bytes) : std::nullopt;
    const Calendar calendar = settings_.calendar();
    const Interval possible{calendar.start(firstDay(month) - otherZones),
                            calendar.start(firstDay(month + std::chrono::months(1)) + otherZones)};
    const auto isSound = [&](const Drink& drink) {
        return isDrinkAmount(drink.milliliters) && 0 <= drink.waterMilliliters &&
               drink.waterMilliliters <= drink.milliliters && possible.contains(drink.date);
    };
    return stored && std::ranges::all_of(*stored, isSound) ? stored : std::nullopt;
}

HydrationDocuments::Month HydrationDocuments::monthOf(Date date) const {
    return month(settings_.calendar().day(date));
}

std::vector<HydrationDocuments::Month> HydrationDocuments::months(const Interval& within) const {
    std::vector<Month> found;
    const Month last = monthOf(within.end + otherZones);
    for (Month month = monthOf(within.start - otherZones); month <= last; month += std::chrono::months(1)) {
        found.push_back(month);
    }
    return found;
}

std::vector<HydrationDocuments::Month> HydrationDocuments::monthsUpTo(Date now) const {
    return months({now - std::chrono::days(dayCount(monthOf(now))), now});
}

std::vector<Drink> HydrationDocuments::drinks(const Interval& within) const {
    std::vector<Drink> found;
    for (const Month month : months(within)) {
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

std::optional<Drink> HydrationDocuments::last(Date now) const {
    std::optional<Drink> found;
    for (const Month month : monthsUpTo(now)) {
        const auto drinks = storedDrinks(month);
        if (!drinks || drinks->empty()) continue;
        if (!found || found->date < drinks->back().date) found = drinks->back();
    }
    return found;
}

bool HydrationDocuments::contains(const Drink& drink) const {
    const auto found = drinks({drink.date, drink.date + std::chrono::milliseconds(1)});
    return std::ranges::find(found, drink.id, &Drink::id) != found.end();
}

std::expected<bool, DefaultsError> HydrationDocuments::remove(const Drink& drink) {
    bool wasThere = false;
    const auto changed = defaults_.update([&] {
        wasThere = false;
        for (const Month month : months({drink.date, drink.date})) {
            auto drinks = storedDrinks(month);
            if (!drinks || std::erase_if(*drinks, [&](const Drink& other) { return other.id == drink.id; }) == 0) {
                continue;
            }
            wasThere = true;
            return replacing(keyOf(month), *drinks, true);
        }
        return std::vector<DefaultsChange>();
    });
    if (!changed) return std::unexpected(changed.error());
    return wasThere;
}

std::vector<std::string> HydrationDocuments::unreadableKeys(Date now) const {
    const UserDefaults& store = defaults_.standard();
    std::vector<std::string> keys;
    if (store.value(settingsKey) && !storedSettings()) keys.emplace_back(settingsKey);
    for (const Month month : monthsUpTo(now)) {
        if (store.value(keyOf(month)) && !storedDrinks(month)) keys.push_back(keyOf(month));
    }
    return keys;
}

}  // namespace pedvar
