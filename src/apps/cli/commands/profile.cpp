#include "apps/cli/application.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/companion.h"
#include "apps/cli/health.h"
#include "core/record.h"

#include <fmt/ranges.h>

namespace pedvar {
namespace {

template <class Field>
JsonValue jsonOf(const Field& field) {
    if constexpr (Enumeration<Field>) {
        return {std::string(caseName(field))};
    } else if constexpr (requires { *field; }) {
        return field ? jsonOf(*field) : JsonValue{};
    } else {
        return {field};
    }
}

JsonObject document(const PersonalMetrics& metrics) {
    JsonObject result;
    forEachField(metrics, [&](std::string_view name, const auto& field) {
        result.emplace_back(std::string(name), jsonOf(field));
    });
    return result;
}

/// Why `value` is none for a key, with those that are valid.
std::unexpected<CommandError> refused(std::string_view key, std::string_view value, const std::string& valid,
                                      const Texts& text) {
    return usageError(text("\"{}\" is no value of {}; valid: {}.", value, key, valid));
}

/// A field that "none" empties.
template <class T>
CommandResult<void> assign(std::optional<T>& field, std::string_view key, std::string_view value,
                           std::optional<T> parsed, const std::string& valid, const Texts& text) {
    if (value != "none" && !parsed) return refused(key, value, text("{}, none", valid), text);
    field = value == "none" ? std::nullopt : parsed;
    return {};
}

/// Sets what the person told of themselves. The goals are elsewhere.
CommandResult<void> assign(PersonalMetrics& metrics, std::string_view key, std::string_view value,
                           const Texts& text) {
    if (key == "age") {
        auto age = wholeNumberNamed(value);
        if (age && !isValidAge(*age)) age.reset();
        metrics.ageSource = DataSource::manual;
        return assign(metrics.age, key, value, age, text("a number of years from 0 to {}", highestAge), text);
    }
    if (key == "gender") {
        metrics.genderSource = DataSource::manual;
        return assign(metrics.gender, key, value, caseNamed<Gender>(value),
                      fmt::format("{}", fmt::join(caseNames<Gender>, ", ")), text);
    }
    if (key == "targetWeight") {
        auto weight = numberNamed(value);
        if (weight && !isValidWeight(*weight)) weight.reset();
        return assign(metrics.targetWeight, key, value, weight,
                      text("a number of kilograms above 0, up to {}", highestWeight), text);
    }
    const bool isSource = key == "ageSource" || key == "genderSource";
    if (isSource) return usageError(text("{} follows from who told last; it cannot be set.", key));
    if (key == "weeklyStepGoal") {
        return usageError(text("weeklyStepGoal is seven times the daily goal; set dailyStepGoal."));
    }
    return usageError(text("There is no \"{}\" in the profile; `pedvar profile` lists what is.", key));
}

CommandResult<void> setGoal(std::string_view value, Application& application) {
    const auto goal = wholeNumberNamed(value);
    if (!goal || !isValidDailyGoal(*goal)) {
        const std::string valid = application.text()("a number of steps from 1 to {}",
                                                     application.screen().figures.number(highestDailyGoal));
        return refused("dailyStepGoal", value, valid, application.text());
    }
    const auto companion = application.companion();
    if (!companion) return std::unexpected(companion.error());
    return commandResult((*companion)->preferencesSync.setDailyGoal(*goal, application.today()));
}

CommandResult<void> change(std::string_view key, std::string_view value, Application& application) {
    if (key == "dailyStepGoal") {
        const auto set = setGoal(value, application);
        return set ? application.refresh() : set;
    }
    PersonalMetrics trial = application.settings().personalMetrics();
    if (const auto assigned = assign(trial, key, value, application.text()); !assigned) return assigned;

    // What widgets and watch chose meanwhile is taken over before it is written over.
    const auto adopted = commandResult(application.settings().adoptSharedValues(application.today()));
    if (!adopted) return adopted;
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    const auto edit = [&](PersonalMetrics& metrics) {
        static_cast<void>(assign(metrics, key, value, application.text()));  // has succeeded above
    };
    const auto saved = commandResult((*health)->manager.body().changePersonalMetrics(edit));
    return saved ? application.refresh() : saved;
}

std::string shown(std::string_view key, const PersonalMetrics& metrics, const Screen& screen) {
    const auto orNone = [&](const auto& field, auto text) { return field ? text(*field) : screen.text("none"); };
    if (key == "age") return orNone(metrics.age, [](std::int64_t age) { return std::to_string(age); });
    if (key == "gender") {
        return orNone(metrics.gender, [](Gender gender) { return std::string(caseName(gender)); });
    }
    if (key == "targetWeight") {
        return orNone(metrics.targetWeight, [&](double weight) { return screen.figures.weight(weight); });
    }
    if (key == "dailyStepGoal") return screen.figures.number(metrics.dailyStepGoal);
    if (key == "weeklyStepGoal") {
        return orNone(metrics.weeklyStepGoal, [&](std::int64_t goal) { return screen.figures.number(goal); });
    }
    return std::string(caseName(key == "ageSource" ? metrics.ageSource : metrics.genderSource));
}

}  // namespace

CommandResult<Report> run(const ProfileRequest& request, Application& application) {
    if (request.key && request.value) {
        const auto changed = change(*request.key, *request.value, application);
        if (!changed) return std::unexpected(changed.error());
    }
    const PersonalMetrics metrics = application.settings().personalMetrics();
    const Screen screen = application.screen();
    JsonObject whole = document(metrics);
    std::vector<std::pair<std::string, std::string>> lines;
    for (const auto& [key, value] : whole) {
        if (request.key && *request.key != key) continue;
        if (request.key && application.wantsJson()) return Report{JsonObject{{"key", {key}}, {"value", value}}};
        lines.emplace_back(key, shown(key, metrics, screen));
    }
    if (lines.empty()) {
        return usageError(
            screen.text("There is no \"{}\" in the profile; `pedvar profile` lists what is.", *request.key));
    }
    if (application.wantsJson()) return Report{std::move(whole)};
    return Report{labelled(lines)};
}

}  // namespace pedvar
