/// What the person has chosen, as it is stored.
#pragma once

#include "core/calendar.h"
#include "core/personal_metrics.h"
#include "core/preferences.h"
#include "health/goal_history.h"
#include "platform/json_parser.h"
#include "platform/locale.h"
#include "platform/user_defaults.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// "km" or "mi", as the shared store names the units of distance.
std::string_view sharedName(DistanceUnit unit);

/// Loads and saves preferences, personal metrics and the goal. Every write is one transaction over all the places
/// that hold the value, and what it depends on is read inside of it: two processes that change something at once
/// undo nothing of each other's. A stored document that does not decode counts as absent; its bytes are kept under
/// the key with ".unreadable" behind it when something else is saved.
class SettingsStore {
public:
    SettingsStore(DefaultsDomains& defaults, const JsonParser& json, const Locale& locale)
        : defaults_(defaults), json_(json), locale_(locale) {}

    /// A member that is missing or cannot be read takes its default, the rest is kept.
    UserPreferences preferences() const;
    /// Replaces the stored preferences.
    DefaultsResult savePreferences(const UserPreferences& preferences);
    /// Lets `edit` change them, with the values that widgets and watch read beside them, so that adopting their
    /// values changes nothing.
    DefaultsResult changePreferences(const std::function<void(UserPreferences&)>& edit);

    /// 1 = Sunday ... 7 = Saturday; the region's own without stored preferences.
    int firstWeekday() const;
    Calendar calendar() const;
    /// What a document of ours says; none when it does not decode.
    template <class Value>
    std::optional<Value> decode(std::string_view text) const {
        const auto document = json_.parse(text);
        return document ? decodeJson<Value>(*document) : std::nullopt;
    }

    /// The code of the language in effect ("de").
    std::string languageCode() const;

    PersonalMetrics personalMetrics() const;
    /// Lets `edit` change them; it may be called twice. Also tells widgets and watch of the target weight, where
    /// they keep one.
    DefaultsResult changePersonalMetrics(const std::function<void(PersonalMetrics&)>& edit);
    /// Fills in what the health store knows. What the person typed in stays.
    DefaultsResult adoptCharacteristics(std::optional<std::int64_t> age, std::optional<Gender> gender);

    /// The daily goal in steps; 10,000 when none is stored, the shared store is closed, or the value is no valid
    /// goal.
    std::int64_t dailyGoal() const;
    GoalHistory goalHistory() const;
    /// Sets the goal from `today` on, everywhere at once. `goal` is valid.
    DefaultsResult setDailyGoal(std::int64_t goal, Day today);
    /// Remembers the goal of `today` if no goal is remembered yet, so that a later change leaves today its goal.
    DefaultsResult rememberFirstGoal(Day today);

    /// Takes over what widgets and watch have stored: goal, target weight, unit of distance and step colour. An
    /// absent key is no news.
    DefaultsResult adoptSharedValues(Day today);

private:
    /// Sets the goal that `wanted` yields, if any; it is asked a second time while nobody else writes.
    DefaultsResult changeDailyGoal(const std::function<std::optional<std::int64_t>()>& wanted, Day today);
    /// What widgets and watch chose. Where one of the files with the goal was lost or put back, what the other one
    /// says holds; where both speak, the shared one. None where all agree.
    std::optional<std::int64_t> goalToAdopt(const UserDefaults& shared) const;
    DefaultsResult adoptTargetWeight(const UserDefaults& shared);
    DefaultsResult adoptPreferences(const UserDefaults& shared);

    DefaultsDomains& defaults_;
    const JsonParser& json_;
    const Locale& locale_;
};

}  // namespace pedvar
