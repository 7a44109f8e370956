#include "apps/cli/application.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/health.h"

namespace pedvar {
namespace {

/// Beats per minute.
JsonValue heartRateDocument(const std::optional<HeartRateSummary>& rate) {
    if (!rate) return {};
    return {JsonObject{{"average", {rate->average}}, {"lowest", {rate->lowest}}, {"highest", {rate->highest}}}};
}

JsonObject document(Day day, HealthKitManager& manager) {
    JsonObject result = metricsDocument(day, manager.selectedDayMetrics);
    JsonArray steps, distance;
    for (const HourlyStepData& hour : manager.hourlyStepData.value()) {
        steps.push_back({hour.steps});
        distance.push_back({hour.distance});
    }
    result.emplace_back("hourlySteps", JsonValue{std::move(steps)});
    result.emplace_back("hourlyDistance", JsonValue{std::move(distance)});
    result.emplace_back("walkingHeartRate", heartRateDocument(manager.workouts().walkingHeartRateSummary));
    return result;
}

std::string view(Day day, std::int64_t goal, HealthKitManager& manager, const Screen& screen) {
    const SelectedDayMetrics& metrics = manager.selectedDayMetrics;
    const Figures& figures = screen.figures;
    auto lines = metricLines(metrics, screen);
    if (const std::optional<HeartRateSummary>& rate = manager.workouts().walkingHeartRateSummary) {
        lines.emplace_back(screen.text("Heart on walks"),
                           screen.text("{} a minute, {} to {}", figures.number(rate->average, 0),
                                       figures.number(rate->lowest, 0), figures.number(rate->highest, 0)));
    }
    return figures.longDate(day) + "\n\n" + goalView(metrics.steps, goal, screen) + "\n" + labelled(lines) + "\n" +
           hourChart(manager.hourlyStepData.value(), screen);
}

}  // namespace

CommandResult<Report> run(const DayRequest& request, Application& application) {
    const auto day = dayNamed(request.day, application.today(), application.text());
    if (!day) return std::unexpected(day.error());
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    HealthKitManager& manager = (*health)->manager;
    application.finish(manager.selectDate(application.settings().calendar().start(*day)));
    application.finish(manager.workouts().loadWalkingHeartRate(*day));
    if (application.wantsJson()) return Report{document(*day, manager)};
    const std::int64_t goal = application.settings().goalHistory().goalOn(*day);
    return Report{view(*day, goal, manager, application.screen())};
}

}  // namespace pedvar
