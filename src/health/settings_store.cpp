#include "health/settings_store.h"

#include "core/check.h"
#include "core/record.h"

#include <cmath>
#include <type_traits>
#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view preferencesKey = "userPreferences";
constexpr std::string_view metricsKey = "personalMetrics";
constexpr std::string_view goalHistoryKey = "dailyGoalHistory";
constexpr std::string_view sharedGoalKey = "dailyGoal";
constexpr std::string_view sharedStepGoalKey =
    "dailyStepGoal";                                          // of widgets and watch; ours to change, not to make
constexpr std::string_view sharedWeightKey = "targetWeight";  // likewise; 0 or less for none
constexpr std::string_view sharedUnitKey = "distanceUnit";
constexpr std::string_view sharedColorKey = "stepColor";
constexpr std::string_view sharedLanguageKey = "appLanguage";

struct StoredGoal {
    std::string day;  // YYYY-MM-DD
    std::int64_t goal = 0;
    using Fields = FieldList<&StoredGoal::day, &StoredGoal::goal>;
};
static_assert(isComplete<StoredGoal>);

/// The document under `key` when it is a `Root`, object or array.
template <class Root>
std::optional<JsonValue> storedDocument(const UserDefaults& store, const JsonParser& json, std::string_view key) {
    const auto data = store.data(key);
    if (!data) return std::nullopt;
    auto document = json.parse(data->bytes);
    if (!document || !document->template as<Root>()) return std::nullopt;
    return std::move(*document);
}

/// What one operation writes.
class Changes {
public:
    Changes(DefaultsDomains& defaults, const JsonParser& json) : defaults_(defaults), json_(json) {}

    /// Replaces a document of the standard store.
    template <class Value>
    void replace(std::string_view key, const Value& value) {
        using Root = std::conditional_t<Record<Value>, JsonObject, JsonArray>;
        auto document = encodeJson(value);
        if (!document) {
            failure_ = "a value of " + std::string(key) + " is not a number";
            return;
        }
        const UserDefaults& store = defaults_.standard();
        if (!storedDocument<Root>(store, json_, key)) {
            if (auto kept = setAside(store, key)) changes_.push_back(std::move(*kept));
        }
        changes_.push_back({&store, std::string(key), Data{std::move(*document)}});
    }

    /// Sets a value of the shared store, if that is open.
    void share(std::string_view key, DefaultsValue value) {
        if (const UserDefaults* shared = defaults_.shared()) {
            changes_.push_back({shared, std::string(key), std::move(value)});
        }
    }

    const std::vector<DefaultsChange>& list() const { return changes_; }
    /// Why nothing of it can be written.
    const std::optional<std::string>& failure() const { return failure_; }

private:
    DefaultsDomains& defaults_;
    const JsonParser& json_;
    std::vector<DefaultsChange> changes_;
    std::optional<std::string> failure_;
};

/// Lets `plan` read and decide what to write while nobody else writes; writes all of it or nothing.
template <class Plan>
DefaultsResult change(DefaultsDomains& defaults, const JsonParser& json, Plan plan) {
    std::optional<std::string> failure;
    const auto changed = defaults.update([&] {
        Changes changes(defaults, json);
        plan(changes);
        failure = changes.failure();
        return failure ? std::vector<DefaultsChange>() : changes.list();
    });
    return failure ? std::unexpected(DefaultsError{*failure}) : changed;
}

std::vector<StoredGoal> storedGoals(const GoalHistory& history) {
    std::vector<StoredGoal> goals;
    for (const auto& [day, goal] : history.changes()) goals.push_back({isoText(day), goal});
    return goals;
}

/// The target weight that a shared value stands for.
std::optional<double> targetIn(double shared) {
    return shared > 0 ? std::optional(shared) : std::nullopt;
}

/// Replaces the metrics, and the target weight of widgets and watch where they keep one, so that adopting it
/// changes nothing.
void replaceMetrics(Changes& changes, const PersonalMetrics& metrics, const UserDefaults* shared) {
    changes.replace(metricsKey, metrics);
    const auto known = shared ? shared->real(sharedWeightKey) : std::nullopt;
    if (known && targetIn(*known) != metrics.targetWeight) {
        changes.share(sharedWeightKey, metrics.targetWeight.value_or(0));
    }
}

