#include "apps/cli/commands/day_views.h"

#include "apps/cli/charts.h"

#include <algorithm>

namespace pedvar {
namespace {

constexpr std::size_t hoursBetweenLabels = 3;

double shareOf(std::int64_t part, std::int64_t whole) {
    return whole > 0 ? static_cast<double>(part) / static_cast<double>(whole) : 0;
}

}  // namespace

std::string labelled(const std::vector<std::pair<std::string, std::string>>& lines) {
    std::size_t width = 0;
    for (const auto& [label, value] : lines) width = std::max(width, columns(label));
    std::string result;
    for (const auto& [label, value] : lines) result += leftAligned(label, width + 3) + value + "\n";
    return result;
}

std::string goalView(std::int64_t steps, std::int64_t goal, const Screen& screen) {
    const Figures& figures = screen.figures;
    const auto percent = static_cast<std::int64_t>(shareOf(steps, goal) * 100);
    const std::string counted = figures.steps(steps);
    const std::string ofGoal = screen.text("{}% of {}", figures.number(percent), figures.number(goal));
    const std::string filled = bar(shareOf(steps, goal), screenWidth);
    return screen.bold(counted) + rightAligned(ofGoal, screenWidth - columns(counted)) + "\n" +
           screen.accented(filled) + screen.faint(groove(filled, screenWidth)) + "\n";
}

std::vector<std::pair<std::string, std::string>> metricLines(const SelectedDayMetrics& metrics,
                                                             const Screen& screen) {
    const Figures& figures = screen.figures;
    return {
        {screen.text("Distance"), figures.distance(metrics.distanceMeters)},
        {screen.text("Active energy"), figures.energy(metrics.activeCalories)},
        {screen.text("Active time"), figures.minutes(metrics.activeMinutes)},
        {screen.text("Flights climbed"), figures.number(metrics.flights)},
        {screen.text("The day before"), figures.steps(metrics.previousDaySteps)},
    };
}

std::string hourChart(std::span<const HourlyStepData> hours, const Screen& screen) {
    constexpr ColumnChart chart;
    constexpr std::size_t axisWidth = 8;
    std::vector<std::int64_t> steps;
    for (const HourlyStepData& hour : hours) steps.push_back(hour.steps);
    const std::int64_t greatest = steps.empty() ? 0 : std::ranges::max(steps);

    std::string result;
    for (const std::string& line : columnLines(steps, chart)) {
        const std::string scale = result.empty() ? screen.figures.number(greatest) : std::string();
        result += rightAligned(scale, axisWidth - 2) + " │" + screen.accented(line) + "\n";
    }
    result += rightAligned("└", axisWidth);
    for (std::size_t column = 0; column < hours.size() * (chart.columnWidth + 1); ++column) result += "─";
    result += "\n" + std::string(axisWidth, ' ');
    for (std::size_t hour = 0; hour < hours.size(); hour += hoursBetweenLabels) {
        const std::string label = screen.figures.hour(hours[hour].hour);
        result += leftAligned(label, hoursBetweenLabels * (chart.columnWidth + 1));
    }
    return result + "\n";
}

std::string dayChart(std::span<const DailyStepData> days, const GoalHistory& goals, const Calendar& calendar,
                     Day today, const Screen& screen) {
    constexpr std::size_t barWidth = 46;
    std::int64_t scale = 1;
    for (const DailyStepData& data : days) {
        scale = std::max({scale, data.steps, goals.goalOn(calendar.day(data.date))});
    }
    std::string result;
    for (const DailyStepData& data : days) {
        const Day day = calendar.day(data.date);
        result += leftAligned(screen.figures.weekdayAndDay(day), 7);
        if (day <= today) {
            const std::string filled = bar(shareOf(data.steps, scale), barWidth);
            result += rightAligned(screen.figures.number(data.steps), 9);
            result += rightAligned(screen.figures.distance(data.distance), 12) + "  " + screen.accented(filled);
            if (data.steps >= goals.goalOn(day)) result += " ✓";
        }
        result += "\n";
    }
    return result;
}

JsonObject metricsDocument(Day day, const SelectedDayMetrics& metrics) {
    return {
        {"date", {isoText(day)}},
        {"steps", {metrics.steps}},
        {"distanceMeters", {metrics.distanceMeters}},
        {"activeCalories", {metrics.activeCalories}},
        {"activeMinutes", {metrics.activeMinutes}},
        {"flights", {metrics.flights}},
        {"previousDaySteps", {metrics.previousDaySteps}},
    };
}

JsonArray dailyDocument(std::span<const DailyStepData> days, const Calendar& calendar) {
    JsonArray result;
    for (const DailyStepData& day : days) {
        JsonObject entry{
            {"date", {isoText(calendar.day(day.date))}},
            {"steps", {day.steps}},
            {"distance", {day.distance}},
            {"activeCalories", {day.activeCalories}},
            {"activeMinutes", {day.activeMinutes}},
        };
        result.push_back({std::move(entry)});
    }
    return result;
}

}  // namespace pedvar
