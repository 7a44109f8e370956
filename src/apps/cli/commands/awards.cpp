#include "achievements/achievements_store.h"
#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/command.h"

#include <fmt/ranges.h>

namespace pedvar {
namespace {

using Category = Achievement::AchievementCategory;

struct Awards {
    std::vector<Achievement> list;
    AchievementTexts texts;
    Calendar calendar;
    DistanceUnit unit;
};

JsonObject colorDocument(const CodableColor& color) {
    return {{"red", {color.red}}, {"green", {color.green}}, {"blue", {color.blue}}, {"opacity", {color.opacity}}};
}

JsonObject document(const Awards& awards) {
    JsonArray list;
    for (const Achievement& award : awards.list) {
        const auto reached = awards.texts.reachedValueText(award, awards.unit);
        JsonObject entry{
            {"key", {std::string(caseName(award.key))}},
            {"title", {awards.texts.title(award.key)}},
            {"description", {awards.texts.description(award, awards.unit)}},
            {"icon", {award.icon}},
            {"color", {colorDocument(award.color)}},
            {"category", {std::string(caseName(award.category))}},
            {"requirement", {award.requirement}},
            {"progress", {award.progress}},
            {"isUnlocked", {award.isUnlocked}},
            {"unlockedDate",
             award.unlockedDate ? JsonValue{isoText(awards.calendar.day(*award.unlockedDate))} : JsonValue{}},
            {"remainingText", {awards.texts.remainingText(award, awards.unit)}},
            {"reachedValueText",
             reached ? JsonValue{JsonArray{{reached->first}, {reached->second}}} : JsonValue{}},
        };
        list.push_back({std::move(entry)});
    }
    return {{"awards", {std::move(list)}}};
}

double shareReached(const Achievement& award) {
    return static_cast<double>(award.progress) / static_cast<double>(award.requirement);
}

/// Two lines: the title with the day of the unlocking, or with how far it is; then what it takes.
std::string view(const Achievement& award, const Awards& awards, const Screen& screen) {
    constexpr std::size_t titleWidth = 24, barWidth = 24;
    const std::string title = leftAligned(awards.texts.title(award.key), titleWidth);
    std::string line;
    if (award.isUnlocked) {
        const std::string day =
            award.unlockedDate ? screen.figures.date(awards.calendar.day(*award.unlockedDate)) : std::string();
        line = "✓ " + screen.bold(title) + rightAligned(day, screenWidth - titleWidth - 2);
    } else {
        const std::string filled = bar(shareReached(award), barWidth);
        const std::string remaining = awards.texts.remainingText(award, awards.unit);
        line = "  " + title + screen.accented(filled) + screen.faint(groove(filled, barWidth)) +
               rightAligned(remaining, screenWidth - titleWidth - barWidth - 2);
    }
    return line + "\n  " + screen.faint(awards.texts.description(award, awards.unit)) + "\n";
}

std::string view(const Awards& awards, const Screen& screen) {
    std::string result;
    for (std::size_t index = 0; index < caseNames<Category>.size(); ++index) {
        const auto category = static_cast<Category>(index);
        std::string lines;
        std::int64_t count = 0, unlocked = 0;
        for (const Achievement& award : awards.list) {
            if (award.category != category) continue;
            lines += view(award, awards, screen);
            ++count;
            unlocked += award.isUnlocked ? 1 : 0;
        }
        if (count == 0) continue;
        const std::string title = awards.texts.categoryTitle(category);
        const std::string share = screen.text("{} of {}", unlocked, count);
        result += (result.empty() ? "" : "\n") + screen.bold(title) +
                  rightAligned(share, screenWidth - columns(title)) + "\n\n" + lines;
    }
    return result;
}

}  // namespace

CommandResult<Report> run(const AwardsRequest& request, Application& application) {
    const auto category = request.category ? caseNamed<Category>(*request.category) : std::nullopt;
    if (request.category && !category) {
        return usageError(application.text()("There is no category \"{}\"; valid: {}.",
                                             harmless(*request.category),
                                             fmt::format("{}", fmt::join(caseNames<Category>, ", "))));
    }
    const auto store = application.achievements();
    if (!store) return std::unexpected(store.error());
    application.loop().run((*store)->evaluate());
    Awards awards{(*store)->achievements, application.achievementTexts(), application.settings().calendar(),
                  application.settings().preferences().distanceUnit};
    std::erase_if(awards.list, [&](const Achievement& award) { return category && award.category != *category; });
    if (application.wantsJson()) return Report{document(awards)};
    return Report{view(awards, application.screen())};
}

}  // namespace pedvar