std::string languageCodeOf(const UserPreferences& preferences, const Locale& locale) {
    const std::string_view code = names(preferences.appLanguage).code;
    return code.empty() ? locale.languageCode() : std::string(code);
}

}  // namespace

std::string_view sharedName(DistanceUnit unit) {
    return unit == DistanceUnit::miles ? "mi" : "km";
}

UserPreferences SettingsStore::preferences() const {
    const auto defaults =
        defaultPreferences(locale_.firstWeekday(), locale_.measurementSystem() == MeasurementSystem::unitedStates);
    const auto document = storedDocument<JsonObject>(defaults_.standard(), json_, preferencesKey);
    return document ? decodeLeniently(*document, defaults).value_or(defaults) : defaults;
}

DefaultsResult SettingsStore::savePreferences(const UserPreferences& preferences) {
    return change(defaults_, json_, [&](Changes& changes) { changes.replace(preferencesKey, preferences); });
}

DefaultsResult SettingsStore::changePreferences(const std::function<void(UserPreferences&)>& edit) {
    return change(defaults_, json_, [&](Changes& changes) {
        UserPreferences edited = preferences();
        edit(edited);
        changes.replace(preferencesKey, edited);
        changes.share(sharedUnitKey, std::string(sharedName(edited.distanceUnit)));
        changes.share(sharedColorKey, std::string(caseName(edited.preferredStepColor)));
        changes.share(sharedLanguageKey, languageCodeOf(edited, locale_));
        if (auto document = encodeJson(edited)) changes.share(preferencesKey, Data{std::move(*document)});
    });
}

int SettingsStore::firstWeekday() const {
    return weekday(preferences().weekStartsOn);  // by default the region's own
}

Calendar SettingsStore::calendar() const {
    return Calendar(locale_.zone(), firstWeekday());
}

std::string SettingsStore::languageCode() const {
    return languageCodeOf(preferences(), locale_);
}

PersonalMetrics SettingsStore::personalMetrics() const {
    const auto document = storedDocument<JsonObject>(defaults_.standard(), json_, metricsKey);
    PersonalMetrics metrics;
    if (document) metrics = decodeLeniently(*document, metrics).value_or(metrics);
    if (metrics.age && !isValidAge(*metrics.age)) metrics.age.reset();
    if (!isValidDailyGoal(metrics.dailyStepGoal)) {
        metrics.dailyStepGoal = defaultDailyGoal;
        metrics.weeklyStepGoal.reset();
    }
    return metrics;
}

DefaultsResult SettingsStore::changePersonalMetrics(const std::function<void(PersonalMetrics&)>& edit) {
    PersonalMetrics edited = personalMetrics();
    edit(edited);
    if (edited == personalMetrics()) return {};
    return change(defaults_, json_, [&](Changes& changes) {
        edited = personalMetrics();
        edit(edited);
        replaceMetrics(changes, edited, defaults_.shared());
    });
}

DefaultsResult SettingsStore::adoptCharacteristics(std::optional<std::int64_t> age, std::optional<Gender> gender) {
    const auto adopt = [](auto& field, DataSource& source, const auto& known) {
        const bool isTypedIn = field && source == DataSource::manual;
        if (!known || isTypedIn) return;
        field = known;
        source = DataSource::healthKit;
    };
    return changePersonalMetrics([&](PersonalMetrics& metrics) {
        adopt(metrics.age, metrics.ageSource, age);
        adopt(metrics.gender, metrics.genderSource, gender);
    });
}

std::int64_t SettingsStore::dailyGoal() const {
    const UserDefaults* shared = defaults_.shared();
    const auto goal = shared ? shared->integer(sharedGoalKey) : std::nullopt;
    return goal && isValidDailyGoal(*goal) ? *goal : defaultDailyGoal;
}

