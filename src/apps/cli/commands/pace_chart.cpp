#include "apps/cli/commands/pace_chart.h"

#include "apps/cli/charts.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pedvar {
namespace {

constexpr std::size_t height = 12;         // lines
constexpr std::size_t columnsPerHour = 3;  // of the screen
constexpr std::size_t width = 24 * columnsPerHour;
constexpr std::size_t axisWidth = 8;
constexpr int hoursBetweenLabels = 3;

enum class Mark { nothing, band, median, today };
using Line = std::array<Mark, width>;

std::string_view glyph(Mark mark) {
    switch (mark) {
        case Mark::band:
            return "░";
        case Mark::median:
            return "─";
        case Mark::today:
            return "█";
        case Mark::nothing:
            break;
    }
    return " ";
}

std::string painted(Mark mark, const std::string& text, const Screen& screen) {
    if (mark == Mark::today) return screen.accented(text);
    return mark == Mark::band ? screen.faint(text) : text;
}

std::string shown(const Line& line, const Screen& screen) {
    std::string result;
    for (std::size_t column = 0; column < width;) {
        const Mark mark = line[column];
        std::string run;
        for (; column < width && line[column] == mark; ++column) run += glyph(mark);
        result += mark == Mark::nothing ? run : painted(mark, run, screen);
    }
    return result;
}

/// The chart's lines from the bottom up.
class Canvas {
public:
    explicit Canvas(double greatest) : greatest_(std::max(greatest, 1.0)) {}

    /// Marks the lines of `column` that lie between two values.
    void draw(Mark mark, std::size_t column, double from, double to) {
        for (std::size_t line = lineOf(from); line <= lineOf(to); ++line) lines_[line][column] = mark;
    }
    const std::array<Line, height>& lines() const { return lines_; }

private:
    std::size_t lineOf(double value) const {
        const double line = std::floor(value / greatest_ * static_cast<double>(height));
        return static_cast<std::size_t>(std::clamp(line, 0.0, static_cast<double>(height - 1)));
    }

    double greatest_;
    std::array<Line, height> lines_{};
};

constexpr double hourAt(std::size_t boundary) {
    return static_cast<double>(boundary) / columnsPerHour;
}

Canvas drawn(const PaceCurves& curves, double greatest) {
    Canvas canvas(greatest);
    for (std::size_t column = 0; column < width; ++column) {
        const double left = hourAt(column), right = hourAt(column + 1), middle = (left + right) / 2;
        if (curves.usual) {
            canvas.draw(Mark::band, column, valueAt(curves.usual->lower, middle),
                        valueAt(curves.usual->upper, middle));
            const double median = valueAt(curves.usual->median, middle);
            canvas.draw(Mark::median, column, median, median);
        }
        if (left <= curves.hour) canvas.draw(Mark::today, column, todayAt(curves, left), todayAt(curves, right));
    }
    return canvas;
}

std::string legend(const PaceCurves& curves, const Screen& screen) {
    std::string result = std::string(axisWidth, ' ') + screen.accented("█") + " " + screen.text("Today");
    if (!curves.usual) return result + "\n";
    return result + "   ─ " + screen.text("Usual day") + "   " + screen.faint("░") + " " +
           screen.text("Middle 50% of days") + "\n";
}

}  // namespace

double todayAt(const PaceCurves& curves, double hour) {
    const std::size_t last = curves.today.size() - 1;
    const double before = static_cast<double>(last) - 1;  // the hour that began last
    if (hour <= before) return valueAt(curves.today, hour);
    const double passed = curves.hour - before;
    const double share = passed > 0 ? std::min((hour - before) / passed, 1.0) : 1;
    return std::lerp(curves.today[last - 1], curves.today[last], share);
}

std::string paceChart(const PaceCurves& curves, const Screen& screen) {
    const double greatest = std::max(curves.today.back(), curves.usual ? curves.usual->upper.back() : 0);
    const Canvas canvas = drawn(curves, greatest);
    std::string result;
    for (std::size_t line = height; line-- > 0;) {
        const std::string scale = result.empty() ? screen.figures.number(greatest, 0) : std::string();
        result += rightAligned(scale, axisWidth - 2) + " │" + shown(canvas.lines()[line], screen) + "\n";
    }
    result += rightAligned("└", axisWidth);
    for (std::size_t column = 0; column < width; ++column) result += "─";
    result += "\n" + std::string(axisWidth, ' ');
    for (int hour = 0; hour < 24; hour += hoursBetweenLabels) {
        result += leftAligned(screen.figures.hour(hour), hoursBetweenLabels * columnsPerHour);
    }
    return result + "\n\n" + legend(curves, screen);
}

}  // namespace pedvar
