#include "apps/cli/application.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/insights.h"
#include "insights/monthly_recap.h"

namespace pedvar {
namespace {

struct Recap {
    bool isDue = false;
    MonthlyRecap month;
    std::string monthName;
};

JsonObject document(const Recap& recap) {
    const MonthlyRecap& month = recap.month;
    JsonValue best;
    if (month.bestDay)
        best = {JsonObject{{"date", {isoText(month.bestDay->day)}}, {"steps", {month.bestDay->steps}}}};
    return {
        {"due", {recap.isDue}},
        {"month", {monthKey(month.month)}},
        {"monthName", {recap.monthName}},
        {"totalSteps", {month.totalSteps}},
        {"averageSteps", {month.averageSteps}},
        {"bestDay", std::move(best)},
        {"goalDays", {month.goalDays}},
        {"distanceMeters", {month.distanceMeters}},
    };
}

std::string view(const Recap& recap, const Screen& screen) {
    const Figures& figures = screen.figures;
    const MonthlyRecap& month = recap.month;
    const std::string best = month.bestDay ? screen.text("{}, {}", figures.steps(month.bestDay->steps),
                                                         figures.longDate(month.bestDay->day))
                                           : screen.text("none");
    return screen.bold(recap.monthName) + "\n\n" +
           labelled({
               {screen.text("Total"), figures.steps(month.totalSteps)},
               {screen.text("Average"), screen.text("{} a day", figures.number(month.averageSteps, 0))},
               {screen.text("Best day"), best},
               {screen.text("Goal met"),
                screen.text.plural("on {} day", "on {} days", month.goalDays, figures.number(month.goalDays))},
               {screen.text("Distance"), figures.distance(month.distanceMeters)},
           });
}

}  // namespace

CommandResult<Report> run(const RecapRequest& request, Application& application) {
    const Day today = application.today();
    std::optional<std::chrono::year_month> asked;
    if (request.month) {
        const auto named = pastMonthNamed(*request.month, today, application.text());
        if (!named) return std::unexpected(named.error());
        asked = *named;
    }
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    const auto insights = application.insights();
    if (!insights) return std::unexpected(insights.error());

    MonthlyRecapManager& manager = (*insights)->recap;
    SettingsStore& settings = application.settings();
    const auto due = application.loop().run(manager.fetchDueMonth());
    const std::chrono::year_month shown = asked.value_or(due.value_or(month(today) - std::chrono::months(1)));
    const Recap recap{
        .isDue = due == shown,
        .month = application.loop().run(fetchMonthlyRecap((*health)->manager.reads(), shown, settings.calendar(),
                                                          settings.goalHistory(), today)),
        .monthName = monthName(shown, today).in(application.catalogue()),
    };
    if (application.wantsJson()) return Report{document(recap)};
    if (recap.isDue && application.isWriting()) {
        manager.recapMonthStart = settings.calendar().start(firstDay(shown));
        manager.viewRecap();
    }
    return Report{view(recap, application.screen())};
}

}  // namespace pedvar