GoalHistory SettingsStore::goalHistory() const {
    std::vector<GoalChange> changes;
    if (const auto document = storedDocument<JsonArray>(defaults_.standard(), json_, goalHistoryKey)) {
        for (const JsonValue& element : *document->as<JsonArray>()) {
            const auto stored = decodeJson<StoredGoal>(element);
            const auto day = stored ? parseDay(stored->day) : std::nullopt;
            if (day && isValidDailyGoal(stored->goal)) changes.push_back({*day, stored->goal});
        }
    }
    return GoalHistory(changes, dailyGoal());
}

DefaultsResult SettingsStore::setDailyGoal(std::int64_t goal, Day today) {
    check(isValidDailyGoal(goal), "a goal that is none was to be stored");
    return changeDailyGoal([goal] { return std::optional(goal); }, today);
}

DefaultsResult SettingsStore::changeDailyGoal(const std::function<std::optional<std::int64_t>()>& wanted,
                                              Day today) {
    if (!wanted()) return {};
    return change(defaults_, json_, [&](Changes& changes) {
        const auto goal = wanted();
        if (!goal) return;
        PersonalMetrics metrics = personalMetrics();
        metrics.dailyStepGoal = *goal;
        metrics.weeklyStepGoal = 7 * *goal;
        GoalHistory goals = goalHistory();
        goals.add({today, *goal});
        changes.replace(metricsKey, metrics);
        changes.replace(goalHistoryKey, storedGoals(goals));
        changes.share(sharedGoalKey, *goal);
        const UserDefaults* shared = defaults_.shared();
        if (shared && shared->value(sharedStepGoalKey)) changes.share(sharedStepGoalKey, *goal);
    });
}

DefaultsResult SettingsStore::rememberFirstGoal(Day today) {
    if (!goalHistory().changes().empty()) return {};
    return change(defaults_, json_, [&](Changes& changes) {
        GoalHistory goals = goalHistory();
        if (!goals.changes().empty()) return;
        goals.add({today, dailyGoal()});
        changes.replace(goalHistoryKey, storedGoals(goals));
    });
}

DefaultsResult SettingsStore::adoptSharedValues(Day today) {
    const UserDefaults* shared = defaults_.shared();
    if (!shared) return {};
    if (auto result = changeDailyGoal([&] { return goalToAdopt(*shared); }, today); !result) return result;
    if (auto result = adoptTargetWeight(*shared); !result) return result;
    return adoptPreferences(*shared);
}

std::optional<std::int64_t> SettingsStore::goalToAdopt(const UserDefaults& shared) const {
    const auto validGoal = [&](std::string_view key) {
        const auto goal = shared.integer(key);
        return goal && isValidDailyGoal(*goal) ? goal : std::nullopt;
    };
    const std::int64_t own = personalMetrics().dailyStepGoal;
    const auto chosen = validGoal(sharedStepGoalKey);
    if (chosen && *chosen != own) return chosen;
    if (own == dailyGoal()) return std::nullopt;
    return validGoal(sharedGoalKey).value_or(own);
}

DefaultsResult SettingsStore::adoptTargetWeight(const UserDefaults& shared) {
    return changePersonalMetrics([&](PersonalMetrics& metrics) {
        const auto weight = shared.real(sharedWeightKey);
        if (weight && std::isfinite(*weight)) metrics.targetWeight = targetIn(*weight);
    });
}

DefaultsResult SettingsStore::adoptPreferences(const UserDefaults& shared) {
    const auto adopted = [&] {
        UserPreferences chosen = preferences();
        if (const auto unit = shared.text(sharedUnitKey)) {
            chosen.distanceUnit = *unit == "mi" ? DistanceUnit::miles : DistanceUnit::kilometers;
        }
        if (const auto name = shared.text(sharedColorKey)) {
            chosen.preferredStepColor = caseNamed<StepColor>(*name).value_or(chosen.preferredStepColor);
        }
        return chosen;
    };
    if (adopted() == preferences()) return {};
    return change(defaults_, json_, [&](Changes& changes) { changes.replace(preferencesKey, adopted()); });
}

}  // namespace pedvar
