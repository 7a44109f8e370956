#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/health.h"

namespace pedvar {
namespace {

std::string view(std::chrono::year_month month, std::span<const DailyStepData> days, Application& application) {
    const Screen screen = application.screen();
    const Calendar calendar = application.settings().calendar();
    const GoalHistory goals = application.settings().goalHistory();
    std::int64_t total = 0;
    double distance = 0;
    for (const DailyStepData& day : days) {
        total += day.steps;
        distance += day.distance;
    }
    return screen.figures.month(month) + "\n\n" + dayChart(days, goals, calendar, application.today(), screen) +
           "\n" +
           labelled({
               {screen.text("Total"), screen.figures.steps(total)},
               {screen.text("Distance"), screen.figures.distance(distance)},
           });
}

}  // namespace

CommandResult<Report> run(const MonthRequest& request, Application& application) {
    const auto wanted = request.month ? parseMonth(*request.month) : std::optional(month(application.today()));
    if (!wanted) {
        return usageError(application.text()("\"{}\" is no month; one is written like 2024-05.", *request.month));
    }
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    HealthKitManager& manager = (*health)->manager;
    application.finish(manager.loadMonth(*wanted));
    const std::vector<DailyStepData>& days = manager.dailyStepData;
    if (!application.wantsJson()) return Report{view(*wanted, days, application)};
    return Report{JsonObject{{"dailyData", {dailyDocument(days, application.settings().calendar())}}}};
}

}  // namespace pedvar
