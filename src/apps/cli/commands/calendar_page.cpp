#include "apps/cli/commands/calendar_page.h"

#include "apps/cli/charts.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pedvar {
namespace {

constexpr std::size_t cellWidth = 10;  // columns, followed by one blank
constexpr std::size_t numberWidth = 3;
constexpr std::array<std::string_view, 5> shades{" ", "░", "▒", "▓", "█"};

/// 0 for nothing to 4 for the best day and those near it.
std::size_t levelOf(double value, double best) {
    if (!(value > 0) || !(best > 0)) return 0;
    return static_cast<std::size_t>(std::clamp(std::ceil(value / best * 4), 1.0, 4.0));
}

/// The two lines of one day.
struct Cell {
    std::string upper = std::string(cellWidth, ' ');
    std::string lower = std::string(cellWidth, ' ');
};

Cell cellOf(const CalendarPage& page, Day day, double best, const Screen& screen) {
    const auto number = static_cast<unsigned>(std::chrono::year_month_day(day).day());
    const std::optional<double> value = page.values.at(number - 1);
    std::string numberText = rightAligned(std::to_string(number), numberWidth - 1) + " ";
    if (day == page.today) numberText = screen.bold(numberText);
    if (!value) return {numberText + std::string(cellWidth - numberWidth, ' '), std::string(cellWidth, ' ')};
    std::string shade;
    const std::size_t level = levelOf(*value, best);
    for (std::size_t i = numberWidth; i < cellWidth; ++i) shade += shades.at(level);
    return {numberText + (level == 0 ? shade : screen.accented(shade)),
            rightAligned(screen.figures.amount(page.metric, *value), cellWidth)};
}

std::string weekdays(const Calendar& calendar, Day first, const Screen& screen) {
    std::string result;
    const Day start = calendar.weekStart(first);
    for (int i = 0; i < 7; ++i) {
        const std::string name = screen.figures.weekdayName(start + std::chrono::days(i));
        result += rightAligned(name, cellWidth) + " ";
    }
    return screen.faint(result) + "\n";
}

}  // namespace

std::string calendarPage(const CalendarPage& page, const Calendar& calendar, const Screen& screen) {
    double best = 0;
    for (const auto& value : page.values) best = std::max(best, value.value_or(0));
    const Day first = firstDay(page.month);
    const Day end = first + std::chrono::days(page.values.size());

    std::string result = weekdays(calendar, first, screen);
    for (Day week = calendar.weekStart(first); week < end; week += std::chrono::days(7)) {
        std::string upper, lower;
        for (Day day = week; day < week + std::chrono::days(7); day += std::chrono::days(1)) {
            const Cell cell = first <= day && day < end ? cellOf(page, day, best, screen) : Cell();
            upper += cell.upper + " ";
            lower += cell.lower + " ";
        }
        result += "\n" + upper + "\n" + lower + "\n";
    }
    return result;
}

}  // namespace pedvar
