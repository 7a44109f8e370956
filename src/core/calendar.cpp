#include "core/calendar.h"

#include "core/check.h"

#include <algorithm>
#include <charconv>

namespace pedvar {

using namespace std::chrono;

namespace {

/// `value` with zeros before it up to `width` digits.
std::string padded(unsigned value, std::size_t width) {
    std::string digits = std::to_string(value);
    digits.insert(0, width - std::min(width, digits.size()), '0');
    return digits;
}

/// The number that all of `text` is the digits of.
std::optional<int> parseDigits(std::string_view text) {
    const auto isDigit = [](char character) { return '0' <= character && character <= '9'; };
    if (!std::ranges::all_of(text, isDigit)) return std::nullopt;
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

Calendar::Calendar(const ZoneRules& zone, int firstWeekday) : zone_(&zone), firstWeekday_(firstWeekday) {
    check(1 <= firstWeekday && firstWeekday <= 7, "a calendar's first weekday is a number from 1 to 7");
}

Day Calendar::day(Date moment) const {
    const Day shown = floor<days>(localTime(moment));
    // Clocks that go back across midnight show the evening again when the next day has begun.
    return moment < start(shown + days(1)) ? shown : shown + days(1);
}

Date Calendar::start(Day day) const {
    return instant(day);
}

Interval Calendar::interval(Day day) const {
    return {start(day), start(day + days(1))};
}

Interval Calendar::hour(Day day, int hour) const {
    return {instant(day + hours(hour)), instant(day + hours(hour + 1))};
}

Day Calendar::weekStart(Day day) const {
    return day - days((weekday(day) - firstWeekday_ + 7) % 7);
}

int weekday(Day day) {
    return static_cast<int>(std::chrono::weekday(day).c_encoding()) + 1;
}

year_month month(Day day) {
    const year_month_day date(day);
    return date.year() / date.month();
}

Day firstDay(year_month month) {
    return local_days(month / 1);
}

int dayCount(year_month month) {
    return static_cast<int>(static_cast<unsigned>((month / last).day()));
}

std::string isoText(Day day) {
    return monthKey(month(day)) + '-' + padded(static_cast<unsigned>(year_month_day(day).day()), 2);
}

std::string monthKey(year_month month) {
    const auto yearNumber = static_cast<unsigned>(static_cast<int>(month.year()));
    return padded(yearNumber, 4) + '-' + padded(static_cast<unsigned>(month.month()), 2);
}

std::optional<Day> parseDay(std::string_view text) {
    if (text.size() != 10 || text[7] != '-') return std::nullopt;
    const auto month = parseMonth(text.substr(0, 7));
    const auto number = parseDigits(text.substr(8));
    if (!month || !number) return std::nullopt;
    const auto date = *month / *number;
    return date.ok() ? std::optional(local_days(date)) : std::nullopt;
}

std::optional<year_month> parseMonth(std::string_view text) {
    if (text.size() != 7 || text[4] != '-') return std::nullopt;
    const auto yearNumber = parseDigits(text.substr(0, 4));
    const auto number = parseDigits(text.substr(5));
    if (!yearNumber || *yearNumber == 0 || !number) return std::nullopt;
    const auto month = year(*yearNumber) / *number;
    return month.ok() ? std::optional(month) : std::nullopt;
}

}  // namespace pedvar
