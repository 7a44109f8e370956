/// What days come to, badge by badge.
#pragma once

#include "achievements/achievement_catalogue.h"
#include "core/calendar.h"

#include <array>
#include <cstdint>
#include <optional>

namespace pedvar {

/// How far each badge has come, by key.
struct BadgeMarks {
    static constexpr std::size_t count = caseNames<Achievement::Key>.size();

    std::array<std::int64_t, count> progress{};
    std::array<std::optional<std::int64_t>, count> metOn{};  // days since 1970-01-01

    using Fields = FieldList<&BadgeMarks::progress, &BadgeMarks::metOn>;
    bool operator==(const BadgeMarks&) const = default;

    /// `value` was reached on `day`, no earlier than what was reached before.
    void reach(Achievement::Key key, std::int64_t value, Day day);
    /// The badge was earned on `day`, unless it was before.
    void meet(Achievement::Key key, Day day);

    std::int64_t progressOf(Achievement::Key key) const { return progress[caseIndex(key)]; }
    std::optional<Day> dayOf(Achievement::Key key) const;
};
static_assert(isComplete<BadgeMarks>);

/// A day as the badges of steps, streaks and special feats see it.
struct BadgeDay {
    Day day;
    std::int64_t steps;
    std::array<std::int64_t, 24> hours;  // of the clock; samples of all day are in `steps` only
    std::int64_t goal;                   // in force on the day
};

/// All badges but those of distance, over days that follow each other without a gap. Badges of two and three times
/// the goal have no progress of their own: it depends on the goal of whoever looks.
struct StepTally {
    BadgeMarks marks;
    std::int64_t streak = 0;  // days
    std::int64_t totalSteps = 0;
    std::int64_t weekSteps = 0;  // of the calendar week in the making, as the next ones are
    std::int64_t weekDaysMet = 0;
    std::int64_t monthSteps = 0;
    std::int64_t monthDaysMet = 0;
    std::int64_t weekendDaysMet = 0;
    std::int64_t weekendDaysFar = 0;
    std::int64_t lastHour = 0;   // steps of the hour before midnight
    std::int64_t bestSteps = 0;  // of the day with the most steps for its goal
    std::int64_t bestGoal = 1;   // of the same day

    using Fields = FieldList<&StepTally::marks, &StepTally::streak, &StepTally::totalSteps, &StepTally::weekSteps,
                             &StepTally::weekDaysMet, &StepTally::monthSteps, &StepTally::monthDaysMet,
                             &StepTally::weekendDaysMet, &StepTally::weekendDaysFar, &StepTally::lastHour,
                             &StepTally::bestSteps, &StepTally::bestGoal>;
    bool operator==(const StepTally&) const = default;

    /// `calendar` says where weeks begin.
    void add(const BadgeDay& day, const Calendar& calendar);
    /// The best ratio of a day to its goal, times `goal`, rounded down.
    std::int64_t bestRelativeTo(std::int64_t goal) const;

private:
    void addHours(const BadgeDay& day);
    void addWeekend(const BadgeDay& day);
};
static_assert(isComplete<StepTally>);

/// The badges of distance. `metres` on foot.
void addDistance(BadgeMarks& marks, Day day, double metres);

}  // namespace pedvar
