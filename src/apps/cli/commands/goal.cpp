#include "apps/cli/application.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/companion.h"

namespace pedvar {
namespace {

CommandResult<void> setGoal(std::string_view typed, Application& application) {
    const auto goal = wholeNumberNamed(typed);
    if (!goal || !isValidDailyGoal(*goal)) {
        return usageError(application.text()("\"{}\" is no daily goal; one is a number of steps from 1 to {}.",
                                             typed, application.screen().figures.number(highestDailyGoal)));
    }
    const auto companion = application.companion();
    if (!companion) return std::unexpected(companion.error());
    const auto saved = commandResult((*companion)->preferencesSync.setDailyGoal(*goal, application.today()));
    return saved ? application.refresh() : saved;
}

}  // namespace

CommandResult<Report> run(const GoalRequest& request, Application& application) {
    if (request.goal) {
        if (const auto set = setGoal(*request.goal, application); !set) return std::unexpected(set.error());
    }
    const std::int64_t goal = application.settings().goalHistory().goalOn(application.today());
    if (application.wantsJson()) return Report{JsonObject{{"dailyGoal", {goal}}}};
    const Screen screen = application.screen();
    const std::string steps = screen.figures.steps(goal);
    return Report{
        (request.goal ? screen.text("The daily goal is now {}.", steps) : screen.text("{} a day", steps)) + "\n"};
}

}  // namespace pedvar
