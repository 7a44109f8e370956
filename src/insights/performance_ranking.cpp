#include "insights/performance_ranking.h"

#include "core/reflection.h"

#include <algorithm>

namespace pedvar {

namespace {

static_assert(caseNames<RankingTier>.size() == tierCount);

// i18n: texts
constexpr std::array<TierDescription, tierCount> descriptions{{
    {"Top", "1%", 20'000},
    {"Elite", "1-5%", 14'000},
    {"All-Star", "5-15%", 10'000},
    {"Pro", "15-30%", 7000},
    {"Athlete", "30-70%", 4000},
    {"Rookie", "70-80%", 1500},
    {"Beginner", "80%+", 0},
}};
// i18n: end

/// The percentile of normalised steps from `steps` on.
struct PercentileStep {
    std::int64_t steps;
    int percentile;
};
constexpr std::array<PercentileStep, 15> percentileSteps{{
    {20'000, 99},
    {16'000, 97},
    {14'000, 95},
    {12'000, 92},
    {10'000, 87},
    {8500, 80},
    {7000, 72},
    {5500, 62},
    {4000, 50},
    {2500, 35},
    {1500, 20},
    {1000, 10},
    {500, 6},
    {100, 3},
    {0, 1},
}};

/// The lowest percentile of each tier.
constexpr std::array<int, tierCount> lowestPercentiles{99, 95, 85, 70, 40, 20, 0};

constexpr std::int64_t mostSteps =
    1'000'000'000;  // counts beyond rank the same; keeps ten times a count far from overflow

std::int64_t ageFactorTenths(std::int64_t age) {
    if (age < 0) return 10;
    if (age < 30) return 11;
    if (age < 50) return 10;
    if (age < 65) return 9;
    return 8;
}

}  // namespace

const TierDescription& description(RankingTier tier) {
    return descriptions[caseIndex(tier)];
}

std::optional<RankingTier> nextTier(RankingTier tier) {
    if (tier == RankingTier::topOne) return std::nullopt;
    return static_cast<RankingTier>(caseIndex(tier) - 1);
}

std::int64_t rankingAge(const PersonalMetrics& metrics) {
    return metrics.age.value_or(assumedAge);
}

double ageFactor(std::int64_t age) {
    return static_cast<double>(ageFactorTenths(age)) / 10;
}

int percentile(std::int64_t steps, std::int64_t age) {
    const std::int64_t normalised = std::clamp<std::int64_t>(steps, 0, mostSteps) * 10 / ageFactorTenths(age);
    return std::ranges::find_if(percentileSteps,
                                [&](const PercentileStep& step) { return normalised >= step.steps; })
        ->percentile;
}

int topPercent(std::int64_t steps, std::int64_t age) {
    return 100 - percentile(steps, age);
}

RankingTier tier(int percentile) {
    const auto reached = std::ranges::find_if(lowestPercentiles, [&](int lowest) { return percentile >= lowest; });
    const auto index = std::min<std::ptrdiff_t>(reached - lowestPercentiles.begin(), tierCount - 1);
    return static_cast<RankingTier>(index);
}

std::int64_t threshold(RankingTier tier, std::int64_t age) {
    return (description(tier).baseSteps * ageFactorTenths(age) + 5) / 10;
}

double progress(std::int64_t steps, std::int64_t threshold) {
    if (threshold < 1) return 0;
    return std::min(1.0, static_cast<double>(steps) / static_cast<double>(threshold));
}

PerformanceRanking performanceRanking(std::int64_t steps, std::int64_t age) {
    PerformanceRanking ranking{
        .steps = std::max<std::int64_t>(steps, 0), .age = age, .ageFactor = ageFactor(age), .progress = 1};
    ranking.percentile = percentile(ranking.steps, age);
    ranking.topPercent = topPercent(ranking.steps, age);
    ranking.tier = tier(ranking.percentile);
    ranking.nextTier = nextTier(ranking.tier);
    if (ranking.nextTier) {
        const std::int64_t next = threshold(*ranking.nextTier, age);
        ranking.stepsToGo = next - ranking.steps;
        ranking.progress = progress(ranking.steps, next);
    }
    for (std::size_t i = 0; i < tierCount; ++i) {
        ranking.thresholds[i] = threshold(static_cast<RankingTier>(i), age);
    }
    return ranking;
}

std::array<PyramidRow, tierCount> pyramid(RankingTier active, double availableWidth) {
    std::array<PyramidRow, tierCount> rows;
    for (std::size_t i = 0; i < tierCount; ++i) {
        const auto tier = static_cast<RankingTier>(i);
        rows[i] = {tier, tier == active, static_cast<double>(i + 1) / tierCount, availableWidth};
    }
    return rows;
}

}  // namespace pedvar
