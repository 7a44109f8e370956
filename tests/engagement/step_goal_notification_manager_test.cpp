#include "engagement/step_goal_notification_manager.h"

#include "platform/text_catalogue.h"
#include "support/fake_notifications.h"
#include "support/manager_fixture.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <memory>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

using Lines = std::vector<std::string>;

struct Notifications : ManagerFixture {
    EnglishTexts texts;
    FakeUserNotifications shownTo;
    std::unique_ptr<StepGoalNotificationManager> teller;
    DayStanding standing{.streak = 4, .water = WaterStanding{false, "500 ml", "2,000 ml"}};

    Notifications() {
        restart();
        REQUIRE(settings.changePreferences([](UserPreferences&) {}));
    }
    void restart() {
        teller =
            std::make_unique<StepGoalNotificationManager>(time, settings, defaults, texts, locale, shownTo, log);
    }
    void at(Day day, Seconds clock) { time.setClock(settings.calendar().instant(LocalTime(day) + clock)); }
    /// What is shown when things are looked at then.
    Lines look(Day day, Seconds clock, std::int64_t steps) {
        at(day, clock);
        shownTo.shown.clear();
        teller->goalProgressed(steps, 10'000);
        teller->consider(standing);
        return shownTo.shown;
    }
    static bool contains(const Lines& lines, const std::string& identifier) {
        return std::ranges::any_of(lines, [&](const auto& line) { return line.starts_with(identifier + ":"); });
    }
};

}  // namespace

TEST_CASE_FIXTURE(Notifications, "a day with all there is to tell tells each of it once, also over restarts") {
    standing.lastWeekSteps = 70'000;
    Lines all;
    for (auto clock = 0min; clock < 24h; clock += 15min) {
        const std::int64_t steps = clock < 20h + 45min ? 2'000 : clock < 22h ? 8'000 : 10'000;
        for (const std::string& line : look(today, clock, steps)) {
            all.push_back(std::to_string(clock / 1h) + ":" + std::to_string(clock % 1h / 1min) + " " + line);
        }
        restart();
    }
    CHECK(all ==
          Lines{
              "8:0 morningMotivation: Good morning | Today's goal: 10.000 steps. Days in a row so far: 4.",
              "9:0 weeklyRecap: Your week | Steps last week: 70.000, on average 10.000 a day.",
              "11:0 morningWater: Time to drink | Water so far today: 500 ml of 2,000 ml.",
              "14:0 noonWater: Time to drink | Water so far today: 500 ml of 2,000 ml.",
              "17:0 afternoonWater: Time to drink | Water so far today: 500 ml of 2,000 ml.",
              "19:0 eveningReminder: How about a walk? | Still to go: 8.000 of 10.000 steps.",
              "20:0 eveningWater: Time to drink | Water so far today: 500 ml of 2,000 ml.",
              "20:30 streakInDanger: Your streak is in danger | Days in a row so far: 4. Still to go today: "
              "8.000 of 10.000 steps.",
              "20:45 closeToGoal: Close to your goal | Still to go: 2.000 of 10.000 steps.",
              "22:0 goalAchieved: Goal achieved | Steps today: 10.000. Your goal was 10.000.",
          });
}

