#include "health/settings_store.h"

#include "linux/system/nlohmann_json_parser.h"
#include "support/fake_defaults.h"
#include "support/fake_locale.h"
#include "support/fake_zone.h"

#include <doctest/doctest.h>

#include <functional>
#include <limits>
#include <utility>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

constexpr Day today{2024y / May / 3};

struct Settings {
    std::vector<std::string> trace;
    FakeDefaults defaults{trace};
    FakeZone zone{0min};
    FakeLocale locale{zone};
    NlohmannJsonParser json;
    SettingsStore settings{defaults, json, locale};

    void share(std::string key, DefaultsValue value) {
        defaults.sharedDomain.values.insert_or_assign(std::move(key), std::move(value));
    }
    DefaultsValue shared(std::string_view key) const { return defaults.sharedDomain.values.at(std::string(key)); }
};

}  // namespace

TEST_CASE_FIXTURE(Settings, "the goal is the shared one when it is valid, else 10000") {
    CHECK(settings.dailyGoal() == 10'000);
    for (const std::int64_t invalid :
         {std::int64_t{0}, std::int64_t{-5}, std::int64_t{1'000'001}, std::numeric_limits<std::int64_t>::max()}) {
        share("dailyGoal", invalid);
        CHECK(settings.dailyGoal() == 10'000);
    }
    share("dailyGoal", std::int64_t{8000});
    CHECK(settings.dailyGoal() == 8000);
    defaults.isSharedOpen = false;
    CHECK(settings.dailyGoal() == 10'000);
}

TEST_CASE_FIXTURE(Settings, "a goal is set everywhere in one transaction and counts from its day") {
    REQUIRE(settings.rememberFirstGoal(today - days(1)));
    REQUIRE(settings.setDailyGoal(8000, today));
    CHECK(defaults.transactions == 2);
    CHECK(settings.personalMetrics().dailyStepGoal == 8000);
    CHECK(settings.personalMetrics().weeklyStepGoal == 56'000);
    CHECK(settings.dailyGoal() == 8000);
    CHECK(!defaults.sharedDomain.values.contains("dailyStepGoal"));
    CHECK(settings.goalHistory().goalOn(today) == 8000);
    CHECK(settings.goalHistory().goalOn(today - days(1)) == 10'000);
    CHECK(settings.goalHistory().goalOn(today - days(100)) == 10'000);

    share("dailyStepGoal", std::int64_t{8000});
    REQUIRE(settings.setDailyGoal(9000, today));
    REQUIRE(settings.rememberFirstGoal(today));
    CHECK(shared("dailyStepGoal") == DefaultsValue(std::int64_t{9000}));
    CHECK(defaults.document("dailyGoalHistory") ==
          R"([{"day":"2024-05-02","goal":10000},{"day":"2024-05-03","goal":9000}])");
}

TEST_CASE_FIXTURE(Settings, "stored goals that are none are passed over") {
    defaults.setDocument("dailyGoalHistory", R"([{"day":"2024-05-01","goal":0},{"day":"2024-02-30","goal":5},7,
        {"day":"2024-05-02","goal":9223372036854775807},{"day":"2024-05-03","goal":700}])");
    CHECK(settings.goalHistory().changes() == std::map<Day, std::int64_t>{{today, 700}});
    defaults.setDocument("personalMetrics", R"({"dailyStepGoal":9223372036854775807,"age":44})");
    CHECK(settings.personalMetrics().dailyStepGoal == 10'000);
    CHECK(settings.personalMetrics().age == 44);
}

TEST_CASE_FIXTURE(Settings, "shared values are adopted, and absent keys are no news") {
    REQUIRE(settings.setDailyGoal(9000, today - days(9)));
    auto metrics = settings.personalMetrics();
    metrics.targetWeight = 70;
    REQUIRE(settings.changePersonalMetrics([&](PersonalMetrics& stored) { stored = metrics; }));
    const auto before = defaults.standardDomain.values;

    REQUIRE(settings.adoptSharedValues(today));
    for (const std::int64_t invalid :
         {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()}) {
        share("dailyStepGoal", invalid);
        REQUIRE(settings.adoptSharedValues(today));
    }
    share("targetWeight", std::numeric_limits<double>::quiet_NaN());
    share("stepColor", std::string("mauve"));
    REQUIRE(settings.adoptSharedValues(today));
    CHECK(defaults.standardDomain.values == before);

    share("dailyStepGoal", std::int64_t{8000});
    share("targetWeight", 65.5);
    share("distanceUnit", std::string("mi"));
    share("stepColor", std::string("teal"));
    REQUIRE(settings.adoptSharedValues(today));
    CHECK(settings.personalMetrics().dailyStepGoal == 8000);
    CHECK(settings.personalMetrics().weeklyStepGoal == 56'000);
    CHECK(settings.personalMetrics().targetWeight == 65.5);
    CHECK(settings.preferences().distanceUnit == DistanceUnit::miles);
    CHECK(settings.preferences().preferredStepColor == StepColor::teal);
    CHECK(settings.goalHistory().goalOn(today - days(1)) == 9000);

    const int transactions = defaults.transactions;
    REQUIRE(settings.adoptSharedValues(today));
    CHECK(defaults.transactions == transactions);

    share("targetWeight", 0.0);
    share("distanceUnit", std::string("furlongs"));
    REQUIRE(settings.adoptSharedValues(today));
    CHECK(!settings.personalMetrics().targetWeight);
    CHECK(settings.preferences().distanceUnit == DistanceUnit::kilometers);
}

TEST_CASE_FIXTURE(Settings, "what was shared before somebody chose anew is not adopted after it") {
    /// Where another process is first.
    struct Overtaken : FakeDefaults {
        using FakeDefaults::FakeDefaults;
        std::function<void()> somebodyElse;
        DefaultsResult update(const std::function<std::vector<DefaultsChange>()>& plan) override {
            if (somebodyElse) std::exchange(somebodyElse, {})();
            return FakeDefaults::update(plan);
        }
    };
    Overtaken overtaken(trace);
    SettingsStore slow(overtaken, json, locale), quick(overtaken, json, locale);
    overtaken.sharedDomain.values["dailyStepGoal"] = std::int64_t{9000};
    overtaken.somebodyElse = [&] { CHECK(quick.setDailyGoal(7000, today)); };
    REQUIRE(slow.adoptSharedValues(today));
    CHECK(slow.personalMetrics().dailyStepGoal == 7000);

    overtaken.sharedDomain.values["targetWeight"] = 75.0;
    overtaken.somebodyElse = [&] {
        CHECK(quick.changePersonalMetrics([](PersonalMetrics& metrics) { metrics.targetWeight = 72; }));
    };
    REQUIRE(slow.adoptSharedValues(today));
    CHECK(slow.personalMetrics().targetWeight == 72);
    overtaken.somebodyElse = [&] {
        CHECK(quick.changePersonalMetrics([](PersonalMetrics& metrics) { metrics.gender = Gender::other; }));
    };
    REQUIRE(slow.changePersonalMetrics([](PersonalMetrics& metrics) { metrics.age = 44; }));
    CHECK(slow.personalMetrics().gender == Gender::other);
}

TEST_CASE_FIXTURE(Settings, "a goal that one of the files has lost comes back from the other") {
    REQUIRE(settings.setDailyGoal(9000, today - days(9)));
    defaults.sharedDomain.values.clear();
    REQUIRE(settings.adoptSharedValues(today));
    CHECK(settings.dailyGoal() == 9000);
    defaults.standardDomain.values.clear();
    REQUIRE(settings.adoptSharedValues(today));
    CHECK(settings.personalMetrics().dailyStepGoal == 9000);
    CHECK(settings.goalHistory().goalOn(today - days(9)) == 9000);
}

TEST_CASE_FIXTURE(Settings, "changed preferences are mirrored, so that adoption does not undo them") {
    share("distanceUnit", std::string("km"));
    share("stepColor", std::string("green"));
    auto preferences = settings.preferences();
    preferences.distanceUnit = DistanceUnit::miles;
    preferences.preferredStepColor = StepColor::pink;
    preferences.appLanguage = AppLanguage::englishUK;
    REQUIRE(settings.changePreferences([&](UserPreferences& stored) { stored = preferences; }));
    CHECK(defaults.transactions == 1);
    CHECK(shared("appLanguage") == DefaultsValue(std::string("en-GB")));
    REQUIRE(settings.adoptSharedValues(today));
    CHECK(settings.preferences() == preferences);

    preferences.customStepColorRed = std::numeric_limits<double>::quiet_NaN();
    CHECK(!settings.changePreferences([&](UserPreferences& stored) { stored = preferences; }));
    CHECK(settings.preferences().customStepColorRed == 0.2);
}

TEST_CASE_FIXTURE(Settings, "without stored preferences the week starts as in the region") {
    locale.weekdayThatBegins = 1;
    locale.system = MeasurementSystem::unitedStates;
    CHECK(settings.firstWeekday() == 1);
    CHECK(settings.languageCode() == "de");
    CHECK(settings.preferences().weekStartsOn == WeekStart::sunday);
    CHECK(settings.preferences().volumeUnit == VolumeUnit::fluidOunces);
    CHECK(settings.preferences().distanceUnit == DistanceUnit::kilometers);
    defaults.setDocument("userPreferences",
                         R"({"weekStartsOn":"saturday","theme":"plaid","autoPauseEnabled":true})");
    CHECK(settings.firstWeekday() == 7);
    CHECK(settings.preferences().theme == AppTheme::dark);
    CHECK(settings.preferences().autoPauseEnabled);
}

TEST_CASE_FIXTURE(Settings, "a document that does not decode gives the defaults and is kept beside the next one") {
    for (const char* damaged : {"{\"weekStartsOn\":\"satur", "[]", "[]", ""}) {
        defaults.setDocument("userPreferences", damaged);
        CHECK(settings.preferences() == defaultPreferences(2, false));
        REQUIRE(settings.savePreferences(settings.preferences()));
    }
    CHECK(defaults.document("userPreferences.unreadable") == "{\"weekStartsOn\":\"satur");
    CHECK(defaults.document("userPreferences.unreadable2") == "[]");
    CHECK(defaults.document("userPreferences.unreadable3").empty());
    CHECK(defaults.standardDomain.value("userPreferences.unreadable3"));
    CHECK(!defaults.standardDomain.value("userPreferences.unreadable4"));
    CHECK(defaults.document("userPreferences").starts_with(R"({"distanceUnit":"kilometers","weightUnit")"));
}

TEST_CASE_FIXTURE(Settings, "age and gender of an import give way to what was typed in") {
    REQUIRE(settings.adoptCharacteristics(40, std::nullopt));
    CHECK(settings.personalMetrics().age == 40);
    CHECK(settings.personalMetrics().ageSource == DataSource::healthKit);
    CHECK(!settings.personalMetrics().gender);
    REQUIRE(settings.adoptCharacteristics(41, Gender::female));
    CHECK(settings.personalMetrics().age == 41);

    auto metrics = settings.personalMetrics();
    metrics.age = 39;
    metrics.ageSource = DataSource::manual;
    REQUIRE(settings.changePersonalMetrics([&](PersonalMetrics& stored) { stored = metrics; }));
    REQUIRE(settings.adoptCharacteristics(42, Gender::other));
    CHECK(settings.personalMetrics().age == 39);
    CHECK(settings.personalMetrics().gender == Gender::other);
}
