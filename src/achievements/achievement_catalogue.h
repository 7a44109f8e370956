/// Which badges there are, and how they are worded.
#pragma once

#include "achievements/achievement.h"
#include "core/preferences.h"
#include "platform/number_format.h"
#include "platform/text_catalogue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

/// All badges in the order of their keys, none of them unlocked.
std::vector<Achievement> catalogue();

/// What it takes, in the unit of the badge's category.
std::int64_t requirement(Achievement::Key key);

/// The texts of badges in the language of a text catalogue, with numbers as a region writes them.
class AchievementTexts {
public:
    /// Keeps a reference to `texts`.
    AchievementTexts(const TextCatalogue& texts, const Locale& locale) : texts_(texts), numbers_(locale) {}

    std::string title(Achievement::Key key) const;
    std::string description(const Achievement& achievement, DistanceUnit distanceUnit) const;
    std::string categoryTitle(Achievement::AchievementCategory category) const;
    /// "1,200 more to unlock".
    std::string remainingText(const Achievement& achievement, DistanceUnit distanceUnit) const;
    /// A value and its label, "1,200" and "Steps"; none while nothing was reached.
    std::optional<std::pair<std::string, std::string>> reachedValueText(const Achievement& achievement,
                                                                        DistanceUnit distanceUnit) const;
    /// The number of kilometres or miles, without the unit.
    std::string formatDistance(std::int64_t metres, DistanceUnit distanceUnit) const;

private:
    std::string distanceText(std::int64_t metres, DistanceUnit distanceUnit) const;

    const TextCatalogue& texts_;
    NumberFormat numbers_;
};

}  // namespace pedvar