TEST_CASE_FIXTURE(Notifications, "what a machine slept over is told while there is still a point in it") {
    REQUIRE(
        settings.changePreferences([](UserPreferences& changed) { changed.appLanguage = AppLanguage::english; }));
    CHECK(look(today, 11h + 59min, 0).front() ==
          "morningMotivation: Good morning | Today's goal: 10,000 steps. Days in a row so far: 4.");
    CHECK(!contains(look(today + days(1), 12h, 0), "morningMotivation"));
    CHECK(look(today + days(1), 23h + 59min, 9'999).size() == 3);  // close, evening, streak
    standing.streak = 0;
    CHECK(!contains(look(today + days(2), 23h, 0), "streakInDanger"));
    CHECK(look(today + days(3), 23h, 10'000).size() == 1);
    at(today + days(4), 19h);  // no progress of this day yet
    shownTo.shown.clear();
    teller->consider(standing);
    CHECK(shownTo.shown == Lines{"afternoonWater: Time to drink | Water so far today: 500 ml of 2,000 ml."});
}

TEST_CASE_FIXTURE(Notifications, "each switch holds its own back, and one holds all back") {
    standing.lastWeekSteps = 1;
    const std::pair<bool UserPreferences::*, const char*> switches[] = {
        {&UserPreferences::goalAchievedAlertEnabled, "goalAchieved"},
        {&UserPreferences::closeToGoalReminderEnabled, "closeToGoal"},
        {&UserPreferences::morningMotivationEnabled, "morningMotivation"},
        {&UserPreferences::eveningReminderEnabled, "eveningReminder"},
        {&UserPreferences::streakProtectionEnabled, "streakInDanger"},
        {&UserPreferences::weeklyRecapEnabled, "weeklyRecap"},
    };
    for (const auto& [toggle, identifier] : switches) {
        CAPTURE(identifier);
        for (const bool isOn : {false, true}) {
            std::erase_if(defaults.standardDomain.values,
                          [](const auto& entry) { return entry.first.starts_with("notificationShown."); });
            REQUIRE(settings.changePreferences([&](UserPreferences& changed) { changed.*toggle = isOn; }));
            Lines lines = look(today, 9h, 0);
            for (const std::int64_t steps : {8'000, 10'000}) {
                for (const std::string& line : look(today, 21h, steps)) lines.push_back(line);
            }
            CHECK(contains(lines, identifier) == isOn);
        }
    }
    REQUIRE(settings.changePreferences([](UserPreferences& changed) { changed.notificationsEnabled = false; }));
    standing.badges = {{"firstSteps", "First Steps"}};
    look(today + days(7), 9h, 0);
    standing.badges.push_back({"stepUp", "Step Up"});
    CHECK(look(today + days(7), 11h, 9'000).empty());
}

TEST_CASE_FIXTURE(Notifications, "reminders to drink stop when the goal is met, and for who does not want them") {
    CHECK(look(today, 11h, 0).size() == 2);
    standing.water->isGoalMet = true;
    CHECK(look(today, 14h, 0).empty());
    standing.water.reset();
    CHECK(look(today, 17h, 0).empty());
}

TEST_CASE_FIXTURE(Notifications, "badges are told once, several together, and not those of before") {
    standing.badges = {{"firstSteps", "First Steps"}, {"stepUp", "Step Up"}};
    CHECK(look(today, 1h, 0).empty());
    standing.badges.push_back({"stepMaster", "Step Master"});
    CHECK(look(today, 2h, 0) == Lines{"newBadges: New badge | Step Master"});
    standing.badges.insert(standing.badges.begin(), {{"explorer30K", "Explorer"}, {"walker5K", "Walker"}});
    CHECK(look(today, 3h, 0).empty());  // at most once a day
    restart();
    CHECK(look(today + days(1), 3h, 0) == Lines{"newBadges: New badges | Explorer, Walker"});
    CHECK(look(today + days(2), 3h, 0).empty());
}

TEST_CASE_FIXTURE(Notifications, "what could not be shown writes nothing until it is tried again") {
    standing.badges = {{"firstSteps", "First Steps"}};
    look(today, 1h, 0);
    standing.badges.push_back({"stepUp", "Step Up"});
    shownTo.failure = NotificationError{"no bus"};
    look(today, 9h, 10'000);
    CHECK(shownTo.shown.empty());
    const int writes = defaults.transactions;
    look(today, 9h, 10'000);
    CHECK(defaults.transactions == writes);
    shownTo.failure.reset();
    CHECK(look(today, 9h, 10'000).empty());
    teller->tryAgain();
    CHECK(look(today, 9h, 10'000).size() == 3);
    CHECK(look(today, 9h, 10'000).empty());
}

TEST_CASE_FIXTURE(Notifications, "what cannot be stored is not shown") {
    defaults.failure = DefaultsError{"The disk is full."};
    CHECK(look(today + days(1), 9h, 10'000).empty());
    CHECK(!log.lines.empty());
}

TEST_CASE_FIXTURE(Notifications,
                  "a day that is lived again in another zone, or a clock set wrong, repeats little") {
    CHECK(contains(look(today + days(1), 0h, 10'000), "goalAchieved"));
    CHECK(!contains(look(today, 20h, 10'000), "goalAchieved"));  // flown west
    CHECK(contains(look(today + days(400), 1h, 10'000), "goalAchieved"));
    CHECK(contains(look(today, 20h, 10'000), "goalAchieved"));  // the clock had been wrong
}

TEST_CASE_FIXTURE(Notifications,
                  "the next moment is one of the day's times, or midnight also where it is skipped") {
    const Calendar calendar = settings.calendar();
    const auto next = [&](Seconds clock) {
        const Date now = calendar.instant(LocalTime(today) + clock);
        return calendar.localTime(nextNotificationMoment(calendar, now)) - LocalTime(today);
    };
    CHECK(next(0h) == 8h);
    CHECK(next(8h - 1ms) == 8h);
    CHECK(next(8h) == 9h);
    CHECK(next(20h) == 20h + 30min);
    CHECK(next(20h + 30min) == 24h);
}
