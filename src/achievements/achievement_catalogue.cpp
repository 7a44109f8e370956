#include "achievements/achievement_catalogue.h"

#include "core/units.h"
#include "platform/phrase.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace pedvar {

namespace {

using Category = Achievement::AchievementCategory;
using Key = Achievement::Key;

constexpr CodableColor blue{0.04, 0.46, 0.97};
constexpr CodableColor cyan{0.20, 0.70, 0.91};
constexpr CodableColor gold{1.0, 0.84, 0.0};
constexpr CodableColor orange{0.98, 0.57, 0.04};
constexpr CodableColor purple{0.67, 0.33, 0.86};
constexpr CodableColor indigo{0.34, 0.33, 0.82};
constexpr CodableColor green{0.21, 0.77, 0.36};
constexpr CodableColor mint{0.05, 0.77, 0.73};
constexpr CodableColor teal{0.18, 0.68, 0.77};
constexpr CodableColor red{0.95, 0.24, 0.20};
constexpr CodableColor yellow{0.98, 0.80, 0.04};

struct Badge {
    Key key;
    std::string_view title;
    std::string_view description;  // of distances the whole around the distance
    std::string_view icon;
    CodableColor color;
    Category category;
    std::int64_t requirement;
};

// i18n: texts
constexpr std::string_view walk = "Walk {} in a day";

constexpr std::array badges = std::to_array<Badge>({
    {Key::firstSteps, "First Steps", "Take 1,000 steps in a day", "figure.walk", blue, Category::steps, 1000},
    {Key::stepUp, "Step Up", "Take 5,000 steps in a day", "figure.walk.motion", cyan, Category::steps, 5000},
    {Key::stepMaster, "Step Master", "Take 10,000 steps in a day", "figure.walk.diamond.fill", blue,
     Category::steps, 10000},
    {Key::stepLegend, "Step Legend", "Take 15,000 steps in a day", "crown.fill", gold, Category::steps, 15000},
    {Key::superStepper, "Super Stepper", "Take 20,000 steps in a day", "bolt.fill", orange, Category::steps,
     20000},
    {Key::ultraWalker, "Ultra Walker", "Take 25,000 steps in a day", "sparkles", purple, Category::steps, 25000},
    {Key::explorer30K, "30K Explorer", "Take 30,000 steps in a day", "mountain.2.fill", purple, Category::steps,
     30000},
    {Key::hero40K, "40K Hero", "Take 40,000 steps in a day", "star.circle.fill", indigo, Category::steps, 40000},
    {Key::champion50K, "50K Champion", "Take 50,000 steps in a day - Elite status!", "diamond.fill", cyan,
     Category::steps, 50000},
    {Key::walker5K, "5K Walker", walk, "figure.walk.arrival", green, Category::distance, 5000},
    {Key::champion10K, "10K Champion", walk, "rosette", mint, Category::distance, 10000},
    {Key::halfMarathon, "Half Marathon", walk, "medal.fill", teal, Category::distance, 21097},
    {Key::marathonMaster, "Marathon Master", walk, "trophy.fill", gold, Category::distance, 42195},
    {Key::ultra50K, "50K Ultra", walk, "figure.hiking", purple, Category::distance, 50000},
    {Key::legend100K, "100K Legend", "Walk {} in a day - Legendary!", "sparkles.rectangle.stack.fill", gold,
     Category::distance, 100000},
    {Key::gettingStarted, "Getting Started", "3 day streak", "flame", orange, Category::streaks, 3},
    {Key::committed, "Committed", "7 day streak", "flame.fill", orange, Category::streaks, 7},
    {Key::twoWeeksStrong, "Two Weeks Strong", "14 day streak", "flame.circle.fill", red, Category::streaks, 14},
    {Key::monthlyChampion, "Monthly Champion", "30 day streak", "bolt.circle.fill", red, Category::streaks, 30},
    {Key::unstoppable, "Unstoppable", "100 day streak", "bolt.shield.fill", purple, Category::streaks, 100},
    {Key::halfYearHero, "Half Year Hero", "180 day streak", "calendar.circle.fill", purple, Category::streaks,
     180},
    {Key::yearWarrior, "Year Warrior", "365 day streak - One full year!", "crown.circle.fill", gold,
     Category::streaks, 365},
    {Key::weekendWarrior, "Weekend Warrior", "Hit goal on both Saturday and Sunday", "star.fill", indigo,
     Category::special, 2},
    {Key::weekendWarriorPlus, "Weekend Warrior Plus", "Hit 15,000 steps on both Saturday and Sunday",
     "star.square.fill", cyan, Category::special, 2},
    {Key::earlyBird, "Early Bird", "Take 5,000 steps before 9 AM", "sunrise.fill", yellow, Category::special,
     5000},
    {Key::nightOwl, "Night Owl", "Take 3,000 steps after 9 PM", "moon.stars.fill", indigo, Category::special,
     3000},
    {Key::midnightWalker, "Midnight Walker", "Take 1,000 steps between midnight and 1 AM", "moon.circle.fill",
     purple, Category::special, 1000},
    {Key::centuryClub, "Century Club", "Take 100,000 steps in a week", "checkmark.circle.fill", purple,
     Category::special, 100000},
    {Key::perfectWeek, "Perfect Week", "Hit your daily goal every day for a week", "checkmark.seal.fill", green,
     Category::special, 7},
    {Key::monthMastery, "Month Mastery", "Hit your daily goal every day for a month", "seal.fill", gold,
     Category::special, 30},
    {Key::speedDemon, "Speed Demon", "Take 10,000 steps in a 2-hour window", "bolt.circle.fill", yellow,
     Category::special, 10000},
    {Key::consistencyKing, "Consistency King", "Hit your goal 5 days in a row", "arrow.up.circle.fill", green,
     Category::special, 5},
    {Key::doubleTrouble, "Double Trouble", "Hit 2x your daily goal in one day", "multiply.circle.fill", orange,
     Category::special, 20000},
    {Key::tripleThreat, "Triple Threat", "Hit 3x your daily goal in one day", "number.circle.fill", red,
     Category::special, 30000},
    {Key::monthlyMilestone, "Monthly Milestone", "Take 300,000 steps in a month", "calendar.badge.clock", mint,
     Category::special, 300000},
    {Key::halfMillion, "Half Million", "Reach 500,000 total steps", "number.square.fill", blue, Category::special,
     500000},
    {Key::millionStepClub, "Million Step Club", "Reach 1,000,000 total steps!", "infinity.circle.fill", gold,
     Category::special, 1000000},
    {Key::elite5Million, "5 Million Elite", "Reach 5,000,000 total steps - Elite walker!", "diamond.circle.fill",
     purple, Category::special, 5000000},
    {Key::legend10Million, "10 Million Legend", "Reach 10,000,000 total steps - Legendary status!",
     "star.leadinghalf.filled", gold, Category::special, 10000000},
});
constexpr std::array categoryTitles = std::to_array<std::string_view>({"Steps", "Distance", "Streaks", "Special"});
// i18n: end
static_assert(badges.size() == caseNames<Key>.size());
static_assert(std::ranges::is_sorted(badges, std::ranges::less(), &Badge::key));

const Badge& badge(Key key) {
    return badges[caseIndex(key)];
}

bool isCountedInDays(const Achievement& achievement) {
    constexpr std::array keys{Key::weekendWarrior, Key::weekendWarriorPlus, Key::perfectWeek, Key::monthMastery,
                              Key::consistencyKing};
    return achievement.category == Category::streaks || std::ranges::find(keys, achievement.key) != keys.end();
}

}  // namespace

