#include "insights/calendar_metric_store.h"

#include "support/manager_fixture.h"

#include <doctest/doctest.h>

using namespace pedvar;
using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

constexpr auto steps = CalendarMetric::steps;

struct CalendarPage : ManagerFixture {
    CalendarMetricStore page{time, time, settings, manager.reads()};

    Day ago(int count) const { return today - days(count); }
    /// How many queries it took.
    std::size_t load(const std::vector<Day>& days, CalendarMetric metric = steps) {
        const auto before = store.asked.size();
        page.load(days, metric);
        time.settle();
        return store.asked.size() - before;
    }
    bool needsFetch(Day day) const { return page.needsFetch(day, steps, settings.calendar().day(time.now())); }
};

}  // namespace

TEST_CASE_FIXTURE(CalendarPage, "a month is read in one pass, each metric on its own, days to come not at all") {
    walk(1000, 2);
    walk(300.5, 0);
    std::vector<Day> may;
    for (int day = 0; day < 31; ++day) may.push_back(ago(2) + days(day));
    CHECK(load(may) == 1);
    CHECK(page.value(ago(2), steps) == 1000);
    CHECK(page.value(ago(1), steps) == 0);
    CHECK(page.value(today, steps) == 300);
    CHECK(!page.value(ago(-1), steps));
    CHECK(load(may, CalendarMetric::distance) == 1);
    walk(1000, 1);
    CHECK(load(may) == 0);
}

TEST_CASE_FIXTURE(CalendarPage, "a day is not read twice at once, and a cancelled load lets the next one read") {
    store.isHolding = true;
    for (int day = 6; day > 0; --day) CHECK(load({ago(day)}) == 1);  // no query more at a time
    CHECK(load({ago(1), ago(2)}) == 0);
    auto task = page.load({ago(9)}, steps);
    time.settle();
    CHECK(!needsFetch(ago(9)));
    task.cancel();
    while (store.running() > 0) {
        store.answer();
        time.settle();
    }
    CHECK(!needsFetch(ago(1)));
    CHECK(needsFetch(ago(9)));
}

TEST_CASE_FIXTURE(CalendarPage, "today is fresh for 300 seconds, for each metric on its own") {
    load({today});
    time.advance(300s);
    CHECK(!needsFetch(today));
    load({today}, CalendarMetric::flights);
    time.advance(1s);
    CHECK(needsFetch(today));
    CHECK(!page.needsFetch(today, CalendarMetric::flights, today));
    time.setClock(time.now() - 1h);
    CHECK(needsFetch(today));
}

TEST_CASE_FIXTURE(CalendarPage,
                  "yesterday is read once more after midnight, even when the new day was read first") {
    store.isHolding = true;
    load({today});
    time.setClock(time.now() + 24h);  // midnight passes before the answer
    store.answer();
    time.settle();
    store.isHolding = false;
    walk(70, 0);
    CHECK(load({ago(-1)}) == 1);
    CHECK(load({today}) == 1);
    CHECK(page.value(today, steps) == 70);
    CHECK(load({today}) == 0);
}

TEST_CASE_FIXTURE(CalendarPage, "what cannot be read keeps no value, leaves an older one, and is read again") {
    walk(70, 0);
    load({today});
    time.advance(301s);
    breakStore();
    load({ago(1), today});
    CHECK(!page.value(ago(1), steps));
    CHECK(page.value(today, steps) == 70);
    CHECK(needsFetch(ago(1)));
    CHECK(needsFetch(today));
}
