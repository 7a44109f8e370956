/// Where a day's steps stand among people of the same age.
#pragma once

#include "core/personal_metrics.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace pedvar {

/// From the top of the pyramid down.
enum class RankingTier { topOne, elite, excellent, aboveAverage, average, belowAverage, starting };

inline constexpr std::size_t tierCount = 7;

struct TierDescription {
    std::string_view name;          // "All-Star"
    std::string_view bracketLabel;  // "5-15%" of all people; rounder than the cut points of `tier` on purpose
    std::int64_t baseSteps = 0;     // a day, where the age factor is 1
};

const TierDescription& description(RankingTier tier);
/// The tier above; none at the top.
std::optional<RankingTier> nextTier(RankingTier tier);

inline constexpr std::int64_t assumedAge = 35;  // years; of a person who told none

std::int64_t rankingAge(const PersonalMetrics& metrics);

/// The share of the base steps that counts the same at `age`, in years: 0.8 to 1.1.
double ageFactor(std::int64_t age);
/// 1 to 99. Never falls when the steps rise.
int percentile(std::int64_t steps, std::int64_t age);
int topPercent(std::int64_t steps, std::int64_t age);
RankingTier tier(int percentile);
/// The fewest steps a day that reach `tier` at `age`.
std::int64_t threshold(RankingTier tier, std::int64_t age);
/// 0 to 1; 0 towards a threshold below 1.
double progress(std::int64_t steps, std::int64_t threshold);

/// All that the ranking card shows.
struct PerformanceRanking {
    std::int64_t steps = 0;
    std::int64_t age = assumedAge;
    double ageFactor = 1;
    int percentile = 1;
    int topPercent = 99;
    RankingTier tier = RankingTier::starting;
    std::optional<RankingTier> nextTier;
    std::optional<std::int64_t> stepsToGo;             // to the next tier; none at the top
    double progress = 0;                               // to the next tier; 1 at the top
    std::array<std::int64_t, tierCount> thresholds{};  // in the order of `RankingTier`
    bool operator==(const PerformanceRanking&) const = default;
};

/// Steps below 0 count as 0.
PerformanceRanking performanceRanking(std::int64_t steps, std::int64_t age);

/// One row of the pyramid.
struct PyramidRow {
    RankingTier tier = RankingTier::topOne;
    bool isActive = false;     // the person's tier
    double widthFraction = 0;  // of `availableWidth`, narrow at the top
    double availableWidth = 0;
};

/// The rows from the top down.
std::array<PyramidRow, tierCount> pyramid(RankingTier active, double availableWidth);

/// What the card says.
// i18n: texts
inline constexpr std::string_view stepsToGoText = "{} steps to go";
inline constexpr std::string_view topTierTitle = "Top of the pyramid";
inline constexpr std::string_view topTierText = "You're in the highest tier - keep it up!";
inline constexpr std::string_view thresholdsTitle = "Tier thresholds";
inline constexpr std::string_view thresholdsSubtitle = "Daily steps required at your age";
// i18n: end

}  // namespace pedvar
