#include "companion/widget_snapshot.h"
#include "core/units.h"
#include "linux/system/nlohmann_json_parser.h"
#include "support/fake_zone.h"

#include <doctest/doctest.h>

namespace pedvar {
namespace {

constexpr Day today = std::chrono::local_days(std::chrono::year(2024) / 5 / 1);

struct Suite {
    FakeZone zone{std::chrono::minutes(120)};
    Calendar calendar{zone, 2};
    DefaultsSnapshot::Values values{
        {"todaySteps", std::int64_t{8432}},
        {"todayDistance", 4.0},
        {"todayCalories", 312.5},
        {"todayActiveMinutes", std::int64_t{48}},
        {"todayFloors", std::int64_t{12}},
        {"lastUpdate", calendar.start(today) + Seconds(3600)},
        {"dailyGoal", std::int64_t{9000}},
        {"distanceUnit", "mi"},
        {"currentStreak", std::int64_t{3}},
        {"weeklySteps", Data{"[1,2,3,4,5,6,7]"}},
        {"userPreferences", Data{"{oops"}},
        {"hydrationTodayMilliliters", 750.0},
        {"hydrationGoalMilliliters", 2000.},
        {"hydrationCachedDay", calendar.start(today)},
    };

    WidgetSnapshot on(Day day) const { return WidgetReading(DefaultsSnapshot(values), calendar, day).snapshot(); }
    JsonObject document(Day day) const {
        return WidgetReading(DefaultsSnapshot(values), calendar, day)
            .document(NlohmannJsonParser(), [](Date date) {
                return std::to_string(static_cast<std::int64_t>(date.time_since_epoch().count()));
            });
    }
};

std::string member(const JsonObject& document, std::string_view name) {
    return jsonText(*JsonValue{document}.member(name));
}

TEST_CASE_FIXTURE(Suite, "a widget shows the totals of today, and 0 for those of another day") {
    const WidgetSnapshot shown = on(today);
    CHECK(shown.steps == 8432);
    CHECK(shown.meters == doctest::Approx(4 * metersPerMile));
    CHECK(shown.water->milliliters == 750);
    for (const Day other : {today + std::chrono::days(1), today - std::chrono::days(1)}) {
        const WidgetSnapshot empty = on(other);
        CHECK((empty.steps == 0 && empty.meters == 0 && empty.kilocalories == 0));
        CHECK((empty.activeMinutes == 0 && empty.floors == 0 && empty.water->milliliters == 0));
        CHECK((empty.goal == 9000 && empty.currentStreak == 3));
    }
    values = {};
    CHECK((on(today).steps == 0 && on(today).goal == 10'000 && !on(today).water));
}

TEST_CASE_FIXTURE(Suite, "the document has each key, decoded, and its seven days end today") {
    const JsonObject whole = document(today);
    CHECK(whole.size() == 21);
    CHECK(member(whole, "todayCalories") == "312.5");
    CHECK(member(whole, "weeklySteps") == "[1,2,3,4,5,6,7]");
    CHECK(member(whole, "userPreferences") == "null");
    CHECK(member(whole, "appLanguage") == "null");
    CHECK(member(document(today + std::chrono::days(2)), "weeklySteps") == "[3,4,5,6,7,0,0]");
    CHECK(member(document(today + std::chrono::days(900)), "weeklySteps") == "[0,0,0,0,0,0,0]");
    CHECK(member(document(today + std::chrono::days(2)), "hydrationTodayMilliliters") == "0");
}

}  // namespace
}  // namespace pedvar
