#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/pace_chart.h"
#include "apps/cli/insights.h"
#include "core/reflection.h"
#include "insights/step_pace_rule.h"
#include "linux/health/health_administration.h"

#include <algorithm>

namespace pedvar {
namespace {

struct Pace {
    Day day;
    StepPace judged;
    std::int64_t steps = 0;
    std::int64_t dayCount = 0;  // of the days that make or will make the usual one
    PaceCurves curves;
};

/// Steps since midnight at the hours that are over, and now.
std::vector<double> curveOf(const std::vector<HourlyStepData>& hours, double hour, std::int64_t steps) {
    std::vector<double> curve{0};
    for (const HourlyStepData& each : hours) {
        if (each.hour + 1 > hour) break;
        curve.push_back(curve.back() + static_cast<double>(each.steps));
    }
    curve.push_back(static_cast<double>(steps));
    return curve;
}

/// What lies behind `now` only: looking from another moment, the store may know more.
Pace readPace(Application& application, HealthKitManager& manager, StepPaceBaselineStore& store) {
    if (const auto reading = store.refresh(manager)) application.finish(*reading);
    const Date now = application.clock().now();
    const Calendar calendar = application.settings().calendar();
    const Day day = application.today();
    ActivityReads& reads = manager.reads();
    const std::int64_t steps =
        application.loop().run(reads.fetchSteps(calendar.start(day), now, QueryPriority::normal));
    const auto hours = application.loop().run(reads.fetchHourlyData(day, calendar, QueryPriority::normal));
    const double hour = hourOfDay(calendar, now);
    const std::optional<StepPaceBaseline>& usual = store.baseline;
    return {.day = day,
            .judged = StepPaceRule::judge(usual, {.day = day, .today = day, .steps = steps, .hour = hour}),
            .steps = steps,
            .dayCount = qualifyingDayCount(*store.days),
            .curves = {.today = curveOf(hours, hour, steps), .hour = hour, .usual = usual}};
}

JsonValue curveDocument(const std::optional<StepPaceBaseline>& usual, CumulativeCurve StepPaceBaseline::* curve) {
    if (!usual) return {};
    JsonArray points;
    for (const double point : *usual.*curve) points.push_back({point});
    return {std::move(points)};
}

JsonObject document(const Pace& pace, const std::string& label) {
    const auto& usual = pace.curves.usual;
    const auto& typical = pace.judged.typicalSteps;
    return {
        {"status", {static_cast<std::int64_t>(caseIndex(pace.judged.status))}},
        {"label", {label}},
        {"typicalSteps", typical ? JsonValue{*typical} : JsonValue{}},
        {"steps", {pace.steps}},
        {"hour", {pace.curves.hour}},
        {"dayCount", {pace.dayCount}},
        {"median", curveDocument(usual, &StepPaceBaseline::median)},
        {"lower", curveDocument(usual, &StepPaceBaseline::lower)},
        {"upper", curveDocument(usual, &StepPaceBaseline::upper)},
    };
}

std::string view(const Pace& pace, const std::string& label, const Screen& screen) {
    const Figures& figures = screen.figures;
    std::string right;
    if (pace.judged.typicalSteps) {
        right = screen.text("{} so far, usually {}", figures.steps(pace.steps),
                            figures.number(*pace.judged.typicalSteps));
    }
    std::string result = figures.longDate(pace.day) + "\n\n" + screen.bold(label) +
                         rightAligned(right, screenWidth - std::min(screenWidth, columns(label))) + "\n\n" +
                         paceChart(pace.curves, screen);
    if (pace.curves.usual) return result;
    const std::int64_t missing = StepPaceBaseline::fewestDays - pace.dayCount;
    return result + "\n" +
           screen.text.plural("{} more day of history and your typical day appears here.",
                              "{} more days of history and your typical day appears here.", missing, missing) +
           "\n";
}

}  // namespace

CommandResult<Report> run(const PaceRequest&, Application& application) {
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    // What an import that was interrupted has changed is settled by whoever writes next. Asked before the
    // stored days are read: they may be settled in between.
    const auto changed = HealthAdministration((*health)->database).changedDays();
    if (!changed) return std::unexpected(errorOf(changed.error()));
    const auto insights = application.insights();
    if (!insights) return std::unexpected(insights.error());
    if (const auto steps = changed->find(HKQuantityTypeIdentifierStepCount); steps != changed->end()) {
        (*insights)->pace.forget(steps->second);
    }
    const Pace pace = readPace(application, (*health)->manager, (*insights)->pace);
    const Screen screen = application.screen();
    const std::string said =
        label(pace.judged.status, screen.figures.number(pace.steps)).in(application.catalogue());
    if (application.wantsJson()) return Report{document(pace, said)};
    return Report{view(pace, said, screen)};
}

}  // namespace pedvar
