#include "achievements/badge_tally.h"

#include "health/activity_reads.h"

#include <algorithm>
#include <numeric>

namespace pedvar {

namespace {

using Key = Achievement::Key;

// No person comes near, and days of it multiply and add up without overflow.
constexpr std::int64_t highestSteps = 1'000'000'000'000;
constexpr std::int64_t farOnWeekends = 15'000;  // steps
constexpr int sunday = 1, saturday = 7;

}  // namespace

void BadgeMarks::reach(Key key, std::int64_t value, Day day) {
    auto& best = progress[caseIndex(key)];
    best = std::max(best, value);
    if (value >= requirement(key)) meet(key, day);
}

void BadgeMarks::meet(Key key, Day day) {
    auto& met = metOn[caseIndex(key)];
    if (!met) met = day.time_since_epoch().count();
}

std::optional<Day> BadgeMarks::dayOf(Key key) const {
    const auto& met = metOn[caseIndex(key)];
    return met ? std::optional(Day(std::chrono::days(*met))) : std::nullopt;
}

void StepTally::add(const BadgeDay& added, const Calendar& calendar) {
    const Day day = added.day;
    const std::int64_t steps = std::min(added.steps, highestSteps);
    const bool isMet = steps >= added.goal;
    if (day == calendar.weekStart(day)) weekSteps = weekDaysMet = 0;
    if (day == firstDay(month(day))) monthSteps = monthDaysMet = 0;

    for (const Key key : {Key::firstSteps, Key::stepUp, Key::stepMaster, Key::stepLegend, Key::superStepper,
                          Key::ultraWalker, Key::explorer30K, Key::hero40K, Key::champion50K}) {
        marks.reach(key, steps, day);
    }
    streak = isMet ? streak + 1 : 0;
    for (const Key key : {Key::gettingStarted, Key::committed, Key::twoWeeksStrong, Key::monthlyChampion,
                          Key::unstoppable, Key::halfYearHero, Key::yearWarrior, Key::consistencyKing}) {
        marks.reach(key, streak, day);
    }
    addWeekend(added);
    addHours(added);

    weekSteps += steps;
    weekDaysMet += isMet ? 1 : 0;
    marks.reach(Key::centuryClub, weekSteps, day);
    marks.reach(Key::perfectWeek, weekDaysMet, day);

    monthSteps += steps;
    monthDaysMet += isMet ? 1 : 0;
    const std::int64_t wholeMonth = requirement(Key::monthMastery);  // whatever its length
    const bool isComplete = monthDaysMet == dayCount(month(day));
    marks.reach(Key::monthMastery, isComplete ? wholeMonth : std::min(monthDaysMet, wholeMonth - 1), day);
    marks.reach(Key::monthlyMilestone, monthSteps, day);

    if (steps * bestGoal > bestSteps * added.goal) {
        bestSteps = steps;
        bestGoal = added.goal;
    }
    if (steps >= 2 * added.goal) marks.meet(Key::doubleTrouble, day);
    if (steps >= 3 * added.goal) marks.meet(Key::tripleThreat, day);

    totalSteps += steps;
    for (const Key key : {Key::halfMillion, Key::millionStepClub, Key::elite5Million, Key::legend10Million}) {
        marks.reach(key, totalSteps, day);
    }
}

std::int64_t StepTally::bestRelativeTo(std::int64_t goal) const {
    return bestSteps / bestGoal * goal + bestSteps % bestGoal * goal / bestGoal;
}

void StepTally::addHours(const BadgeDay& added) {
    const auto stepsOf = [&hours = added.hours](std::ptrdiff_t begin, std::ptrdiff_t end) {
        return std::accumulate(hours.begin() + begin, hours.begin() + end, std::int64_t{0});
    };
    marks.reach(Key::earlyBird, stepsOf(0, 9), added.day);
    marks.reach(Key::nightOwl, stepsOf(21, 24), added.day);
    marks.reach(Key::midnightWalker, stepsOf(0, 1), added.day);
    for (const std::int64_t steps : added.hours) {
        marks.reach(Key::speedDemon, lastHour + steps, added.day);
        lastHour = steps;
    }
}

void StepTally::addWeekend(const BadgeDay& added) {
    const int number = weekday(added.day);
    if (number == saturday) weekendDaysMet = weekendDaysFar = 0;
    if (number != saturday && number != sunday) return;
    weekendDaysMet += added.steps >= added.goal ? 1 : 0;
    weekendDaysFar += added.steps >= farOnWeekends ? 1 : 0;
    marks.reach(Key::weekendWarrior, weekendDaysMet, added.day);
    marks.reach(Key::weekendWarriorPlus, weekendDaysFar, added.day);
}

void addDistance(BadgeMarks& marks, Day day, double metres) {
    const std::int64_t whole = std::min(wholeNumber(metres), highestSteps);
    for (const Key key : {Key::walker5K, Key::champion10K, Key::halfMarathon, Key::marathonMaster, Key::ultra50K,
                          Key::legend100K}) {
        marks.reach(key, whole, day);
    }
}

}  // namespace pedvar
