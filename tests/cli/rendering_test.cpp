#include "apps/cli/charts.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/progress_bar.h"
#include "apps/cli/screen.h"
#include "support/fake_zone.h"

#include <doctest/doctest.h>

#include <limits>

namespace pedvar {
namespace {

struct FakeLocale : Locale {
    const ZoneRules& zone() const override { return rules; }
    int firstWeekday() const override { return 2; }
    MeasurementSystem measurementSystem() const override { return MeasurementSystem::metric; }
    std::string languageCode() const override { return "en"; }
    std::string decimalSeparator() const override { return decimal; }
    std::string groupingSeparator() const override { return grouping; }
    bool usesTwelveHourClock() const override { return false; }

    FakeZone rules{std::chrono::hours(2)};
    std::string decimal = ".";
    std::string grouping = ",";
};

struct FakeCatalogue : TextCatalogue {
    std::string text(std::string_view english) const override {
        return english == "{} of {}" ? translation : std::string(english);
    }

    std::string translation = "{} of {}";
};

constexpr auto noNumber = std::numeric_limits<double>::quiet_NaN();

struct Rendering {
    FakeLocale locale;
    FakeCatalogue catalogue;
    UserPreferences preferences;

    Figures figures() const { return Figures(locale, preferences, Texts(catalogue)); }
    Screen screen() const { return {.text = Texts(catalogue), .figures = figures()}; }
};

TEST_CASE_FIXTURE(Rendering, "whole numbers are grouped by three from the right") {
    CHECK(figures().number(std::int64_t{999}) == "999");
    CHECK(figures().number(std::int64_t{1'000}) == "1,000");
    CHECK(figures().number(std::int64_t{-1'234'567}) == "-1,234,567");
    CHECK(figures().number(std::numeric_limits<std::int64_t>::min()) == "-9,223,372,036,854,775,808");
    CHECK(figures().steps(1) == "1 step");
    CHECK(figures().days(0) == "0 days");
}

TEST_CASE_FIXTURE(Rendering, "fractions are rounded, without zeros at their end") {
    CHECK(figures().number(6.04, 1) == "6");
    CHECK(figures().number(6.06, 1) == "6.1");
    CHECK(figures().number(-0.04, 1) == "0");
    CHECK(figures().number(100.0, 0) == "100");
    CHECK(figures().number(noNumber, 1) == "–");
    locale.decimal = ",";
    locale.grouping = ".";
    CHECK(figures().number(1234.56, 1) == "1.234,6");
}

TEST_CASE_FIXTURE(Rendering, "distances are in the preferred unit") {
    CHECK(figures().distance(6'140) == "6.1 km");
    preferences.distanceUnit = DistanceUnit::miles;
    CHECK(figures().distance(6'140) == "3.8 mi");
}

TEST_CASE_FIXTURE(Rendering, "the preferred clock goes before the region's") {
    CHECK(figures().hour(0) == "0");
    preferences.timeFormat = TimeFormat::twelveHour;
    CHECK(figures().hour(0) == "12 AM");
    CHECK(figures().hour(12) == "12 PM");
    CHECK(figures().hour(23) == "11 PM");
}

TEST_CASE_FIXTURE(Rendering, "a translation may turn its places around, and one that does not fit gives way") {
    const Texts text(catalogue);
    catalogue.translation = "{1} / {0}";
    CHECK(text("{} of {}", 1, 2) == "2 / 1");
    for (const char* misfit : {"{} {} {}", "{", "{:x>y}", "{0:d}"}) {
        catalogue.translation = misfit;
        CHECK(text("{} of {}", "1", "2") == "1 of 2");
    }
}

TEST_CASE("bars are exact to an eighth and never longer than their width") {
    CHECK(bar(0, 4) == "");
    CHECK(bar(0.5, 4) == "██");
    CHECK(bar(0.6, 4) == "██▍");
    CHECK(bar(0.0001, 4) == "▏");
    CHECK(bar(7, 4) == "████");
    CHECK(bar(-1, 4) == "");
    CHECK(bar(noNumber, 4) == "");
    CHECK(groove("██▍", 4) == "░");
    CHECK(groove("████", 4) == "");
}

TEST_CASE("columns stand on one line and the greatest reaches the top") {
    const std::vector<std::int64_t> values{0, 1, 50, 100};
    CHECK(columnLines(values, {.height = 2, .columnWidth = 1}) ==
          std::vector<std::string>{"      █ ", "  ▁ █ █ "});
    const std::vector<std::int64_t> zeros{0, 0};
    CHECK(columnLines(zeros, {.height = 1, .columnWidth = 1}) == std::vector<std::string>{"    "});
}

TEST_CASE_FIXTURE(Rendering, "days to come are blank, and each day is judged by its own goal") {
    const Calendar calendar(locale.rules, 2);
    const Day monday{std::chrono::year{2024} / 4 / 29};
    std::vector<DailyStepData> days;
    for (int i = 0; i < 4; ++i) {
        days.push_back({.id = "", .date = calendar.start(monday + std::chrono::days(i)), .steps = 5'000});
    }
    const GoalHistory goals({{monday, 5'000}, {monday + std::chrono::days(1), 10'000}}, 10'000);
    const std::string chart = dayChart(days, goals, calendar, monday + std::chrono::days(2), screen());
    CHECK(chart ==
          "Mon 29     5,000        0 km  ███████████████████████ ✓\n"
          "Tue 30     5,000        0 km  ███████████████████████\n"
          "Wed  1     5,000        0 km  ███████████████████████\n"
          "Thu  2 \n");
}

TEST_CASE_FIXTURE(Rendering, "no line of a chart is wider than the screen") {
    std::vector<HourlyStepData> hours(24);
    for (int hour = 0; hour < 24; ++hour)
        hours[static_cast<std::size_t>(hour)] = {.id = "", .date = {}, .hour = hour, .steps = 10'000};
    preferences.timeFormat = TimeFormat::twelveHour;
    std::string text = hourChart(hours, screen()) + goalView(250'000, 10'000, screen());
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        CHECK(columns(text.substr(0, end)) <= screenWidth);
        text.erase(0, end + 1);
    }
}

TEST_CASE_FIXTURE(Rendering, "progress tells rate and time left once they are known") {
    const Texts text(catalogue);
    const Progress beginning{.doneBytes = 1e6, .totalBytes = 4e9, .elapsed = Seconds(0.2)};
    CHECK(progressLine(beginning, figures(), text) == "▏░░░░░░░░░░░░░░░░░░░░░░░░░░░░░ 1 MB of 4 GB");
    const Progress later{.doneBytes = 1e9, .totalBytes = 4e9, .elapsed = Seconds(20)};
    CHECK(progressLine(later, figures(), text) ==
          "███████▌░░░░░░░░░░░░░░░░░░░░░░ 1 GB of 4 GB, 50 MB/s, 1:00 left");
    const Progress nothing{.doneBytes = 0, .totalBytes = 0, .elapsed = Seconds(20)};
    CHECK(progressLine(nothing, figures(), text).ends_with("░ 0 kB of 0 kB"));
    const Progress long_{.doneBytes = 999.9e9, .totalBytes = 9999e9, .elapsed = Seconds(360'000)};
    CHECK(columns(progressLine(long_, figures(), text)) < screenWidth);
}

TEST_CASE("a screen in ASCII keeps its shape") {
    CHECK(toAscii("██▌░ – 12\u202F000 ✓\n│└─") == "###. - 12 000 *\n|+-");
    CHECK(toAscii("Zoë’s 太") == "Zo?'s ?");
    CHECK(toAscii("\xFF\xE2") == "??");
}

TEST_CASE("foreign text cannot steer the terminal") {
    CHECK(harmless("a\x1b[2Jb\r\n\x7f") == "a?[2Jb???");
    CHECK(harmless("\xC2\x9B"
                   "31m Zoë’s") == "?31m Zoë’s");
    CHECK(harmless("\xC2") == "?");
    CHECK(columns("Zoë’s") == 5);
}

TEST_CASE_FIXTURE(Rendering, "steps are in the preferred colour") {
    preferences.preferredStepColor = StepColor::custom;
    preferences.customStepColorRed = 1;
    preferences.customStepColorGreen = 0.5;
    preferences.customStepColorBlue = noNumber;
    CHECK(switchTo(stepColor(preferences), Palette::direct) == "\x1b[38;2;255;128;0m");
    CHECK(switchTo(stepColor(preferences), Palette::cube) == "\x1b[38;5;214m");
    Screen shown = screen();
    CHECK(shown.accented("x") == "x");
    shown.palette = Palette::cube;
    CHECK(shown.faint("x") == "\x1b[2mx\x1b[0m");
    CHECK(shown.faint("") == "");
}

}  // namespace
}  // namespace pedvar
