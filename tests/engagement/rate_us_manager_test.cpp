#include "engagement/rate_us_manager.h"

#include "support/fake_web.h"
#include "support/manager_fixture.h"

#include <doctest/doctest.h>

#include <memory>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

struct Rating : ManagerFixture {
    StoreAddresses addresses{.lookup = "", .page = "", .review = "https://example.org/app"};
    FakeWebPages pages;
    std::unique_ptr<RateUsManager> rating;

    Rating() { restart(); }
    void restart() {
        rating = std::make_unique<RateUsManager>(
            time, time, settings, defaults, [this] { return addresses; }, pages, log);
    }
    bool isScheduled() const {
        const auto flag = defaults.standardDomain.value("rateUsPopupScheduled");
        return flag && std::get<bool>(*flag);
    }
    std::int64_t opensToGo() const { return defaults.standardDomain.integer("opensUntilNextPrompt").value_or(-1); }
    /// Whether the opens end with a prompt.
    bool open(int times) {
        for (int i = 0; i < times; ++i) {
            REQUIRE(!rating->shouldShowPopup);
            rating->appDidOpen();
            time.advance(5s);
        }
        return rating->shouldShowPopup;
    }
};

}  // namespace

TEST_CASE_FIXTURE(Rating, "a new person is asked five seconds after the third open") {
    rating->appDidOpen();
    CHECK(opensToGo() == 2);
    rating->appDidOpen();
    CHECK(opensToGo() == 1);
    time.advance(1min);
    CHECK(!isScheduled());
    rating->appDidOpen();
    CHECK(opensToGo() == 0);
    CHECK(isScheduled());
    time.advance(4999ms);
    CHECK(!rating->shouldShowPopup);
    time.advance(1ms);
    CHECK(rating->shouldShowPopup);
    CHECK(!isScheduled());
}

TEST_CASE_FIXTURE(Rating, "after each later it takes ten opens and two days, and three of them are enough") {
    CHECK(open(3));
    rating->maybeLater();
    CHECK(!rating->shouldShowPopup);
    time.advance(48h);
    CHECK(!open(9));
    CHECK(open(1));
    rating->maybeLater();
    CHECK(!open(10));
    CHECK(opensToGo() == 0);
    time.advance(24h);
    CHECK(!open(1));
    CHECK(opensToGo() == 0);
    time.advance(24h);
    CHECK(open(1));
    rating->maybeLater();
    time.advance(days(100));
    CHECK(!open(50));
}

TEST_CASE_FIXTURE(Rating, "days between prompts are whole ones by the clock on the wall") {
    const auto prompts = [&](Day day, Seconds clock, Seconds passed) {
        defaults.standardDomain.values.clear();
        time.setClock(settings.calendar().instant(LocalTime(day) + clock));
        rating->maybeLater();
        defaults.standardDomain.values.insert_or_assign("rateUsIsFirstLaunch", true);
        defaults.standardDomain.values.insert_or_assign("opensUntilNextPrompt", std::int64_t{0});
        time.setClock(time.now() + passed);
        rating->appDidOpen();
        return isScheduled();
    };
    const Day monday(2024y / April / 29);
    CHECK(!prompts(monday, 23h, 26h));  // Wednesday 01:00
    CHECK(!prompts(monday, 23h, 48h - 1s));
    CHECK(prompts(monday, 23h, 48h));
    CHECK(!prompts(monday, 23h, -72h));                 // the clock was set back
    CHECK(prompts(Day(2024y / March / 30), 12h, 47h));  // over a day of 23 hours
    CHECK(!prompts(Day(2024y / March / 30), 12h, 47h - 1s));
}

TEST_CASE_FIXTURE(Rating, "who rates goes to the page of reviews and is never asked again") {
    CHECK(open(3));
    rating->rateNow();
    CHECK(pages.opened == std::vector<std::string>{"https://example.org/app?action=write-review"});
    CHECK(!rating->shouldShowPopup);
    defaults.standardDomain.values.erase("opensUntilNextPrompt");
    defaults.standardDomain.values.erase("rateUsIsFirstLaunch");
    CHECK(!open(20));
    CHECK(opensToGo() == -1);
}

TEST_CASE_FIXTURE(Rating, "a process that ends before the prompt leaves it scheduled for good") {
    for (int i = 0; i < 3; ++i) rating->appDidOpen();
    restart();
    time.advance(1h);
    CHECK(isScheduled());
    CHECK(!open(20));
}

TEST_CASE_FIXTURE(Rating, "an answer before the prompt shows calls it off") {
    for (int i = 0; i < 3; ++i) rating->appDidOpen();
    rating->maybeLater();
    time.advance(1h);
    CHECK(!rating->shouldShowPopup);
    CHECK(opensToGo() == 10);
}

TEST_CASE_FIXTURE(Rating, "without a page for reviews nobody is asked and nothing is counted") {
    addresses.review.clear();
    CHECK(!open(20));
    CHECK(trace.empty());
    addresses.review = "https://example.org/app?store=1#top";
    CHECK(open(3));
    rating->rateNow();
    CHECK(pages.opened == std::vector<std::string>{"https://example.org/app?store=1&action=write-review#top"});
}
