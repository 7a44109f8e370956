#include "linux/notifications/desktop_notifications.h"

#include "engagement/step_goal_notification_manager.h"
#include "platform/text_catalogue.h"
#include "support/manager_fixture.h"
#include "support/program.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <thread>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

/// A session bus with a notification server on it.
class Desktop {
public:
    explicit Desktop(const std::vector<std::string>& capabilities) : server_(command(capabilities)) {
        setenv("DBUS_SESSION_BUS_ADDRESS", server_.line().c_str(), 1);
    }
    ~Desktop() { unsetenv("DBUS_SESSION_BUS_ADDRESS"); }

    /// What is shown next: [number, title, body, keys and labels of actions ..., timeout].
    std::string shown() const { return server_.line(); }
    void answer(const std::string& what) const { server_.write(what); }

private:
    static std::vector<std::string> command(const std::vector<std::string>& capabilities) {
        std::vector<std::string> words{"dbus-run-session", "--", "/usr/bin/python3", PEDVAR_NOTIFICATION_SERVER};
        words.insert(words.end(), capabilities.begin(), capabilities.end());
        return words;
    }

    Program server_;
};

struct Shown : ManagerFixture {
    std::optional<Desktop> desktop;
    Readiness readiness{time};
    std::optional<DesktopNotifications> notifications{std::in_place, time, readiness};
    std::vector<std::string> responses;
    Subscription responded = notifications->observeResponses([this](const NotificationResponse& response) {
        const char* const kinds[] = {"chosen", "dismissed", "gone"};
        responses.push_back(response.identifier + " " + kinds[static_cast<int>(response.kind)] + " " +
                            response.action);
    });

    /// Lets what comes from the bus arrive, which takes real time and no virtual one.
    void settleUntil(const std::function<bool()>& isReached) {
        const auto deadline = steady_clock::now() + 2min;
        while (!isReached() && steady_clock::now() < deadline) {
            time.settle();
            std::this_thread::sleep_for(1ms);
        }
        REQUIRE(isReached());
    }
    /// Empty when it was shown, otherwise why not.
    std::string show(UserNotification notification) {
        std::optional<std::string> outcome;
        notifications->show(std::move(notification), [&](const std::expected<void, NotificationError>& shown) {
            outcome = shown ? "" : shown.error().message;
        });
        settleUntil([&] { return outcome.has_value(); });
        return *outcome;
    }
};

/// Passes on what is to be shown, and counts it.
class Counting : public UserNotifications {
public:
    explicit Counting(UserNotifications& to) : to_(to) {}

    int asked = 0, shown = 0;

    void show(UserNotification notification, NotificationHandler completion) override {
        ++asked;
        to_.show(std::move(notification), [this, told = std::move(completion)](const auto& outcome) mutable {
            if (outcome) ++shown;
            told(outcome);
        });
    }
    Subscription observeResponses(Event<NotificationResponse>::Observer observer) override {
        return to_.observeResponses(std::move(observer));
    }
    Subscription observeAvailability(Event<>::Observer observer) override {
        return to_.observeAvailability(std::move(observer));
    }

private:
    UserNotifications& to_;
};

}  // namespace

TEST_CASE_FIXTURE(Shown,
                  "a notification is shown with its actions, replaced by the next of its name, and answered") {
    desktop.emplace(std::vector<std::string>{"actions", "body-markup"});
    CHECK(show({"update", "New & old", "<b>a & b</b>", {{"view", "View it"}, {"dismiss", "Dismiss"}}}) == "");
    CHECK(desktop->shown() ==
          R"([1, "New & old", "&lt;b&gt;a &amp; b&lt;/b&gt;", "view", "View it", "dismiss", "Dismiss", 0])");
    CHECK(show({"goal", "Goal", "10,000 – done"}) == "");
    CHECK(desktop->shown() == R"([2, "Goal", "10,000 – done", -1])");
    CHECK(show({"update", "Newer", "", {{"view", "View it"}}}) == "");
    CHECK(desktop->shown() == R"([1, "Newer", "", "view", "View it", 0])");
    desktop->answer("choose 1 view");
    desktop->answer("close 7 2");  // another program's
    desktop->answer("close 2 2");
    settleUntil([&] { return responses.size() == 2; });
    CHECK(responses == std::vector<std::string>{"update chosen view", "goal dismissed "});
    CHECK(show({"goal", "Goal", "again"}) == "");
    CHECK(desktop->shown() == R"([3, "Goal", "again", -1])");
    desktop->answer("close 3 1");
    settleUntil([&] { return responses.size() == 3; });
    CHECK(responses.back() == "goal gone ");
    CHECK(show({"update", "Newest", "", {{"view", "View it"}}}) == "");
    CHECK(show({"goal", "Goal", "once more"}) == "");
    CHECK(desktop->shown() == R"([4, "Newest", "", "view", "View it", 0])");
    CHECK(desktop->shown() == R"([5, "Goal", "once more", -1])");
    notifications.reset();
    CHECK(desktop->shown() == R"([4, "taken back"])");
}

