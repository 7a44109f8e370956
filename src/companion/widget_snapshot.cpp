#include "companion/widget_snapshot.h"

#include "core/record.h"
#include "core/units.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <type_traits>
#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view stepsMoment = "lastUpdate";
constexpr std::string_view waterMoment = "hydrationCachedDay";

/// A key and, where it holds a total of a day, the key of the moment at which that was written.
struct SuiteKey {
    std::string_view name;
    std::string_view moment = {};
};
constexpr std::array<SuiteKey, 21> suiteKeys{{
    {"todaySteps", stepsMoment},
    {"todayDistance", stepsMoment},
    {"todayCalories", stepsMoment},
    {stepsMoment},
    {"todayActiveMinutes", stepsMoment},
    {"todayFloors", stepsMoment},
    {"dailyGoal"},
    {"distanceUnit"},
    {"stepColor"},
    {"currentStreak"},
    {"bestStreak"},
    {"weeklySteps"},
    {"userPreferences"},
    {"appLanguage"},
    {"hydrationTodayMilliliters", waterMoment},
    {"hydrationGoalMilliliters"},
    {waterMoment},
    {"hydrationVolumeUnit"},
    {"hydrationDefaultContainerID"},
    {"hydrationContainers"},
    {"hydrationLastAmountMilliliters"},
}};

/// The week moved on by `days`, with nothing walked since.
void moveOn(JsonArray& week, std::int64_t days) {
    const auto gone = static_cast<std::ptrdiff_t>(std::min<std::int64_t>(days, std::ssize(week)));
    week.erase(week.begin(), week.begin() + gone);
    week.insert(week.end(), static_cast<std::size_t>(gone), JsonValue{std::int64_t{0}});
}

}  // namespace

WidgetSnapshot WidgetReading::snapshot() const {
    WidgetSnapshot shown;
    if (isOfToday(stepsMoment)) {
        const double unit = suite_.text("distanceUnit") == "mi" ? metersPerMile : metersPerKilometer;
        shown.steps = suite_.integer("todaySteps").value_or(0);
        shown.meters = suite_.real("todayDistance").value_or(0) * unit;
        shown.kilocalories = suite_.real("todayCalories").value_or(0);
        shown.activeMinutes = suite_.integer("todayActiveMinutes").value_or(0);
        shown.floors = suite_.integer("todayFloors").value_or(0);
    }
    shown.goal = std::max<std::int64_t>(suite_.integer("dailyGoal").value_or(shown.goal), 1);
    shown.currentStreak = suite_.integer("currentStreak").value_or(0);
    if (const auto goal = suite_.real("hydrationGoalMilliliters")) {
        const double today = isOfToday(waterMoment) ? suite_.real("hydrationTodayMilliliters").value_or(0) : 0;
        const bool usesFluidOunces = suite_.text("hydrationVolumeUnit") == "floz";
        shown.water = WidgetSnapshot::Water{today, *goal,
                                            usesFluidOunces ? VolumeUnit::fluidOunces : VolumeUnit::milliliters};
    }
    return shown;
}

UserPreferences WidgetReading::preferences(const JsonParser& json, const UserPreferences& defaults) const {
    const auto stored = suite_.data("userPreferences");
    const auto document = stored ? json.parse(stored->bytes) : std::unexpected(std::string());
    UserPreferences found = document ? decodeLeniently(*document, defaults).value_or(defaults) : defaults;
    if (const auto unit = suite_.text("distanceUnit")) {
        found.distanceUnit = *unit == "mi" ? DistanceUnit::miles : DistanceUnit::kilometers;
    }
    return found;
}

JsonObject WidgetReading::document(const JsonParser& json,
                                   const std::function<std::string(Date)>& dateText) const {
    const auto shown = [&](const auto& value) -> JsonValue {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, Date>) {
            return {dateText(value)};
        } else if constexpr (std::is_same_v<Value, Data>) {
            return json.parse(value.bytes).value_or(JsonValue());
        } else {
            return {value};
        }
    };
    JsonObject result;
    for (const SuiteKey& key : suiteKeys) {
        const auto value = suite_.value(key.name);
        JsonValue entry = value ? std::visit(shown, *value) : JsonValue();
        if (!key.moment.empty() && !isOfToday(key.moment)) entry = {std::int64_t{0}};
        if (auto* const week = key.name == "weeklySteps" ? std::get_if<JsonArray>(&entry.value) : nullptr) {
            moveOn(*week, age(stepsMoment).value_or(std::ssize(*week)));
        }
        result.emplace_back(key.name, std::move(entry));
    }
    return result;
}

std::optional<std::int64_t> WidgetReading::age(std::string_view key) const {
    const auto moment = suite_.value(key);
    const Date* const date = moment ? std::get_if<Date>(&*moment) : nullptr;
    if (!date) return std::nullopt;
    const std::int64_t days = (today_ - calendar_.day(*date)).count();
    return days < 0 ? std::nullopt : std::optional(days);
}

}  // namespace pedvar
