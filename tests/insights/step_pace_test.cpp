#include "core/reflection.h"
#include "insights/step_pace_rule.h"
#include "linux/system/absent_services.h"
#include "support/fake_zone.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

constexpr year_month_day date = 2024y / May / 3;
constexpr Day today{date};

/// Days that differ only in the steps of their hour 12.
std::vector<PaceDay> daysWith(std::initializer_list<std::int64_t> counts) {
    std::vector<PaceDay> days;
    for (const std::int64_t steps : counts) days.emplace_back().hourly[12] = steps;
    return days;
}

StepPace paceAt(double hour, std::int64_t steps, std::initializer_list<std::int64_t> counts) {
    return StepPaceRule::judge(stepPaceBaseline(daysWith(counts)), {today, today, steps, hour});
}

}  // namespace

TEST_CASE("five days of 250 steps make a baseline, four of them and one of 249 do not") {
    CHECK(!stepPaceBaseline(daysWith({250, 250, 250, 250, 249})));
    CHECK(qualifyingDayCount(daysWith({250, 250, 250, 250, 249})) == 4);
    const auto baseline = stepPaceBaseline(daysWith({1400, 1000, 249, 1200, 2000, 1100, 1300}));
    REQUIRE(baseline);
    CHECK(baseline->dayCount == 6);
    CHECK(baseline->median[12] == 0);
    CHECK(baseline->lower[13] == 1125);
    CHECK(baseline->median[13] == 1250);
    CHECK(baseline->upper[24] == 1375);
}

TEST_CASE("a curve is straight between its hours and clamped at both ends") {
    const std::array<std::int64_t, 3> hourly{100, 50, 10};
    const CumulativeCurve curve = cumulativeCurve(hourly);
    CHECK(valueAt(curve, 1.5) == 125);
    CHECK(valueAt(curve, 25) == 160);
    CHECK(valueAt(curve, -1) == 0);
    CHECK(valueAt(curve, std::nan("")) == 0);
    CHECK(valueAt({}, 12) == 0);
}

TEST_CASE("of any days the lower curve is not above the median, nor that above the upper, and none falls") {
    std::mt19937 random(8);
    for (int round = 0; round < 200; ++round) {
        std::vector<PaceDay> days(5 + random() % 24);
        for (PaceDay& day : days) {
            for (std::int64_t& steps : day.hourly) steps = 20 + static_cast<std::int64_t>(random() % 3000);
        }
        const StepPaceBaseline baseline = stepPaceBaseline(days).value();
        REQUIRE(std::ranges::is_sorted(baseline.lower));
        REQUIRE(std::ranges::is_sorted(baseline.upper));
        for (int part = 0; part <= 80; ++part) {
            const double hour = part * 0.3;
            REQUIRE(valueAt(baseline.lower, hour) <= valueAt(baseline.median, hour));
            REQUIRE(valueAt(baseline.median, hour) <= valueAt(baseline.upper, hour));
        }
    }
}

TEST_CASE("the edges of the band are on pace, one step beyond is not, and a band below 120 judges nobody") {
    const std::initializer_list<std::int64_t> wide{1000, 1100, 1201, 1340, 1400};
    CHECK(paceAt(24, 1341, wide) == StepPace{StepPaceStatus::ahead, 1201});
    CHECK(paceAt(24, 1340, wide).status == StepPaceStatus::onPace);
    CHECK(paceAt(24, 1100, wide).status == StepPaceStatus::onPace);
    CHECK(paceAt(24, 1099, wide).status == StepPaceStatus::behind);
    CHECK(paceAt(12.5, 0, wide) == StepPace{StepPaceStatus::behind, 601});  // 600.5; the band is 120 wide
    CHECK(paceAt(12.5, 0, {1000, 1100, 1201, 1339, 1400}).status == StepPaceStatus::onPace);
    const auto baseline = stepPaceBaseline(daysWith(wide));
    CHECK(StepPaceRule::judge(baseline, {today - days(1), today, 5000, 20}) == StepPace{});
    CHECK(paceAt(24, 5000, {1000}) == StepPace{});
    CHECK(caseIndex(StepPace{}.status) == 3);
    CHECK(label({}, "1").in(EnglishTexts()) == "Ahead of usual");
    CHECK(label(StepPaceStatus::unavailable, "1,234").in(EnglishTexts()) ==
          "1,234 steps. Typical day not available yet.");
}

TEST_CASE("the time of day is what the clock shows, and 0 while it shows the evening again on the next day") {
    const FakeZone zone{-3h, {{utc(date, 3h + 1min), -4h}}};  // 00:01 becomes 23:01
    const Calendar calendar(zone, 2);
    CHECK(hourOfDay(calendar, utc(date, 2h + 30min)) == 23.5);
    CHECK(hourOfDay(calendar, utc(date, 3h + 45min)) == 0);
    CHECK(hourOfDay(calendar, utc(date, 5h + 45min)) == 1.75);
}