TEST_CASE_FIXTURE(Shown, "a server of few abilities gets plain text, and nobody's offer of a choice") {
    desktop.emplace(std::vector<std::string>{"body"});
    CHECK(show({"update", "New", "a & b", {{"view", "View it"}}}) == "");
    CHECK(desktop->shown() == R"([1, "New", "a & b", -1])");
}

TEST_CASE_FIXTURE(Shown, "without a bus nothing is shown, and the next notification looks for one again") {
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
    CHECK(show({"goal", "Goal", ""}).starts_with("There is no session bus: "));
    desktop.emplace(std::vector<std::string>{"actions"});
    CHECK(show({"goal", "Goal", ""}) == "");
    desktop.reset();  // the person logs out, and in again
    desktop.emplace(std::vector<std::string>{"actions"});
    std::string outcome = show({"goal", "Goal", ""});
    if (!outcome.empty())
        outcome = show({"goal", "Goal", ""});  // the end of the old bus was heard of with the first
    CHECK(outcome == "");
    CHECK(desktop->shown() == R"([1, "Goal", "", -1])");
}

TEST_CASE_FIXTURE(Shown, "a server that appears is told of, asked what it can do, and has numbers of its own") {
    desktop.emplace(std::vector<std::string>{"actions"});
    int appearances = 0;
    const Subscription appeared = notifications->observeAvailability([&] { ++appearances; });
    CHECK(show({"goal", "Goal", ""}) == "");
    CHECK(desktop->shown() == R"([1, "Goal", "", -1])");
    desktop->answer("leave");
    CHECK(desktop->shown() == R"("left")");
    settleUntil([&] { return responses.size() == 1; });
    CHECK(responses.back() == "goal gone ");
    CHECK(show({"update", "New", ""}) != "");
    desktop->answer("return body-markup actions");
    settleUntil([&] { return appearances == 1; });
    CHECK(show({"update", "New & old", "&", {{"view", "View it"}}}) == "");
    CHECK(desktop->shown() == R"([1, "New & old", "&amp;", "view", "View it", 0])");
    desktop->answer("choose 1 view");
    settleUntil([&] { return responses.size() == 2; });
    CHECK(responses.back() == "update chosen view");
}

TEST_CASE_FIXTURE(Shown,
                  "a week on a real desktop, with a restart each midnight, tells each thing when it is due") {
    desktop.emplace(std::vector<std::string>{"actions", "body-markup"});
    REQUIRE(settings.changePreferences([](UserPreferences&) {}));
    const EnglishTexts texts;
    const Calendar calendar = settings.calendar();
    const Day monday = calendar.weekStart(today) + days(7);
    const double stepsByDay[] = {12'000, 9'000,  12'000, 12'000,
                                 1'000,  12'000, 12'000};  // until nine in the evening
    const DayStanding standing{.streak = 3, .lastWeekSteps = 70'000};
    Counting counted(*notifications);
    std::optional<StepGoalNotificationManager> teller;
    std::string week;
    for (Date now = calendar.start(monday); now < calendar.start(monday + days(7));
         now = std::min(nextNotificationMoment(calendar, now), now + 1h)) {
        time.setClock(now);
        const Day day = calendar.day(now);
        const Seconds clock = now - calendar.start(day);
        if (clock == 0s) teller.emplace(time, settings, defaults, texts, locale, counted, log);
        const int before = counted.asked;
        const double share = std::min(1.0, clock / 21h);
        teller->goalProgressed(static_cast<std::int64_t>(stepsByDay[(day - monday).count()] * share), 10'000);
        teller->consider(standing);
        settleUntil([&] { return counted.shown == counted.asked; });
        for (int i = before; i < counted.asked; ++i) {
            const std::string shown = desktop->shown();
            const std::size_t title = shown.find('"') + 1;
            week += isoText(day).substr(8) + " at " + std::to_string(clock / 1h).substr(0, 4) + " " +
                    shown.substr(title, shown.find('"', title) - title) + "\n";
        }
    }
    CHECK(week == R"(06 at 8.00 Good morning
06 at 9.00 Your week
06 at 14.0 Close to your goal
06 at 18.0 Goal achieved
07 at 8.00 Good morning
07 at 19.0 Close to your goal
07 at 19.0 How about a walk?
07 at 20.5 Your streak is in danger
08 at 8.00 Good morning
08 at 14.0 Close to your goal
08 at 18.0 Goal achieved
09 at 8.00 Good morning
09 at 14.0 Close to your goal
09 at 18.0 Goal achieved
10 at 8.00 Good morning
10 at 19.0 How about a walk?
10 at 20.5 Your streak is in danger
11 at 8.00 Good morning
11 at 14.0 Close to your goal
11 at 18.0 Goal achieved
12 at 8.00 Good morning
12 at 14.0 Close to your goal
12 at 18.0 Goal achieved
)");
}
