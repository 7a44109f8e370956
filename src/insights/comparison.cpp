#include "insights/comparison.h"

#include "core/reflection.h"
#include "insights/rounding.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pedvar {

using namespace std::chrono;

namespace {

struct MetricNames {
    std::string_view title;
    std::string_view inSentences;
};
// i18n: texts like .
constexpr std::array<MetricNames, 5> metricNames{{
    {"Steps", "steps"},
    {"Distance", "distance"},
    {"Calories", "calories"},
    {"Active Min", "active min"},
    {"Floors", "floors"},
}};
// i18n: end

std::int64_t percentOf(double difference, double reference) {
    return nearestWhole(difference / reference * 100);
}

/// The same day a month earlier, or the last one of a shorter month.
Day sameDayLastMonth(Day day) {
    const year_month_day earlier = year_month_day(day) - months(1);
    return earlier.ok() ? local_days(earlier) : local_days(earlier.year() / earlier.month() / last);
}

Day firstComparedDay(Day day, const Calendar& calendar) {
    return std::min({day - days(30), calendar.weekStart(day) - days(7), firstDay(month(day) - months(1))});
}

struct RowText {
    std::string_view id, icon, title, subtitle;
};
// i18n: texts
constexpr RowText yesterdayText{"yesterday", "sun", "vs Yesterday", "The day before"};
constexpr RowText lastWeekText{"sameDayLastWeek", "week", "vs Same Day Last Week", "7 days before"};
constexpr RowText twoWeeksText{"twoWeeksAgo", "weeks", "vs 2 Weeks Ago", "14 days before"};
constexpr RowText lastMonthText{"sameDayLastMonth", "month", "vs Same Day Last Month",
                                "The same date a month before"};
constexpr RowText goalText{"dailyGoal", "target", "vs Daily Goal", "The goal of that day"};
constexpr RowText weekAverageText{"sevenDayAverage", "chart", "vs 7-Day Average", "The 7 days before"};
constexpr RowText monthAverageText{"thirtyDayAverage", "chart", "vs 30-Day Average", "The 30 days before"};
constexpr RowText monthBestText{"thirtyDayBest", "trophy", "vs 30-Day Best", "The best of the 30 days before"};
constexpr RowText weekToDateText{"weekToDate", "week", "Week-to-Date vs Last Week", "Same days, side by side"};
constexpr RowText monthToDateText{"monthToDate", "month", "Month-to-Date vs Last Month", "Same calendar days"};
constexpr std::string_view dayComparisonsTitle = "Day Comparisons";
constexpr std::string_view benchmarksTitle = "Goal & Benchmarks";
constexpr std::string_view periodProgressTitle = "Period Progress";
// i18n: end

ComparisonRowSpec row(const RowText& text, ComparisonDelta delta) {
    return {text.id, text.icon, text.title, text.subtitle, delta};
}

ComparisonSection dayComparisons(Day day, const MetricHistory& history) {
    const auto against = [&](Day other) { return ComparisonDelta{history.on(day), history.on(other)}; };
    return {dayComparisonsTitle,
            {row(yesterdayText, against(day - days(1))), row(lastWeekText, against(day - days(7))),
             row(twoWeeksText, against(day - days(14))), row(lastMonthText, against(sameDayLastMonth(day)))}};
}

ComparisonSection benchmarks(ComparisonMetric metric, Day day, const MetricHistory& history, std::int64_t goal) {
    const auto against = [&](double reference) { return ComparisonDelta{history.on(day), reference}; };
    const Day yesterday = day - days(1);
    ComparisonSection section{benchmarksTitle, {}};
    if (metric == ComparisonMetric::steps) {
        section.rows.push_back(row(goalText, against(static_cast<double>(goal))));
    }
    section.rows.push_back(row(weekAverageText, against(history.average(day - days(7), yesterday))));
    section.rows.push_back(row(monthAverageText, against(history.average(day - days(30), yesterday))));
    section.rows.push_back(row(monthBestText, against(history.best(day - days(30), yesterday))));
    return section;
}

ComparisonSection periodProgress(Day day, const MetricHistory& history, const Calendar& calendar) {
    const Day week = calendar.weekStart(day);
    const Day earlier = sameDayLastMonth(day);
    const auto monthToDate = [&](Day end) { return history.sum(firstDay(month(end)), end); };
    return {periodProgressTitle,
            {row(weekToDateText, {history.sum(week, day), history.sum(week - days(7), day - days(7))}),
             row(monthToDateText, {monthToDate(day), monthToDate(earlier)})}};
}

}  // namespace

std::string_view title(ComparisonMetric metric) {
    return metricNames[caseIndex(metric)].title;
}

std::optional<std::int64_t> ComparisonDelta::percent() const {
    return reference > 0 ? std::optional(percentOf(difference(), reference)) : std::nullopt;
}

Phrase wording(const ComparisonDelta& delta, const AmountText& amountText) {
    const std::string amount = amountText(std::abs(delta.difference()));
    if (amount == amountText(0)) return Phrase("the same");
    const bool isMore = delta.difference() > 0;
    const auto percent = delta.percent();
    if (!percent) return isMore ? Phrase("{} more", {amount}) : Phrase("{} less", {amount});
    const std::string share = std::to_string(std::abs(*percent));
    return isMore ? Phrase("{} more, {}%", {amount, share}) : Phrase("{} less, {}%", {amount, share});
}

std::optional<Phrase> summarySentence(ComparisonMetric metric, double current, double sevenDayAverage) {
    if (!(current > 0) || !(sevenDayAverage > 0)) return std::nullopt;
    const std::int64_t percent = percentOf(current - sevenDayAverage, sevenDayAverage);
    const std::string above = std::to_string(percent), below = std::to_string(-percent);
    const std::string_view name = metricNames[caseIndex(metric)].inSentences;
    if (percent >= 25) return Phrase("You're crushing it - {}% above your 7-day {} average.", {above, name});
    if (percent >= 10) return Phrase("Nice pace. You're {}% above your 7-day {} average.", {above, name});
    if (percent >= -5) return Phrase("You're tracking close to your 7-day {} average. Steady.", {name});
    if (percent >= -25) return Phrase("A bit behind - {}% below your 7-day {} average.", {below, name});
    return Phrase("Quiet day. You're {}% below your 7-day {} average.", {below, name});
}

Comparison compare(ComparisonMetric metric, Day day, const MetricHistory& history, const Calendar& calendar,
                   std::int64_t goal) {
    const double current = history.on(day);
    const double average = history.average(day - days(7), day - days(1));
    return {metric,
            current,
            average,
            summarySentence(metric, current, average),
            {dayComparisons(day, history), benchmarks(metric, day, history, goal),
             periodProgress(day, history, calendar)}};
}

Task<Comparison> fetchComparison(ActivityReads& reads, ComparisonMetric metric, Day day, Calendar calendar,
                                 std::int64_t goal) {
    const Day first = firstComparedDay(day, calendar);
    auto totals = co_await reads.fetchDayTotals(metric, first, day, calendar, QueryPriority::normal);
    const MetricHistory history(first, std::move(totals).value_or(DayTotals()));
    co_return compare(metric, day, history, calendar, goal);
}

}  // namespace pedvar
