#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/health.h"
#include "core/reflection.h"
#include "insights/performance_ranking.h"

#include <cmath>

namespace pedvar {
namespace {

constexpr std::int64_t highestSteps = 1'000'000'000;

std::string nameOf(RankingTier tier, const Screen& screen) {
    return screen.text.lookUp(description(tier).name);
}

JsonObject document(const PerformanceRanking& ranking) {
    JsonObject thresholds;
    for (std::size_t i = 0; i < tierCount; ++i) {
        thresholds.emplace_back(std::string(caseName(static_cast<RankingTier>(i))),
                                JsonValue{ranking.thresholds[i]});
    }
    const auto& next = ranking.nextTier;
    return {
        {"steps", {ranking.steps}},
        {"age", {ranking.age}},
        {"ageFactor", {ranking.ageFactor}},
        {"percentile", {std::int64_t{ranking.percentile}}},
        {"topPercent", {std::int64_t{ranking.topPercent}}},
        {"tier", {std::string(caseName(ranking.tier))}},
        {"tierName", {std::string(description(ranking.tier).name)}},
        {"nextTier", next ? JsonValue{std::string(caseName(*next))} : JsonValue{}},
        {"stepsToGo", ranking.stepsToGo ? JsonValue{*ranking.stepsToGo} : JsonValue{}},
        {"progress", {ranking.progress}},
        {"thresholds", {std::move(thresholds)}},
    };
}

/// The tier, and how far it is to the next one.
std::string headline(const PerformanceRanking& ranking, const Screen& screen) {
    const Figures& figures = screen.figures;
    const std::string left = nameOf(ranking.tier, screen);
    const std::string top = screen.text("top {}% at the age of {}", ranking.topPercent, ranking.age);
    const std::string steps = figures.steps(ranking.steps);
    const std::string toGo = ranking.nextTier
                                 ? screen.text("{}: {}", nameOf(*ranking.nextTier, screen),
                                               screen.text(stepsToGoText, figures.number(*ranking.stepsToGo)))
                                 : screen.text.lookUp(topTierTitle);
    const std::string filled = bar(ranking.progress, screenWidth);
    std::string result = screen.bold(left) + rightAligned(top, screenWidth - columns(left)) + "\n" + steps +
                         rightAligned(toGo, screenWidth - columns(steps)) + "\n" + screen.accented(filled) +
                         screen.faint(groove(filled, screenWidth)) + "\n";
    if (!ranking.nextTier) result += screen.text.lookUp(topTierText) + "\n";
    return result;
}

std::string pyramidView(const PerformanceRanking& ranking, const Screen& screen) {
    constexpr std::size_t pyramidWidth = 42;
    std::string result = rightAligned(screen.text.lookUp(thresholdsSubtitle), screenWidth) + "\n";
    for (const PyramidRow& row : pyramid(ranking.tier, pyramidWidth)) {
        const auto half = static_cast<std::size_t>(std::round(row.widthFraction * row.availableWidth / 2));
        std::string stones;
        for (std::size_t i = 0; i < 2 * half; ++i) stones += row.isActive ? "█" : "░";
        const std::string name = leftAligned(nameOf(row.tier, screen), 10);
        const std::string threshold = screen.figures.number(ranking.thresholds[caseIndex(row.tier)]);
        result += std::string(2 + pyramidWidth / 2 - half, ' ');
        result += row.isActive ? screen.accented(stones) : screen.faint(stones);
        result += std::string(pyramidWidth / 2 - half + 3, ' ');
        result += row.isActive ? screen.bold(name) : name;
        result += rightAligned(threshold, 8) + "  " + leftAligned(description(row.tier).bracketLabel, 7);
        if (row.isActive) result += screen.accented("◂ " + screen.text("you"));
        result += "\n";
    }
    return result;
}

CommandResult<std::int64_t> ageOf(const RankRequest& request, Application& application) {
    if (!request.age) return rankingAge(application.settings().personalMetrics());
    const auto age = wholeNumberNamed(*request.age);
    if (age && isValidAge(*age)) return *age;
    return usageError(
        application.text()("\"{}\" is no age; one is a number of years from 0 to {}.", *request.age, highestAge));
}

CommandResult<std::int64_t> stepsOf(const RankRequest& request, Application& application) {
    if (!request.steps) {
        const auto health = application.health();
        if (!health) return std::unexpected(health.error());
        const Interval today = application.settings().calendar().interval(application.today());
        return application.loop().run(
            (*health)->manager.reads().fetchSteps(today.start, today.end, QueryPriority::normal));
    }
    const auto steps = wholeNumberNamed(*request.steps);
    if (steps && 0 <= *steps && *steps <= highestSteps) return *steps;
    return usageError(application.text()("\"{}\" is no number of steps; one is from 0 to {}.", *request.steps,
                                         application.screen().figures.number(highestSteps)));
}

}  // namespace

CommandResult<Report> run(const RankRequest& request, Application& application) {
    const auto age = ageOf(request, application);
    if (!age) return std::unexpected(age.error());
    const auto steps = stepsOf(request, application);
    if (!steps) return std::unexpected(steps.error());
    const PerformanceRanking ranking = performanceRanking(*steps, *age);
    if (application.wantsJson()) return Report{document(ranking)};
    const Screen screen = application.screen();
    return Report{headline(ranking, screen) + "\n" + pyramidView(ranking, screen)};
}

}  // namespace pedvar
