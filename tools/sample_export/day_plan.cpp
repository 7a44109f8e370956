#include "sample_export/day_plan.h"

#include "sample_export/random.h"

#include <algorithm>
#include <numeric>
#include <span>

namespace pedvar::sample {

namespace {

using namespace std::chrono;

constexpr int yearLength = 365;                      // days
constexpr int vacationEnd = 75, vacationStart = 88;  // days before the last one, in every year
constexpr int longStreakEnd = 71, longStreakStart = 93;
constexpr int currentStreak = 8;
constexpr int briskPace = 108;  // steps a minute

/// A walk that a kind of day has as a rule.
struct Habit {
    int minute;     // when it begins
    int deviation;  // minutes earlier or later
    int share;      // of the day's walking
    int percent;    // of the days on which it happens
};

constexpr std::array workdayHabits{Habit{7 * 60 + 35, 12, 28, 95}, Habit{12 * 60 + 15, 20, 20, 80},
                                   Habit{17 * 60 + 5, 12, 30, 95}, Habit{19 * 60 + 40, 35, 22, 55}};
constexpr std::array weekendHabits{Habit{10 * 60 + 20, 40, 25, 80}, Habit{14 * 60 + 20, 60, 50, 95},
                                   Habit{18 * 60 + 50, 45, 25, 60}};

/// How likely a short walk is to begin in each hour.
using HourWeights = std::array<int, 24>;
constexpr HourWeights workdayWeights{0, 0, 0, 0, 0, 1, 5, 9, 6, 7, 8, 7, 9, 8, 6, 7, 7, 8, 11, 10, 8, 6, 3, 1};
constexpr HourWeights weekendWeights{1, 0, 0, 0, 0, 0, 0, 2, 6, 9, 10, 10, 10, 9, 8, 8, 9, 9, 10, 9, 8, 7, 5, 2};

bool isWeekend(sys_days date) {
    const weekday day{date};
    return day == Saturday || day == Sunday;
}

bool isBetween(int number, int end, int start) {
    return number % yearLength >= end && number % yearLength <= start;
}

int hourByWeight(const HourWeights& weights, Random& random) {
    int left = random.within(1, std::accumulate(weights.begin(), weights.end(), 0));
    int hour = 0;
    while ((left -= weights[static_cast<std::size_t>(hour)]) > 0) ++hour;
    return hour;
}

/// Puts walks into a day until it has its steps. Between two walks there is a minute of rest at least.
class DayFiller {
public:
    DayFiller(Day& day, Random& random) : day_(day), random_(random) {}

    void add(int first, int length, int pace, int phonePercent) {
        // Without watch the phone goes along.
        const bool isPhoneCarried = random_.happens(phonePercent) || !day_.isWatchWorn(first + length);
        for (int minute = first; minute < first + length && left_ > 0; ++minute) {
            if (minute >= minutesOfDay || !isFree(minute)) break;
            const int steps = std::min(left_, std::max(1, pace + random_.within(-pace / 8, pace / 8)));
            day_.steps[static_cast<std::size_t>(minute)] = static_cast<std::uint8_t>(steps);
            day_.isPhoneCarried[static_cast<std::size_t>(minute)] = isPhoneCarried;
            left_ -= steps;
            last_ = minute;
        }
        last_ = -1;
    }

    void fill(int target) {
        left_ = target;
        const bool isFreeDay = isWeekend(day_.date) || !day_.hasWatch;
        const std::span<const Habit> habits = isFreeDay ? std::span<const Habit>(weekendHabits) : workdayHabits;
        const int walking = target * 3 / 5;
        for (const Habit& habit : habits) {
            const int begin = habit.minute + random_.within(-habit.deviation, habit.deviation);
            const int length = std::max(5, walking * habit.share / 100 / briskPace);
            if (random_.happens(habit.percent)) add(begin, length, briskPace + random_.within(-8, 8), 85);
        }
        const HourWeights& weights = isFreeDay ? weekendWeights : workdayWeights;
        while (left_ > 0) {
            const int hour = hourByWeight(weights, random_);
            const int begin = hour * 60 + random_.within(0, 59);
            const int length = random_.within(1, 5);
            const int pace = random_.within(14, 62);
            add(begin, length, pace, 30);
        }
    }

private:
    /// Whether the minute and its neighbours have no steps, but for those of the walk in the making.
    bool isFree(int minute) const {
        const auto isTaken = [&](int other) {
            return other >= 0 && other < minutesOfDay && other != last_ &&
                   day_.steps[static_cast<std::size_t>(other)];
        };
        return !isTaken(minute - 1) && !isTaken(minute) && !isTaken(minute + 1);
    }

