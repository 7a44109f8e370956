/// What a widget shows.
#pragma once

#include "core/calendar.h"
#include "core/json_value.h"
#include "core/preferences.h"
#include "platform/json_parser.h"
#include "platform/user_defaults.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace pedvar {

/// Today as the shared suite tells it. Totals of another day than `today` are 0; what the suite lacks is 0 or its
/// default.
struct WidgetSnapshot {
    std::int64_t steps = 0;
    std::int64_t goal = 10'000;
    double meters = 0;
    double kilocalories = 0;
    std::int64_t activeMinutes = 0;
    std::int64_t floors = 0;
    std::int64_t currentStreak = 0;

    struct Water {
        double milliliters = 0;
        double goalMilliliters = 1;
        VolumeUnit unit = VolumeUnit::milliliters;
    };
    std::optional<Water> water;  // where a snapshot of water was ever written
};

/// Reads a suite as the widgets do.
class WidgetReading {
public:
    WidgetReading(const UserDefaults& suite, const Calendar& calendar, Day today)
        : suite_(suite), calendar_(calendar), today_(today) {}

    WidgetSnapshot snapshot() const;

    /// The preferences that are in the suite, the rest by `defaults`.
    UserPreferences preferences(const JsonParser& json, const UserPreferences& defaults) const;

    /// All values of steps and water under their keys, documents as what they say, dates as `dateText` writes
    /// them, what is absent or unreadable as null. Totals of another day are 0, and the seven days end today.
    JsonObject document(const JsonParser& json, const std::function<std::string(Date)>& dateText) const;

private:
    /// How many days ago the totals were written whose moment is under `key`; none for a moment to come, or
    /// without one.
    std::optional<std::int64_t> age(std::string_view key) const;
    bool isOfToday(std::string_view key) const { return age(key) == 0; }

    const UserDefaults& suite_;
    const Calendar& calendar_;
    Day today_;
};

}  // namespace pedvar
