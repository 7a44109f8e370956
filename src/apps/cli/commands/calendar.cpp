#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/calendar_page.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/insights.h"
#include "core/reflection.h"
#include "insights/comparison.h"

#include <cctype>

namespace pedvar {
namespace {

struct Wanted {
    std::optional<std::chrono::year_month> month;
    std::optional<ActivityMetric> metric;
};

/// Digits begin a month, letters a metric.
CommandResult<Wanted> wanted(const CalendarRequest& request, Application& application) {
    Wanted result;
    for (const auto& typed : {request.first, request.second}) {
        if (!typed) continue;
        const std::string& word = *typed;
        const bool isMonth = word.empty() || !std::isalpha(static_cast<unsigned char>(word.front()));
        if (isMonth ? result.month.has_value() : result.metric.has_value()) {
            return usageError(
                application.text()("\"{}\" is one too many; a month and a metric are enough.", word));
        }
        if (isMonth) {
            const auto month = pastMonthNamed(word, application.today(), application.text());
            if (!month) return std::unexpected(month.error());
            result.month = *month;
        } else {
            const auto metric = metricNamed(word, application.text());
            if (!metric) return std::unexpected(metric.error());
            result.metric = *metric;
        }
    }
    return result;
}

CalendarPage readPage(std::chrono::year_month month, ActivityMetric metric, Application& application,
                      CalendarMetricStore& store) {
    std::vector<Day> days;
    for (int i = 0; i < dayCount(month); ++i) days.push_back(firstDay(month) + std::chrono::days(i));
    application.finish(store.load(days, metric));
    CalendarPage page{.month = month, .metric = metric, .values = {}, .today = application.today()};
    for (const Day day : days) page.values.push_back(store.value(day, metric));
    return page;
}

JsonObject document(const CalendarPage& page) {
    JsonObject days;
    Day day = firstDay(page.month);
    for (const auto& value : page.values) {
        days.emplace_back(isoText(day), value ? JsonValue{*value} : JsonValue{});
        day += std::chrono::days(1);
    }
    return {{"month", {monthKey(page.month)}},
            {"metric", {std::string(caseName(page.metric))}},
            {"days", {std::move(days)}}};
}

std::string view(const CalendarPage& page, const Calendar& calendar, const Screen& screen) {
    const std::string month = screen.figures.month(page.month);
    const std::string metric = screen.text.lookUp(title(page.metric));
    double total = 0, known = 0;
    for (const auto& value : page.values) {
        total += value.value_or(0);
        known += value ? 1 : 0;
    }
    const std::string average = screen.figures.amount(page.metric, known > 0 ? total / known : 0);
    return screen.bold(month) + rightAligned(metric, screenWidth - columns(month)) + "\n\n" +
           calendarPage(page, calendar, screen) + "\n" +
           labelled({
               {screen.text("Total"), screen.figures.amount(page.metric, total)},
               {screen.text("Average"), screen.text("{} a day", average)},
           });
}

}  // namespace

CommandResult<Report> run(const CalendarRequest& request, Application& application) {
    const auto asked = wanted(request, application);
    if (!asked) return std::unexpected(asked.error());
    const auto insights = application.insights();
    if (!insights) return std::unexpected(insights.error());
    const CalendarPage page =
        readPage(asked->month.value_or(month(application.today())), asked->metric.value_or(ActivityMetric::steps),
                 application, (*insights)->calendar);
    if (application.wantsJson()) return Report{document(page)};
    return Report{view(page, application.settings().calendar(), application.screen())};
}

}  // namespace pedvar