    Day& day_;
    Random& random_;
    int left_ = 0;
    int last_ = -1;
};

/// The steps of one day. `daysMet` counts those in a row before it that reached the goal.
int target(int number, bool isFreeDay, int daysMet, Random& random) {
    constexpr int longestByChance = 6;
    const bool isInLongStreak = isBetween(number, longStreakEnd, longStreakStart);
    const bool endsLongStreak = isBetween(number, longStreakEnd - 1, longStreakStart + 1) && !isInLongStreak;
    if (number == 0) return random.within(9'600, 11'400);
    if (number == currentStreak + 1 || endsLongStreak) return random.within(5'200, 8'900);
    if (number <= currentStreak || isInLongStreak) return random.within(10'350, 14'800);
    if (daysMet >= longestByChance || !random.happens(isFreeDay ? 48 : 42)) return random.within(3'900, 9'600);
    return random.within(10'300, isFreeDay ? 17'500 : 13'500);
}

Day planDay(sys_days date, int number, int daysMet, const Options& options) {
    Random random(options.seed, static_cast<std::uint64_t>(date.time_since_epoch().count()));
    Day day{.date = date, .number = number};
    const bool isVacation = isBetween(number, vacationEnd, vacationStart);
    day.hasWatch = !isVacation && (number == 0 || !random.happens(3));
    const bool isPhoneAtHome = day.hasWatch && random.happens(6);
    if (day.hasWatch && !isPhoneAtHome && random.happens(35)) day.watchOffFrom = random.within(20 * 60, 22 * 60);
    DayFiller(day, random).fill(target(number, isWeekend(date) || isVacation, daysMet, random));
    if (isPhoneAtHome) day.isPhoneCarried.fill(false);
    if (number == 0) std::fill(day.steps.begin() + options.exportMinute, day.steps.end(), std::uint8_t{0});
    return day;
}

/// 01:00 UTC on the last Sunday of the month.
std::int64_t clockChange(std::chrono::year inYear, month inMonth) {
    const sys_days sunday{inYear / inMonth / Sunday[last]};
    return duration_cast<seconds>((sunday + hours(1)).time_since_epoch()).count();
}

}  // namespace

int Day::total() const {
    return std::accumulate(steps.begin(), steps.end(), 0);
}

std::vector<Walk> Day::walks() const {
    std::vector<Walk> walks;
    for (int minute = 0; minute < minutesOfDay; ++minute) {
        const auto at = static_cast<std::size_t>(minute);
        if (steps[at] == 0) continue;
        if (walks.empty() || walks.back().end != minute) walks.push_back({minute, minute, isPhoneCarried[at]});
        walks.back().end = minute + 1;
    }
    return walks;
}

std::vector<Day> planDays(const Options& options) {
    std::vector<Day> days;
    int daysMet = 0;
    for (int number = options.days - 1; number >= 0; --number) {
        days.push_back(planDay(options.lastDay - std::chrono::days(number), number, daysMet, options));
        daysMet = days.back().total() >= dailyGoal ? daysMet + 1 : 0;
    }
    return days;
}

int berlinOffset(std::int64_t unixTime) {
    const auto inYear = year_month_day{floor<days>(sys_seconds{seconds(unixTime)})}.year();
    const bool isSummer = clockChange(inYear, March) <= unixTime && unixTime < clockChange(inYear, October);
    return isSummer ? 7200 : 3600;
}

std::int64_t berlinTime(sys_days date, int minute) {
    const std::int64_t inWinter = duration_cast<seconds>(date.time_since_epoch()).count() + minute * 60 - 3600;
    return berlinOffset(inWinter) == 3600 ? inWinter : inWinter - 3600;
}

}  // namespace pedvar::sample
