/// The stored settings and drinks.
#pragma once

#include "core/date.h"
#include "health/settings_store.h"
#include "hydration/hydration_settings.h"
#include "platform/user_defaults.h"

#include <expected>
#include <functional>
#include <optional>
#include <vector>

namespace pedvar {

/// Something that was drunk.
struct Drink {
    UUID id;
    Date date;
    double milliliters = 0;
    DrinkType drinkType = DrinkType::water;
    double waterMilliliters = 0;
    bool isInHealth = false;  // the health store has its water, as a sample of the same moment

    using Fields = FieldList<&Drink::id, &Drink::date, &Drink::milliliters, &Drink::drinkType,
                             &Drink::waterMilliliters, &Drink::isInHealth>;
    bool operator==(const Drink&) const = default;
};
static_assert(isComplete<Drink>);

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
    /// Removes the drink; that it is not there is no error.
    DefaultsResult remove(const Drink& drink);
    /// Takes out the drink of the latest moment of this month and the one before; none when there is none.
    std::expected<std::optional<Drink>, DefaultsError> takeLast(Date now);

private:
    using Month = std::chrono::year_month;

    std::optional<HydrationSettings> storedSettings() const;
    std::optional<std::vector<Drink>> storedDrinks(Month month) const;
    Month monthOf(Date date) const;
    /// Puts `value` under `key`, in place of what does not decode if need be.
    template <class Value>
    std::vector<DefaultsChange> replacing(const std::string& key, const Value& value, bool isReadable) const;

    DefaultsDomains& defaults_;
    const SettingsStore& settings_;
};

}  // namespace pedvar
