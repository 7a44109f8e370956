/// The stored settings and drinks.
#pragma once

#include "core/date.h"
#include "health/settings_store.h"
#include "hydration/hydration_settings.h"
#include "platform/user_defaults.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// Something that was drunk.
struct Drink {
    UUID id;
    Date date;
    double milliliters = 0;
    DrinkType drinkType = DrinkType::water;
    double waterMilliliters = 0;
    bool isInHealth = false;  // its water is in the health store too, as a sample of the same moment

    using Fields = FieldList<&Drink::id, &Drink::date, &Drink::milliliters, &Drink::drinkType,
                             &Drink::waterMilliliters, &Drink::isInHealth>;
    bool operator==(const Drink&) const = default;
};
static_assert(isComplete<Drink>);

/// Samples are told apart by it.
std::int64_t millisecondOf(Date date);

/// Loads and saves the settings, and a ledger of drinks with a document for each month. What a change depends on
/// is read inside of its transaction: two processes that change something at once undo nothing of each other's. A
/// document that does not decode counts as absent; it is kept under its key with ".unreadable" behind it when
/// something else is saved.
class HydrationDocuments {
public:
    HydrationDocuments(DefaultsDomains& defaults, const SettingsStore& settings)
        : defaults_(defaults), settings_(settings) {}

    /// With the volume unit in effect.
    HydrationSettings settings() const;
    /// Saves what `edit` makes of them, unless it yields false; they are to be sound. It may be called
    /// twice.
    DefaultsResult changeSettings(const std::function<bool(HydrationSettings&)>& edit);

    /// Oldest first.
    std::vector<Drink> drinks(const Interval& within) const;
    /// Adds the drink; its moment is moved on by as many milliseconds as it takes to be its own.
    std::expected<Drink, DefaultsError> add(Drink drink);
    /// The one that was added last in the month up to `now`.
    std::optional<Drink> last(Date now) const;
    bool contains(const Drink& drink) const;
    /// Removes the drink; whether it was there.
    std::expected<bool, DefaultsError> remove(const Drink& drink);

    /// The keys of the documents that do not decode: of the settings, and of the drinks of the month up to `now`.
    std::vector<std::string> unreadableKeys(Date now) const;

private:
    using Month = std::chrono::year_month;

    std::optional<HydrationSettings> storedSettings() const;
    std::optional<std::vector<Drink>> storedDrinks(Month month) const;
    Month monthOf(Date date) const;
    /// Those that can hold drinks of `within`, whatever zone the person was in.
    std::vector<Month> months(const Interval& within) const;
    std::vector<Month> monthsUpTo(Date now) const;
    /// Puts `value` under `key`, in place of what does not decode if need be.
    template <class Value>
    std::vector<DefaultsChange> replacing(const std::string& key, const Value& value, bool isReadable) const;

    DefaultsDomains& defaults_;
    const SettingsStore& settings_;
};

}  // namespace pedvar
