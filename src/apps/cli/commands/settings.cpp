#include "apps/cli/application.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/companion.h"
#include "apps/cli/water.h"
#include "core/record.h"

#include <fmt/ranges.h>

#include <filesystem>
#include <system_error>

namespace pedvar {
namespace {

/// Those of the hydration settings that are no containers.
struct WaterSettings {
    std::int64_t waterGoalMilliliters = 0;
    bool waterGoalByWeight = false;
    bool waterInHealth = true;
    using Fields = FieldList<&WaterSettings::waterGoalMilliliters, &WaterSettings::waterGoalByWeight,
                             &WaterSettings::waterInHealth>;
};
static_assert(isComplete<WaterSettings>);

WaterSettings waterSettings(const HydrationSettings& settings) {
    return {static_cast<std::int64_t>(settings.goalMilliliters), settings.isGoalByWeight, settings.savesToHealth};
}

struct Settings {
    UserPreferences preferences;
    LinuxSettings linuxSettings;
    WaterSettings waterSettings;
};

constexpr std::string_view noText = "none";  // how an empty text is typed and shown

/// Fields that are shares hold doubles from 0 to 1, whole numbers are goals of water.
template <class Field>
std::optional<Field> valueNamed(std::string_view name) {
    if constexpr (Enumeration<Field>) {
        return caseNamed<Field>(name);
    } else if constexpr (std::same_as<Field, bool>) {
        if (name == "true") return true;
        if (name == "false") return false;
        return std::nullopt;
    } else if constexpr (std::same_as<Field, FolderPath>) {
        const auto folder = Field::fromText(name == noText ? "" : name);
        std::error_code unknown;
        const auto status = std::filesystem::status(folder ? folder->text() : "", unknown);
        const bool isSomethingElse = std::filesystem::exists(status) && !std::filesystem::is_directory(status);
        return isSomethingElse ? std::nullopt : folder;
    } else if constexpr (WrittenAsText<Field>) {
        return Field::fromText(name == noText ? "" : name);
    } else if constexpr (std::same_as<Field, std::int64_t>) {
        const auto number = wholeNumberNamed(name);
        return number && isWaterGoal(static_cast<double>(*number)) ? number : std::nullopt;
    } else {
        static_assert(std::same_as<Field, double>);
        const auto number = numberNamed(name);
        return number && 0 <= *number && *number <= 1 ? number : std::nullopt;
    }
}

template <class Field>
std::string validValues(const Texts& text) {
    if constexpr (Enumeration<Field>) {
        return fmt::format("{}", fmt::join(caseNames<Field>, ", "));
    } else if constexpr (std::same_as<Field, bool>) {
        return "true, false";
    } else if constexpr (std::same_as<Field, WebAddress>) {
        return text("an address that begins with https:// or http://, none");
    } else if constexpr (std::same_as<Field, FolderPath>) {
        return text("the absolute path of a folder, none");
    } else if constexpr (std::same_as<Field, std::int64_t>) {
        return text("a whole number of millilitres from {} to {}", lowestWaterGoal, highestWaterGoal);
    } else {
        return text("a number from 0 to 1");
    }
}

template <class Field>
JsonValue jsonOf(const Field& field) {
    if constexpr (Enumeration<Field>) {
        return {std::string(caseName(field))};
    } else if constexpr (WrittenAsText<Field>) {
        return {std::string(field.text())};
    } else {
        return {field};
    }
}

std::string shown(const JsonValue& value) {
    const auto* text = value.as<std::string>();
    if (!text) return jsonText(value);
    return text->empty() ? std::string(noText) : harmless(*text);
}

/// Sets the field of `record` that `key` names; false when there is none.
template <Record R>
CommandResult<bool> assign(R& record, std::string_view key, std::string_view value, const Texts& text) {
    CommandResult<bool> result = false;
    forEachField(record, [&]<class Field>(std::string_view name, Field& field) {
        if (name != key) return;
        if (const auto read = valueNamed<Field>(value)) {
            field = *read;
            result = true;
        } else {
            result =
                usageError(text("\"{}\" is no value of {}; valid: {}.", value, key, validValues<Field>(text)));
        }
    });
    return result;
}

template <Record R>
JsonObject documentOf(const R& record) {
    JsonObject result;
    forEachField(record, [&](std::string_view name, const auto& field) {
        result.emplace_back(std::string(name), jsonOf(field));
    });
    return result;
}

JsonObject documentOf(const Settings& settings) {
    return {{"preferences", {documentOf(settings.preferences)}},
            {"linux", {documentOf(settings.linuxSettings)}},
            {"water", {documentOf(settings.waterSettings)}}};
}

std::optional<JsonValue> valueOf(std::string_view key, const Settings& settings) {
    for (const auto& [group, members] : documentOf(settings)) {
        if (const JsonValue* value = members.member(key)) return *value;
    }
    return std::nullopt;
}

std::unexpected<CommandError> unknownSetting(std::string_view key, const Texts& text) {
    return usageError(text("There is no setting \"{}\"; `pedvar settings` lists them.", key));
}

CommandResult<void> changeWater(std::string_view key, std::string_view value, Application& application) {
    const auto water = application.water();
    if (!water) return std::unexpected(water.error());
    return commandResult(application.loop().run((*water)->manager.changeSettings([&](HydrationSettings& stored) {
        WaterSettings edited = waterSettings(stored);
        static_cast<void>(assign(edited, key, value, application.text()));
        stored.goalMilliliters = static_cast<double>(edited.waterGoalMilliliters);
        stored.isGoalByWeight = edited.waterGoalByWeight;
        stored.savesToHealth = edited.waterInHealth;
        return true;
    })));
}

CommandResult<void> change(Settings settings, std::string_view key, std::string_view value,
                           Application& application) {
    const Texts& text = application.text();
    const auto isPreference = assign(settings.preferences, key, value, text);
    if (!isPreference) return std::unexpected(isPreference.error());
    if (*isPreference) {
        const auto companion = application.companion();
        if (!companion) return std::unexpected(companion.error());
        const auto saved =
            commandResult((*companion)->preferencesSync.changePreferences([&](UserPreferences& preferences) {
                static_cast<void>(assign(preferences, key, value, text));
            }));
        return saved ? application.refresh() : saved;
    }
    const auto isWaterSetting = assign(settings.waterSettings, key, value, text);
    if (!isWaterSetting) return std::unexpected(isWaterSetting.error());
    if (*isWaterSetting) return changeWater(key, value, application);
    const auto isLinuxSetting = assign(settings.linuxSettings, key, value, text);
    if (!isLinuxSetting) return std::unexpected(isLinuxSetting.error());
    if (!*isLinuxSetting) return unknownSetting(key, text);
    return commandResult(application.changeLinuxSettings(
        [&](LinuxSettings& stored) { static_cast<void>(assign(stored, key, value, text)); }));
}

Settings load(Application& application) {
    const HydrationDocuments water(application.defaults(), application.settings());
    return {application.settings().preferences(), application.linuxSettings(), waterSettings(water.settings())};
}

std::string view(const JsonObject& document) {
    std::vector<std::pair<std::string, std::string>> lines;
    for (const auto& [group, members] : document) {
        for (const auto& [key, value] : *members.as<JsonObject>()) lines.emplace_back(key, shown(value));
    }
    return labelled(lines);
}

}  // namespace

CommandResult<Report> run(const SettingsRequest& request, Application& application) {
    if (request.key && request.value) {
        // A change rewrites what widgets and watch read, so what they chose meanwhile is taken over before.
        const auto adopted = commandResult(application.settings().adoptSharedValues(application.today()));
        if (!adopted) return std::unexpected(adopted.error());
        const auto changed = change(load(application), *request.key, *request.value, application);
        if (!changed) return std::unexpected(changed.error());
    }
    const Settings settings = load(application);
    if (!request.key) {
        JsonObject document = documentOf(settings);
        if (application.wantsJson()) return Report{std::move(document)};
        return Report{view(document)};
    }
    const auto value = valueOf(*request.key, settings);
    if (!value) return unknownSetting(*request.key, application.text());
    if (application.wantsJson()) return Report{JsonObject{{"key", {*request.key}}, {"value", *value}}};
    return Report{labelled({{*request.key, shown(*value)}})};
}

}  // namespace pedvar
