/// What the person of the sample does, minute by minute.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <vector>

namespace pedvar::sample {

struct Options {
    int days = 184;  // half a year
    std::chrono::sys_days lastDay = std::chrono::sys_days{std::chrono::year{2026} / 6 / 14};
    int exportMinute = 18 * 60;  // of the last day, when the export is made
    std::uint64_t seed = 1;
    bool isDense = false;  // watch samples of seconds instead of minutes
};

constexpr int minutesOfDay = 24 * 60;
constexpr int dailyGoal = 10'000;

/// Consecutive minutes with steps, as the clock shows them: [first, end).
struct Walk {
    int first;
    int end;
    bool isPhoneCarried;
};

struct Day {
    std::chrono::sys_days date;
    int number = 0;  // days before the last one
    bool hasWatch = true;
    int watchOffFrom = minutesOfDay;                 // until the end of the day on its charger
    std::array<std::uint8_t, minutesOfDay> steps{};  // of each minute of the clock
    std::array<bool, minutesOfDay> isPhoneCarried{};

    int total() const;
    std::vector<Walk> walks() const;
    bool isWatchWorn(int minute) const { return hasWatch && minute < watchOffFrom; }
};

/// The days up to the last one, oldest first.
///
/// A workday walks to work, at noon and home, a weekend later and longer; in between are short walks about the
/// house. The eight days before the last one reach the goal and the ninth does not. In every year there are two
/// weeks of vacation without the watch, inside the longest streak, of 23 days. The last day ends with the export.
std::vector<Day> planDays(const Options& options);

/// Seconds since 1970 when the clocks of Berlin show `minute` of `date`.
std::int64_t berlinTime(std::chrono::sys_days date, int minute);
/// What those clocks add to UTC then, in seconds; by the rule that holds since 1996.
int berlinOffset(std::int64_t unixTime);

}  // namespace pedvar::sample
