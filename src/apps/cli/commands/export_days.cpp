#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/health.h"
#include "apps/cli/output_file.h"

#include <array>

namespace pedvar {
namespace {

struct Column {
    std::string_view name;
    ActivityMetric metric;
    HKQuantityType type;
};
const std::array<Column, 5> tableColumns{{
    {"steps", ActivityMetric::steps, {HKQuantityTypeIdentifierStepCount}},
    {"distanceMeters", ActivityMetric::distance, {HKQuantityTypeIdentifierDistanceWalkingRunning}},
    {"activeCalories", ActivityMetric::calories, {HKQuantityTypeIdentifierActiveEnergyBurned}},
    {"activeMinutes", ActivityMetric::activeMinutes, {HKQuantityTypeIdentifierAppleExerciseTime}},
    {"flightsClimbed", ActivityMetric::flights, {HKQuantityTypeIdentifierFlightsClimbed}},
}};

/// The first day with samples, or `today`.
Day firstDay(Application& application, ActivityReads& reads, const Calendar& calendar, Day today) {
    Day first = today;
    for (const Column& column : tableColumns) {
        const auto oldest = application.loop().run(
            reads.fetchOldestDate(column.type, application.clock().now(), QueryPriority::normal));
        if (oldest) first = std::min(first, calendar.day(*oldest));
    }
    return first;
}

/// The table of all days, the oldest first; a cell without samples is empty.
std::string table(const std::vector<DayTotals>& totals, Day first, Day today, const GoalHistory& goals) {
    std::string text = "date";
    for (const Column& column : tableColumns) text += fmt::format(",{}", column.name);
    text += ",dailyGoal,goalMet\n";
    for (Day day = first; day <= today; day += std::chrono::days(1)) {
        const auto at = static_cast<std::size_t>((day - first).count());
        text += isoText(day);
        for (const DayTotals& column : totals) {
            text += column[at] ? fmt::format(",{}", *column[at]) : std::string(",");
        }
        const std::int64_t goal = goals.goalOn(day);
        text += fmt::format(",{},{}\n", goal, wholeNumber(totals.front()[at].value_or(0)) >= goal);
    }
    return text;
}

}  // namespace

CommandResult<Report> run(const ExportDaysRequest& request, Application& application) {
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    auto file = OutputFile::create(request.file,
                                   request.isForced ? OutputFile::Existing::replace : OutputFile::Existing::keep);
    if (!file) return std::unexpected(file.error());
    ActivityReads& reads = (*health)->manager.reads();
    const Calendar calendar = application.settings().calendar();
    const Day today = application.today();
    const Day first = firstDay(application, reads, calendar, today);
    std::vector<DayTotals> totals;
    for (const Column& column : tableColumns) {
        auto read = application.loop().run(
            reads.fetchDayTotals(column.metric, first, today, calendar, QueryPriority::normal));
        if (!read) {
            return std::unexpected(
                CommandError{ErrorKind::failed, application.text()("The days cannot be read.")});
        }
        totals.push_back(std::move(*read));
    }
    const auto text = table(totals, first, today, application.settings().goalHistory());
    file->write(text);
    if (const auto kept = file->keep(); !kept) return std::unexpected(kept.error());
    const std::int64_t count = (today - first).count() + 1;
    if (application.wantsJson()) return Report{JsonObject{{"file", {request.file}}, {"days", {count}}}};
    const Screen screen = application.screen();
    return Report{screen.text("{0} has {1}.", harmless(request.file), screen.figures.days(count)) + "\n"};
}

}  // namespace pedvar
