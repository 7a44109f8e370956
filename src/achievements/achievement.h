/// Badges.
#pragma once

#include "core/date.h"
#include "core/record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// Shares of the primary colours and of opacity, 0 to 1.
struct CodableColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double opacity = 1;

    using Fields =
        FieldList<&CodableColor::red, &CodableColor::green, &CodableColor::blue, &CodableColor::opacity>;
    bool operator==(const CodableColor&) const = default;
};
static_assert(isComplete<CodableColor>);

/// One badge and how far the person has come with it.
struct Achievement {
    enum class AchievementCategory {
        steps,     // in one calendar day
        distance,  // metres walked in one calendar day
        streaks,   // consecutive days on which the goal was met
        special,   // steps, or days, or a count
    };

    /// In the order in which badges are listed and evaluated.
    enum class Key {
        firstSteps,
        stepUp,
        stepMaster,
        stepLegend,
        superStepper,
        ultraWalker,
        explorer30K,
        hero40K,
        champion50K,
        walker5K,
        champion10K,
        halfMarathon,
        marathonMaster,
        ultra50K,
        legend100K,
        gettingStarted,
        committed,
        twoWeeksStrong,
        monthlyChampion,
        unstoppable,
        halfYearHero,
        yearWarrior,
        weekendWarrior,
        weekendWarriorPlus,
        earlyBird,
        nightOwl,
        midnightWalker,
        centuryClub,
        perfectWeek,
        monthMastery,
        speedDemon,
        consistencyKing,
        doubleTrouble,
        tripleThreat,
        monthlyMilestone,
        halfMillion,
        millionStepClub,
        elite5Million,
        legend10Million,
    };

    Key key = Key::firstSteps;
    std::string icon;  // name of a symbol
    CodableColor color;
    AchievementCategory category = AchievementCategory::steps;
    std::int64_t requirement = 0;  // in the unit of the category
    bool isUnlocked = false;
    std::optional<Date> unlockedDate;  // start of the day on which the requirement was first met
    std::int64_t progress = 0;         // in the unit of the requirement, and beyond it where more was reached

    using Fields = FieldList<&Achievement::key, &Achievement::icon, &Achievement::color, &Achievement::category,
                             &Achievement::requirement, &Achievement::isUnlocked, &Achievement::unlockedDate,
                             &Achievement::progress>;
    bool operator==(const Achievement&) const = default;
};
static_assert(isComplete<Achievement>);

/// All badges as they are stored.
struct AchievementsSnapshot {
    std::string zone;  // whose days the dates start
    std::vector<Achievement> achievements;

    using Fields = FieldList<&AchievementsSnapshot::zone, &AchievementsSnapshot::achievements>;
    bool operator==(const AchievementsSnapshot&) const = default;
};
static_assert(isComplete<AchievementsSnapshot>);

}  // namespace pedvar
