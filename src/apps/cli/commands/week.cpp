#include "apps/cli/application.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/health.h"

namespace pedvar {
namespace {

JsonObject document(const WeekData& week, const Calendar& calendar) {
    return {
        {"weekStart", {isoText(calendar.day(week.weekStart))}},
        {"weekEnd", {isoText(calendar.day(week.weekEnd))}},
        {"totalSteps", {week.totalSteps}},
        {"dailyAverage", {week.dailyAverage}},
        {"dailyData", {dailyDocument(week.dailyData, calendar)}},
    };
}

std::string view(const WeekData& week, Application& application) {
    const Screen screen = application.screen();
    const Figures& figures = screen.figures;
    const Calendar calendar = application.settings().calendar();
    const GoalHistory goals = application.settings().goalHistory();
    const std::string first = figures.date(calendar.day(week.weekStart));
    const std::string last = figures.date(calendar.day(week.weekEnd));
    return screen.text("{} – {}", first, last) + "\n\n" +
           dayChart(week.dailyData, goals, calendar, application.today(), screen) + "\n" +
           labelled({
               {screen.text("Total"), figures.steps(week.totalSteps)},
               {screen.text("Average"), screen.text("{} a day", figures.number(week.dailyAverage, 0))},
           });
}

}  // namespace

CommandResult<Report> run(const WeekRequest& request, Application& application) {
    const auto day = dayNamed(request.day, application.today(), application.text());
    if (!day) return std::unexpected(day.error());
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    HealthKitManager& manager = (*health)->manager;
    const Calendar calendar = application.settings().calendar();
    application.finish(manager.loadWeek(calendar.start(*day)));
    const WeekData& week = manager.weekStepsData.value().front();
    if (application.wantsJson()) return Report{document(week, calendar)};
    return Report{view(week, application)};
}

}  // namespace pedvar
