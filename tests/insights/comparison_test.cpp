#include "insights/comparison.h"

#include "linux/system/absent_services.h"
#include "support/manager_fixture.h"

#include <doctest/doctest.h>

#include <cmath>
#include <map>
#include <random>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

struct Comparing : ManagerFixture {
    Comparison fetch(ComparisonMetric metric, Day day = today) {
        return time.run(fetchComparison(manager.reads(), metric, day, settings.calendar(), 8000));
    }
    std::map<std::string_view, ComparisonDelta> deltas(Day day) {
        std::map<std::string_view, ComparisonDelta> deltas;
        for (const auto& section : fetch(ComparisonMetric::steps, day).sections) {
            for (const auto& row : section.rows) deltas.emplace(row.id, row.delta);
        }
        return deltas;
    }
};

std::string sentence(double current, double average, ComparisonMetric metric = ComparisonMetric::steps) {
    const auto phrase = summarySentence(metric, current, average);
    return phrase ? phrase->in(EnglishTexts()) : "";
}

}  // namespace

TEST_CASE("the sentence changes at 25, 10, -5 and -25 percent, rounded half away from zero") {
    CHECK(sentence(1245, 1000) == "You're crushing it - 25% above your 7-day steps average.");  // 24.5
    CHECK(sentence(1244, 1000) == "Nice pace. You're 24% above your 7-day steps average.");
    CHECK(sentence(1095, 1000) == "Nice pace. You're 10% above your 7-day steps average.");
    CHECK(sentence(1094, 1000) == "You're tracking close to your 7-day steps average. Steady.");
    CHECK(sentence(946, 1000) == "You're tracking close to your 7-day steps average. Steady.");
    CHECK(sentence(945, 1000) == "A bit behind - 6% below your 7-day steps average.");  // -5.5
    CHECK(sentence(746, 1000) == "A bit behind - 25% below your 7-day steps average.");
    CHECK(sentence(1, 2, ComparisonMetric::flights) == "Quiet day. You're 50% below your 7-day floors average.");
    CHECK(sentence(1e300, 1e-9).starts_with("You're crushing it - 1000000000000000% above"));
    CHECK(sentence(0, 1000).empty());
    CHECK(sentence(1000, 0).empty());
}

TEST_CASE("a difference is worded with its share, and as none where it shows as none") {
    const auto worded = [](double current, double reference) {
        const auto whole = [](double amount) { return std::to_string(std::lround(amount)); };
        return wording({current, reference}, whole).in(EnglishTexts());
    };
    CHECK(worded(11'240, 10'000) == "1240 more, 12%");
    CHECK(worded(995, 1000) == "5 less, 1%");
    CHECK(worded(1000.3, 1000) == "the same");
    CHECK(worded(70, 0) == "70 more");
}

TEST_CASE("a text is translated whole, its words on their own, and places may change their order") {
    struct German : TextCatalogue {
        std::string text(std::string_view english) const override {
            if (english == "{} of {}") return "{1}: {0} {}!";
            if (english == "{} less" || english == "{} more") return english == "{} less" ? "{1}" : "mehr";
            return english == "steps" ? "Schritte" : std::string(english);
        }
    };
    CHECK(Phrase("{} of {}", {"12", "steps"}).in(German()) == "Schritte: 12 Schritte!");
    CHECK(Phrase("{} of {}", {"12", std::string("steps")}).in(German()) == "steps: 12 steps!");
    CHECK(Phrase("{0} {{", {Phrase("{} of {}", {"1", "2"})}).in(German()) == "2: 1 2! {{");
    // Translations whose places do not fit.
    CHECK(Phrase("{} less", {"12"}).in(German()) == "12 less");
    CHECK(Phrase("{} more", {"12"}).in(German()) == "12 more");
}

TEST_CASE_FIXTURE(Comparing,
                  "steps alone are compared with the goal, each metric is read in one pass, failures are 0") {
    walk(9000, 0);
    CHECK(fetch(ComparisonMetric::steps).sections[1].rows[0].delta == ComparisonDelta{9000, 8000});
    CHECK(fetch(ComparisonMetric::distance).sections[1].rows[0].title == "vs 7-Day Average");
    CHECK(store.asked.size() == 2);
    breakStore();
    CHECK(fetch(ComparisonMetric::steps).current == 0);
}

TEST_CASE_FIXTURE(Comparing, "references equal those counted from the samples") {
    std::mt19937 random(30);
    std::map<Day, double> walked;
    for (Day day = today - days(460); day <= today; day += days(1)) {
        for (auto samples = random() % 4; samples > 0; --samples) {
            const auto steps = static_cast<double>(random() % 5000);
            walked[day] += steps;
            store.addSteps(steps, settings.calendar().start(day) + minutes(random() % 1300));
        }
    }
    for (Day day = today - days(400); day <= today; day += days(random() % 13)) {
        const year_month_day date(day);
        const int daysOfWeek = pedvar::weekday(day) == 1 ? 7 : pedvar::weekday(day) - 1;  // from Monday on
        std::map<std::int64_t, double> ago;
        double month[2]{}, week[2]{}, sum[2]{}, count[2]{}, best = 0;
        double sameDayLastMonth = 0;
        for (const auto& [other, steps] : walked) {
            const auto distance = (day - other).count();
            const year_month_day otherDate(other);
            const auto months = (date.year() / date.month() - otherDate.year() / otherDate.month()).count();
            const bool isUpToDate = otherDate.day() <= date.day();
            ago[distance] = steps;
            if (0 < distance && distance <= 30) sum[1] += steps, ++count[1], best = std::max(best, steps);
            if (0 < distance && distance <= 7) sum[0] += steps, ++count[0];
            if (0 <= distance && distance < daysOfWeek) week[0] += steps;
            if (7 <= distance && distance < 7 + daysOfWeek) week[1] += steps;
            if (isUpToDate && (months == 0 || months == 1)) month[months] += steps;
            const bool isLastOfMonth = year_month_day(other + std::chrono::days(1)).month() != otherDate.month();
            if (months == 1 && isUpToDate && (otherDate.day() == date.day() || isLastOfMonth))
                sameDayLastMonth = steps;
        }
        CAPTURE(isoText(day));
        auto rows = deltas(day);
        CHECK(rows["yesterday"] == ComparisonDelta{ago[0], ago[1]});
        CHECK(rows["sameDayLastWeek"].reference == ago[7]);
        CHECK(rows["twoWeeksAgo"].reference == ago[14]);
        CHECK(rows["sameDayLastMonth"].reference == sameDayLastMonth);
        CHECK(rows["sevenDayAverage"].reference == (count[0] > 0 ? sum[0] / count[0] : 0));
        CHECK(rows["thirtyDayAverage"].reference == sum[1] / count[1]);
        CHECK(rows["thirtyDayBest"].reference == best);
        CHECK(rows["weekToDate"] == ComparisonDelta{week[0], week[1]});
        CHECK(rows["monthToDate"] == ComparisonDelta{month[0], month[1]});
        day += std::chrono::days(1);
    }
}