std::vector<Achievement> catalogue() {
    std::vector<Achievement> achievements;
    for (const Badge& badge : badges) {
        achievements.push_back({.key = badge.key,
                                .icon = std::string(badge.icon),
                                .color = badge.color,
                                .category = badge.category,
                                .requirement = badge.requirement,
                                .unlockedDate = std::nullopt});
    }
    return achievements;
}

std::int64_t requirement(Key key) {
    return badge(key).requirement;
}

std::string AchievementTexts::title(Key key) const {
    return texts_.text(badge(key).title);
}

std::string AchievementTexts::description(const Achievement& achievement, DistanceUnit distanceUnit) const {
    const std::string_view text = badge(achievement.key).description;
    if (achievement.category != Category::distance) return texts_.text(text);
    return Phrase(text, {distanceText(achievement.requirement, distanceUnit)}).in(texts_);
}

std::string AchievementTexts::categoryTitle(Category category) const {
    return texts_.text(categoryTitles[caseIndex(category)]);
}

std::string AchievementTexts::remainingText(const Achievement& achievement, DistanceUnit distanceUnit) const {
    const std::int64_t remaining = std::max<std::int64_t>(achievement.requirement - achievement.progress, 0);
    const std::string value = achievement.category == Category::distance ? distanceText(remaining, distanceUnit)
                                                                         : numbers_.number(remaining);
    return Phrase("{} more to unlock", {value}).in(texts_);
}

std::optional<std::pair<std::string, std::string>> AchievementTexts::reachedValueText(
    const Achievement& achievement, DistanceUnit distanceUnit) const {
    const std::int64_t progress = achievement.progress;
    if (progress < 1) return std::nullopt;
    if (achievement.category == Category::distance) {
        return std::pair(distanceText(progress, distanceUnit), texts_.text("Distance"));
    }
    return std::pair(numbers_.number(progress),
                     isCountedInDays(achievement) ? texts_.text("Days") : texts_.text("Steps"));
}

std::string AchievementTexts::formatDistance(std::int64_t metres, DistanceUnit distanceUnit) const {
    const double unit = distanceUnit == DistanceUnit::miles ? metersPerMile : metersPerKilometer;
    return numbers_.number(static_cast<double>(metres) / unit, 1);
}

std::string AchievementTexts::distanceText(std::int64_t metres, DistanceUnit distanceUnit) const {
    const std::string distance = formatDistance(metres, distanceUnit);
    return (distanceUnit == DistanceUnit::miles ? Phrase("{} mi", {distance}) : Phrase("{} km", {distance}))
        .in(texts_);
}

}  // namespace pedvar
