#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/insights.h"
#include "insights/monthly_recap.h"

namespace pedvar {
namespace {

struct Today {
    Day day;
    SelectedDayMetrics metrics;
    std::int64_t goal;
    std::int64_t currentStreak;
    std::int64_t longestStreak;
};

/// Without the refresh that the application makes of today: it stores what it finds out on the way.
Today readToday(Application& application, HealthKitManager& manager) {
    const Day day = application.today();
    ActivityReads& reads = manager.reads();
    const Calendar calendar = application.settings().calendar();
    SelectedDayMetrics metrics =
        application.loop().run(reads.fetchDayMetrics(day, calendar, QueryPriority::normal));
    application.loop().run(manager.updateStreaks());
    return {
        .day = day,
        .metrics = metrics,
        .goal = application.settings().goalHistory().goalOn(day),
        .currentStreak = manager.currentStreak,
        .longestStreak = manager.longestStreak,
    };
}

JsonObject document(const Today& today) {
    JsonObject result = metricsDocument(today.day, today.metrics);
    result.emplace_back("dailyGoal", JsonValue{today.goal});
    result.emplace_back("goalMet", JsonValue{today.metrics.steps >= today.goal});
    result.emplace_back("currentStreak", JsonValue{today.currentStreak});
    result.emplace_back("longestStreak", JsonValue{today.longestStreak});
    return result;
}

/// What to do when there is nothing to show; empty otherwise.
std::string advice(Application& application, HealthKitManager& manager, const Screen& screen) {
    ActivityReads& reads = manager.reads();
    const Date now = application.clock().now();
    const auto newest = application.loop().run(reads.fetchNewestStepDate(now, QueryPriority::normal));
    if (!newest) {
        return screen.text(
            "There are no steps yet. On the phone, let the health app export all health data,\n"
            "bring the file here, and then:\n\n    pedvar import export.zip\n");
    }
    if (!application.loop().run(manager.computeHealthAccessBlocked())) return {};
    return screen.text(
        "The newest step is of {}. To bring newer ones, export the health data on\n"
        "the phone once more, and then:\n\n    pedvar import export.zip\n",
        screen.figures.date(application.settings().calendar().day(*newest)));
}

/// Offers the look back at a month that has ended; empty when none is due.
std::string recapOffer(Application& application, MonthlyRecapManager& manager, const Screen& screen) {
    const auto due = application.loop().run(manager.fetchDueMonth());
    if (!due) return {};
    const std::string month = monthName(*due, application.today()).in(application.catalogue());
    return screen.text("What {} was: pedvar recap", month) + "\n";
}

std::string view(const Today& today, const Screen& screen) {
    std::string result = screen.figures.longDate(today.day) + "\n\n";
    result += goalView(today.metrics.steps, today.goal, screen) + "\n";
    auto lines = metricLines(today.metrics, screen);
    lines.emplace_back(screen.text("Streak"),
                       screen.text("{}, longest {}", screen.figures.days(today.currentStreak),
                                   screen.figures.days(today.longestStreak)));
    return result + labelled(lines);
}

}  // namespace

CommandResult<Report> run(const TodayRequest&, Application& application) {
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    HealthKitManager& manager = (*health)->manager;
    const Today today = readToday(application, manager);
    if (application.wantsJson()) return Report{document(today)};
    const Screen screen = application.screen();
    const auto insights = application.insights();
    if (!insights) return std::unexpected(insights.error());
    const std::string hint =
        advice(application, manager, screen) + recapOffer(application, (*insights)->recap, screen);
    return Report{view(today, screen) + (hint.empty() ? "" : "\n" + hint)};
}

}  // namespace pedvar
