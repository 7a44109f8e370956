#include "core/calendar.h"

#include "support/fake_zone.h"

#include <doctest/doctest.h>

#include <map>
#include <string>

using namespace pedvar;
using namespace std::chrono_literals;
using std::chrono::days;
using std::chrono::December;
using std::chrono::February;
using std::chrono::May;

namespace {

const FakeZone newYork(-5h, {{utc(2024y / 3 / 10, 7h), -4h}, {utc(2024y / 11 / 3, 6h), -5h}});
/// Goes forward from midnight to 1:00 and back from midnight to 23:00.
const FakeZone saoPaulo(-3h, {{utc(2018y / 11 / 4, 3h), -2h}, {utc(2019y / 2 / 17, 2h), -3h}});
/// Changes by half an hour.
const FakeZone lordHowe(11h, {{utc(2024y / 4 / 6, 15h), 10h + 30min}, {utc(2024y / 10 / 5, 15h + 30min), 11h}});
/// Goes back from 0:01 to 23:01, so that midnight comes twice.
const FakeZone newfoundland(-150min, {{utc(2010y / 11 / 7, 2h + 31min), -210min}});
/// Has no 30 December 2011.
const FakeZone samoa(-10h, {{utc(2011y / 12 / 30, 10h), 14h}});

struct Place {
    std::string name;
    const FakeZone& zone;
    Day change;
};
const Place places[] = {
    {"New York in spring", newYork, Day(2024y / 3 / 10)},   {"New York in autumn", newYork, Day(2024y / 11 / 3)},
    {"Sao Paulo in spring", saoPaulo, Day(2018y / 11 / 4)}, {"Sao Paulo in autumn", saoPaulo, Day(2019y / 2 / 16)},
    {"Lord Howe in autumn", lordHowe, Day(2024y / 4 / 7)},  {"Lord Howe in spring", lordHowe, Day(2024y / 10 / 6)},
    {"Newfoundland", newfoundland, Day(2010y / 11 / 6)},    {"Samoa", samoa, Day(2011y / 12 / 30)},
};

/// The hours of a day that do not last one hour, by their number.
std::map<int, Seconds> oddHours(const FakeZone& zone, Day day) {
    const Calendar calendar(zone, 1);
    std::map<int, Seconds> odd;
    for (int hour = 0; hour < 24; ++hour) {
        const Seconds length = calendar.hour(day, hour).length();
        if (length != 1h) odd[hour] = length;
    }
    return odd;
}

}  // namespace

TEST_CASE("days and hours follow each other without gap or overlap, and every moment is in its day") {
    for (const Place& place : places) {
        CAPTURE(place.name);
        const Calendar calendar(place.zone, 1);
        for (Day day = place.change - days(3); day < place.change + days(3); day += days(1)) {
            const Interval whole = calendar.interval(day);
            Date end = whole.start;
            for (int hour = 0; hour < 24; ++hour) {
                CHECK(calendar.hour(day, hour).start == end);
                end = calendar.hour(day, hour).end;
            }
            CHECK(whole.end == end);
            for (Date moment = whole.start; moment < whole.end; moment += 30s) {
                if (calendar.day(moment) != day) FAIL(isoText(day));
            }
        }
    }
}

TEST_CASE("an hour that clocks skip is empty, one that they repeat is longer, and the day with it") {
    using Hours = std::map<int, Seconds>;
    const Hours lengths[] = {{{2, 0h}},    {{1, 2h}},    {{0, 0h}}, {{23, 2h}},
                             {{1, 90min}}, {{2, 30min}}, {},        {{0, 0h}, {1, 0h}}};
    for (std::size_t i = 0; i + 1 < std::size(places); ++i) {
        CAPTURE(places[i].name);
        CHECK(oddHours(places[i].zone, places[i].change) == lengths[i]);
    }
    CHECK(oddHours(newfoundland, Day(2010y / 11 / 7)) == Hours{{0, 2h}});
    CHECK(oddHours(newYork, Day(2024y / 7 / 1)).empty());
    CHECK(Calendar(newYork, 1).interval(Day(2024y / 3 / 10)).length() == 23h);
    CHECK(Calendar(newYork, 1).interval(Day(2024y / 11 / 3)).length() == 25h);
    CHECK(Calendar(samoa, 1).interval(Day(2011y / 12 / 30)).length() == 0s);
}

TEST_CASE("a day begins at its first midnight, or where that does not exist when the clocks go on") {
    CHECK(Calendar(newYork, 1).startOfDay(utc(2024y / 3 / 11, 3h)) == utc(2024y / 3 / 10, 5h));
    CHECK(Calendar(saoPaulo, 1).start(Day(2018y / 11 / 4)) == utc(2018y / 11 / 4, 3h));
    CHECK(Calendar(saoPaulo, 1).start(Day(2019y / 2 / 17)) == utc(2019y / 2 / 17, 3h));
    CHECK(Calendar(newfoundland, 1).start(Day(2010y / 11 / 7)) == utc(2010y / 11 / 7, 2h + 30min));
    const FakeZone east(14h);
    CHECK(Calendar(east, 1).day(utc(1969y / 12 / 31, 9h + 59min)) == Day(1969y / 12 / 31));
    CHECK(Calendar(east, 1).day(utc(1969y / 12 / 31, 10h)) == Day(1970y / 1 / 1));
}

TEST_CASE("a week begins on the last first weekday, whichever that is") {
    const Day wednesday(2024y / 2 / 28);
    CHECK(weekday(wednesday) == 4);
    const int back[] = {3, 2, 1, 0, 6, 5, 4};
    for (int first = 1; first <= 7; ++first) {
        const Day start = Calendar(newYork, first).weekStart(wednesday);
        CHECK(weekday(start) == first);
        CHECK(wednesday - start == days(back[first - 1]));
    }
    CHECK(weekday(Day(1900y / 1 / 7)) == 1);
}

TEST_CASE("months know their days, and texts of days and months read back") {
    CHECK(dayCount(2024y / February) == 29);
    CHECK(dayCount(1900y / February) == 28);
    CHECK(month(Day(2023y / 12 / 31)) == 2023y / December);
    CHECK(firstDay(2023y / December) == Day(2023y / 12 / 1));
    CHECK(isoText(Day(987y / 6 / 5)) == "0987-06-05");
    for (const char* text : {"0001-01-01", "1969-12-31", "2024-02-29", "9999-12-31"}) {
        CAPTURE(text);
        REQUIRE(parseDay(text));
        CHECK(isoText(*parseDay(text)) == text);
    }
    CHECK(parseMonth(monthKey(2024y / May)) == 2024y / May);
}

TEST_CASE("texts that are no day or no month are refused") {
    for (const char* text : {"", "2023-02-29", "2024-5-1", "2024-05-01 ", " 2024-05-01", "2024-05-01T00",
                             "2024/05/01", "2024-05", "0000-01-01", "-024-05-01", "2024-00-10", "2024-13-01",
                             "2024-04-31", "2024-04-00", "2024-04-+1", "２024-05-01"}) {
        CAPTURE(text);
        CHECK(!parseDay(text));
    }
    for (const char* text :
         {"", "2024-5", "2024-00", "2024-13", "0000-05", "2024-05-01", "202405", "2024-+5", "+024-05"}) {
        CAPTURE(text);
        CHECK(!parseMonth(text));
    }
}
