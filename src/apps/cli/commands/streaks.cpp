#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/health.h"

namespace pedvar {
namespace {

JsonObject document(std::int64_t goal, const HealthKitManager& manager) {
    const auto& lastMet = manager.lastMetDate.value();
    return {
        {"dailyGoal", {goal}},
        {"currentStreak", {manager.currentStreak.value()}},
        {"longestStreak", {manager.longestStreak.value()}},
        {"lastMetDate", lastMet ? JsonValue{isoText(*lastMet)} : JsonValue{}},
    };
}

std::string view(std::int64_t goal, const HealthKitManager& manager, const Screen& screen) {
    const Figures& figures = screen.figures;
    const auto& lastMet = manager.lastMetDate.value();
    return labelled({
        {screen.text("Daily goal"), figures.steps(goal)},
        {screen.text("Current streak"), figures.days(manager.currentStreak)},
        {screen.text("Longest streak"), figures.days(manager.longestStreak)},
        {screen.text("Last met"), lastMet ? figures.longDate(*lastMet) : screen.text("never")},
    });
}

}  // namespace

CommandResult<Report> run(const StreaksRequest&, Application& application) {
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    HealthKitManager& manager = (*health)->manager;
    application.loop().run(manager.updateStreaks());
    const std::int64_t goal = application.settings().goalHistory().goalOn(application.today());
    if (application.wantsJson()) return Report{document(goal, manager)};
    return Report{view(goal, manager, application.screen())};
}

}  // namespace pedvar
