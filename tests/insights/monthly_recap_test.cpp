#include "insights/monthly_recap.h"

#include "insights/monthly_recap_manager.h"
#include "linux/system/absent_services.h"
#include "support/manager_fixture.h"

#include <doctest/doctest.h>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

struct Recap : ManagerFixture {
    MonthlyRecapManager recap{time, time, store, settings, defaults, log};
    TaskScope scope{time};

    void setHandled(const char* month) {
        defaults.standardDomain.values.insert_or_assign("monthlyRecapLastShownMonth", std::string(month));
    }
    std::string handled() const { return defaults.standardDomain.text("monthlyRecapLastShownMonth").value_or(""); }
    void checkOnce() {
        time.run(recap.checkForRecap());
        time.advance(1s);
    }
};

}  // namespace

TEST_CASE_FIXTURE(Recap, "the first month of use offers nothing, not even when asked twice") {
    walk(5000, 10);
    checkOnce();
    CHECK(handled() == "2024-05");
    checkOnce();
    CHECK(!recap.shouldShowPopup);
}

TEST_CASE_FIXTURE(Recap, "a new month offers the one before after a second, until it is answered") {
    setHandled("2024-04");
    walk(5000, 3);  // 30 April
    walk(70, 2);
    store.isHolding = true;
    scope.spawn(recap.checkForRecap());
    scope.spawn(recap.checkForRecap());
    time.settle();
    store.answer();
    time.advance(999ms);
    store.answer();  // of the check that comes too late
    CHECK(!recap.shouldShowPopup);
    time.advance(1ms);
    CHECK(recap.shouldShowPopup);
    CHECK(recap.recapMonthStart.value() == settings.calendar().start(Day(2024y / April / 1)));
    CHECK(handled() == "2024-04");

    recap.shouldShowPopup = false;  // never answered
    time.advance(10s);
    CHECK(!recap.shouldShowPopup);
    store.isHolding = false;
    CHECK(time.run(recap.stepCount(recap.recapMonthStart)) == 5000);
    checkOnce();
    CHECK(recap.shouldShowPopup);
    recap.dismissRecap();
    CHECK(handled() == "2024-05");
    checkOnce();
    CHECK(!recap.shouldShowPopup);
    CHECK(!recap.pendingTrendsMonthNavigation);
    recap.viewRecap();
    CHECK(recap.pendingTrendsMonthNavigation);
    CHECK(recap.pendingRecapMonth.value() == recap.recapMonthStart.value());
}

TEST_CASE_FIXTURE(Recap, "a month without steps, or that cannot be read, is asked for again next time") {
    setHandled("2023-12");
    checkOnce();
    walk(5000, 10);
    breakStore();
    checkOnce();
    CHECK(!recap.shouldShowPopup);
    store.failures.clear();
    CHECK(time.run(recap.fetchDueMonth()) == 2024y / April);
    CHECK(trace.empty());
}

TEST_CASE_FIXTURE(Recap, "a recap sums up the month as far as it has come, each day judged by its own goal") {
    walk(8000, 33);  // 31 March
    walk(9000, 32);
    walk(9000, 20);
    walk(100, 3);
    walk(50, 0);
    walk(7777, -1);
    store.add(HKQuantityTypeIdentifierDistanceWalkingRunning, HKUnit::meter(), 640, time.now() - days(20));
    const GoalHistory goals({{today - days(99), 9000}, {today - days(25), 9001}, {today - days(5), 100}}, 1);
    const auto of = [&](year_month month) {
        return time.run(fetchMonthlyRecap(manager.reads(), month, settings.calendar(), goals, today));
    };
    CHECK(of(2024y / April) == MonthlyRecap{2024y / April, 18'100, 18'100 / 30.0,
                                            MonthlyRecap::BestDay{today - days(32), 9000}, 2, 640});
    CHECK(of(2024y / May) == MonthlyRecap{2024y / May, 50, 50 / 3.0, MonthlyRecap::BestDay{today, 50}, 0, 0});
    CHECK(of(2024y / June) == MonthlyRecap{2024y / June});
    CHECK(monthName(2024y / January, today).in(EnglishTexts()) == "January");
    CHECK(monthName(2023y / December, today).in(EnglishTexts()) == "December 2023");
}
