#include "achievements/achievements_store.h"
#include "achievements/achievement_catalogue.h"
#include "support/manager_fixture.h"

#include <doctest/doctest.h>

namespace pedvar {
namespace {

using Key = Achievement::Key;
using namespace std::chrono_literals;

constexpr Day dayOf(int year, int month, int day) {
    return Day(std::chrono::year(year) / month / day);
}

struct Badges : ManagerFixture {
    Badges() {
        subscribe(badges);
        REQUIRE(settings.setDailyGoal(1000, dayOf(2024, 1, 1)));
    }

    void subscribe(AchievementsStore& told) {
        news = told.unlocked.observe([this](const std::vector<Achievement>& found) {
            for (const Achievement& each : found) announced.emplace_back(caseName(each.key));
        });
    }
    void evaluate() {
        time.run(badges.evaluate());
        REQUIRE(time.run(badges.remember()));
    }
    /// The fake store does not see by itself that the past has changed.
    void steps(double count, Day day, int hour) {
        if (day != today) store.derived.clear();
        store.addSteps(count, settings.calendar().hour(day, hour).start + 1s);
    }
    const Achievement& of(Key key) const { return badges.achievements->at(caseIndex(key)); }
    /// "2024-05-03", or the progress of a badge that is locked.
    std::string state(Key key) const {
        const Achievement& badge = of(key);
        return badge.isUnlocked ? isoText(settings.calendar().day(badge.unlockedDate.value()))
                                : std::to_string(badge.progress);
    }

    AchievementsStore badges{time, time, store, manager.reads(), settings, defaults, log};
    Subscription news;
    std::vector<std::string> announced;
};

TEST_CASE_FIXTURE(Badges, "weekends, weeks, months and streaks are those of the calendar") {
    for (Day day = dayOf(2024, 2, 1); day <= dayOf(2024, 4, 1); day += std::chrono::days(1)) {
        if (day != dayOf(2024, 2, 4) && day != dayOf(2024, 3, 5)) steps(1000, day, 12);
    }
    evaluate();
    CHECK(state(Key::gettingStarted) == "2024-02-03");
    CHECK(state(Key::consistencyKing) == "2024-02-09");
    CHECK(state(Key::weekendWarrior) == "2024-02-11");
    CHECK(state(Key::perfectWeek) == "2024-02-11");
    CHECK(state(Key::twoWeeksStrong) == "2024-02-18");
    CHECK(state(Key::monthMastery) == "29");  // 30 of March's 31 days
    CHECK(state(Key::monthlyChampion) == "29");
    steps(1000, dayOf(2024, 2, 4), 12);
    evaluate();
    CHECK(state(Key::monthMastery) == "2024-02-29");
    CHECK(of(Key::monthMastery).progress == 30);
    CHECK(state(Key::monthlyChampion) == "2024-03-01");
}

TEST_CASE_FIXTURE(Badges, "hours are those of the clock, two in a row also across midnight") {
    steps(6000, dayOf(2024, 3, 30), 23);
    steps(4000, dayOf(2024, 3, 31), 0);
    steps(2999, dayOf(2024, 4, 2), 21);
    steps(4999, dayOf(2024, 4, 3), 8);
    steps(9000, dayOf(2024, 4, 3), 9);
    evaluate();
    CHECK(state(Key::speedDemon) == "2024-03-31");
    CHECK(of(Key::speedDemon).progress == 13999);
    CHECK(state(Key::nightOwl) == "2024-03-30");
    CHECK(state(Key::earlyBird) == "4999");
}

TEST_CASE_FIXTURE(Badges, "twice the goal is twice the goal of the day, shown by the present one") {
    REQUIRE(settings.setDailyGoal(3000, dayOf(2024, 5, 2)));
    steps(1700, dayOf(2024, 4, 30), 12);
    steps(5000, today, 12);
    evaluate();
    CHECK(of(Key::doubleTrouble).requirement == 6000);
    CHECK(state(Key::doubleTrouble) == "5100");
    CHECK(of(Key::tripleThreat).requirement == 9000);
    steps(300, dayOf(2024, 4, 29), 12);
    steps(300, dayOf(2024, 4, 30), 13);
    evaluate();
    CHECK(state(Key::doubleTrouble) == "2024-04-30");
    CHECK(requirement(Key::doubleTrouble) == 20000);
}

TEST_CASE_FIXTURE(Badges,
                  "the first evaluation announces nothing, later ones what is new, and nothing is lost again") {
    steps(1000, dayOf(2024, 4, 30), 12);
    evaluate();
    CHECK(announced.empty());
    steps(4500, today, 9);
    store.add(HKQuantityTypeIdentifierDistanceWalkingRunning, HKUnit::meter(), 5000, time.now() - 1h);
    evaluate();
    CHECK(announced == std::vector<std::string>{"walker5K", "doubleTrouble", "tripleThreat"});
    evaluate();
    CHECK(announced.size() == 3);

    store.samples.clear();
    store.derived.clear();
    evaluate();
    CHECK(state(Key::walker5K) == "2024-05-03");
    CHECK(of(Key::walker5K).progress == 0);
    steps(1000, dayOf(2023, 7, 9), 12);  // the past comes late
    evaluate();
    CHECK(state(Key::firstSteps) == "2023-07-09");
    CHECK(announced.size() == 3);

    AchievementsStore again(time, time, store, manager.reads(), settings, defaults, log);
    CHECK(again.achievements->at(0).isUnlocked);
    CHECK(defaults.document("awardsSnapshot").contains("\"walker5K\""));
}

TEST_CASE_FIXTURE(Badges, "in another zone a badge keeps its day unless it is the same day there") {
    steps(1000, dayOf(2023, 7, 9), 12);
    steps(5000, today, 9);
    evaluate();
    store.samples.clear();
    store.derived.clear();
    steps(5000, today, 9);
    const std::string before = defaults.document("awardsSnapshot");
    defaults.setDocument("awardsSnapshot", "{\"zone\":\"Elsewhere\"" + before.substr(before.find(',')));
    AchievementsStore there(time, time, store, manager.reads(), settings, defaults, log);
    time.run(there.evaluate());
    CHECK(isoText(settings.calendar().day(there.achievements->at(0).unlockedDate.value())) == "2023-07-09");
    CHECK(there.achievements->at(1).unlockedDate == of(Key::stepUp).unlockedDate);
}

TEST_CASE_FIXTURE(Badges, "what cannot be read changes nothing, and what does not decode is kept aside") {
    steps(1000, today, 9);
    Achievement absurd = catalogue().at(1);
    absurd.isUnlocked = true;
    absurd.unlockedDate = Date(Seconds(-1e300));
    for (const std::string& damaged :
         {std::string("{\"zone\":\"here\""), encodeJson(AchievementsSnapshot{"here", {absurd}}).value()}) {
        defaults.standardDomain.values.erase("awardsSnapshot.unreadable");
        defaults.setDocument("awardsSnapshot", damaged);
        evaluate();
        CHECK(state(Key::firstSteps) == "2024-05-03");
        CHECK(announced.empty());
        CHECK(defaults.document("awardsSnapshot.unreadable") == damaged);
    }
    breakStore();
    const std::string before = defaults.document("awardsSnapshot");
    evaluate();
    CHECK(state(Key::firstSteps) == "2024-05-03");
    CHECK(defaults.document("awardsSnapshot") == before);
    const AchievementsStore again(time, time, store, manager.reads(), settings, defaults, log);
    CHECK(again.achievements->at(1).progress == 1000);
}

}  // namespace
}  // namespace pedvar
