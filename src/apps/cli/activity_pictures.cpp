#include "apps/cli/activity_pictures.h"

#include "apps/cli/braille.h"
#include "apps/cli/charts.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <vector>

namespace pedvar {
namespace {

constexpr double metersPerDegree = 111'195;  // of a great circle

/// The largest of 1, 2, 5, 10, 20 ... that is not above `limit`, which is above 0.
double roundBelow(double limit) {
    const double power = std::pow(10, std::floor(std::log10(limit)));
    for (const double factor : {5.0, 2.0}) {
        if (factor * power <= limit) return factor * power;
    }
    return power;
}

/// A point on a plane, in degrees of a great circle, to the east and to the south.
struct Place {
    double x = 0;
    double y = 0;
};

struct Box {
    Place least;
    Place greatest;

    double width() const { return greatest.x - least.x; }
    double height() const { return greatest.y - least.y; }
};

/// The route laid flat around its middle latitude; one across the antimeridian stays in one piece.
std::vector<Place> placesOf(std::span<const CLLocation> points, std::span<const WayMark> marks) {
    double south = 90;
    double north = -90;
    for (const WayMark& mark : marks) {
        south = std::min(south, points[mark.point].latitude);
        north = std::max(north, points[mark.point].latitude);
    }
    const double shrinking = std::cos((south + north) / 2 * std::numbers::pi / 180);
    std::vector<Place> places;
    for (const WayMark& mark : marks) {
        const CLLocation& point = points[mark.point];
        const double east = std::remainder(point.longitude - points[marks.front().point].longitude, 360);
        places.push_back({east * shrinking, -point.latitude});
    }
    return places;
}

Box boxAround(std::span<const Place> places) {
    Box box{places.front(), places.front()};
    for (const Place& place : places) {
        box.least = {std::min(box.least.x, place.x), std::min(box.least.y, place.y)};
        box.greatest = {std::max(box.greatest.x, place.x), std::max(box.greatest.y, place.y)};
    }
    return box;
}

/// How a box fits onto a canvas.
struct Projection {
    Box box;
    double dotsPerDegree;

    Dot dot(Place place) const {
        return {static_cast<int>(std::lround((place.x - box.least.x) * dotsPerDegree)),
                static_cast<int>(std::lround((place.y - box.least.y) * dotsPerDegree))};
    }
};

/// A cell of the picture that shows something else than dots.
struct Sign {
    std::size_t column;
    std::size_t line;
    std::string_view character;
};

Sign signAt(Dot dot, std::string_view character) {
    return {static_cast<std::size_t>(dot.x / BrailleCanvas::dotsAcross),
            static_cast<std::size_t>(dot.y / BrailleCanvas::dotsDown), character};
}

std::string lineOf(const BrailleCanvas& canvas, std::size_t line, std::span<const Sign> signs,
                   const Screen& screen) {
    std::string result;
    std::string dots;
    for (std::size_t column = 0; column < canvas.columns(); ++column) {
        const auto isHere = [&](const Sign& sign) { return sign.column == column && sign.line == line; };
        const auto sign = std::ranges::find_if(signs, isHere);
        if (sign == signs.end()) {
            dots += canvas.character(column, line);
        } else {
            result += screen.accented(dots) + screen.bold(sign->character);
            dots.clear();
        }
    }
    return result + screen.accented(dots);
}

std::string shownLength(double meters, const Figures& figures) {
    return meters < figures.unitLength()
               ? figures.altitude(meters)
               : figures.number(meters / figures.unitLength(), 0) + " " + figures.unitName();
}

/// "├──────┤ 500 m": a length that is easy to count with.
std::string scaleLine(double metersPerColumn, const Figures& figures) {
    constexpr double longest = 20;  // columns
    const bool isShort = longest * metersPerColumn < figures.unitLength();
    const double unit = isShort ? figures.smallUnitLength() : figures.unitLength();
    const double length = roundBelow(longest * metersPerColumn / unit) * unit;
    const auto columns = static_cast<std::size_t>(std::max(std::lround(length / metersPerColumn), 2L));
    return "├" + repeated("─", columns - 2) + "┤ " + shownLength(length, figures);
}

/// The mean altitude in each of `count` equal parts of the way; parts without points lie between their neighbours.
std::vector<double> altitudesAlong(std::span<const CLLocation> points, std::span<const WayMark> marks,
                                   std::size_t count) {
    std::vector<double> sums(count);
    std::vector<double> counts(count);
    for (const WayMark& mark : marks) {
        if (points[mark.point].verticalAccuracy < 0) continue;
        const double share = mark.distance / marks.back().distance;
        const std::size_t part = std::min(static_cast<std::size_t>(share * static_cast<double>(count)), count - 1);
        sums[part] += points[mark.point].altitude;
        ++counts[part];
    }
    std::vector<double> altitudes(count);
    std::optional<std::size_t> last;
    for (std::size_t i = 0; i < count; ++i) {
        if (counts[i] == 0) continue;
        altitudes[i] = sums[i] / counts[i];
        for (std::size_t j = last ? *last + 1 : 0; j < i; ++j) {
            altitudes[j] = last ? std::lerp(altitudes[*last], altitudes[i],
                                            static_cast<double>(j - *last) / static_cast<double>(i - *last))
                                : altitudes[i];
        }
        last = i;
    }
    if (!last) return {};
    for (std::size_t j = *last + 1; j < count; ++j) altitudes[j] = altitudes[*last];
    return altitudes;
}

/// The axis below a picture of `width` columns that shows a way of `meters`: its line and its labels.
std::string distanceAxis(double meters, std::size_t width, std::size_t indent, const Figures& figures) {
    constexpr double mostLabels = 8;
    const double length = meters / figures.unitLength();
    const double step = 10 * roundBelow(length / mostLabels / 5);
    std::string axis = "└";
    std::string labels;
    std::size_t reached = 0;
    for (int i = 0; i * step <= length; ++i) {
        const auto column = static_cast<std::size_t>(i * step / length * static_cast<double>(width - 1));
        std::string label = figures.number(i * step, 2);
        if (i == 0) label += " " + figures.unitName();
        if (column + columns(label) > width || (i > 0 && column <= columns(labels))) break;
        labels = leftAligned(labels, column) + label;
        if (i > 0) {
            axis += repeated("─", column - reached) + "┬";
            reached = column + 1;
        }
    }
    axis += repeated("─", width - reached);
    return rightAligned("", indent - 1) + axis + "\n" + rightAligned("", indent) + labels + "\n";
}

}  // namespace

std::string routePicture(std::span<const CLLocation> points, std::span<const WayMark> marks,
                         const Screen& screen) {
    constexpr std::size_t mostColumns = 76;
    constexpr std::size_t mostLines = 20;
    if (marks.empty()) return {};
    const std::vector<Place> places = placesOf(points, marks);
    const Box box = boxAround(places);
    const double across = static_cast<double>(mostColumns) * BrailleCanvas::dotsAcross - 1;
    const double down = static_cast<double>(mostLines) * BrailleCanvas::dotsDown - 1;
    const double dotsPerDegree = std::min(across / box.width(), down / box.height());
    if (!std::isfinite(dotsPerDegree)) return {};
    const Projection projection{box, dotsPerDegree};
    const Dot corner = projection.dot(box.greatest);
    BrailleCanvas canvas(static_cast<std::size_t>(corner.x / BrailleCanvas::dotsAcross) + 1,
                         static_cast<std::size_t>(corner.y / BrailleCanvas::dotsDown) + 1);
    for (std::size_t i = 0; i < places.size(); ++i) {
        const Dot dot = projection.dot(places[i]);
        canvas.line(i > 0 && !marks[i].isAfterBreak ? projection.dot(places[i - 1]) : dot, dot);
    }
    const Sign start = signAt(projection.dot(places.front()), "○");
    const Sign end = signAt(projection.dot(places.back()), "●");
    const bool isRound = start.column == end.column && start.line == end.line;
    const std::vector<Sign> signs =
        isRound ? std::vector{Sign{end.column, end.line, "◉"}} : std::vector{end, start};

    std::string result;
    const std::string margin((screenWidth - canvas.columns()) / 2, ' ');
    for (std::size_t line = 0; line < canvas.lines(); ++line) {
        result += margin + lineOf(canvas, line, signs, screen) + "\n";
    }
    const std::string legend = isRound ? screen.text("◉ start and end") : screen.text("○ start   ● end");
    const std::string scale =
        scaleLine(BrailleCanvas::dotsAcross * metersPerDegree / dotsPerDegree, screen.figures);
    return result + "\n" + screen.faint("  " + leftAligned(legend, 24) + rightAligned(scale, 52)) + "\n";
}

std::string elevationPicture(std::span<const CLLocation> points, std::span<const WayMark> marks,
                             const Screen& screen) {
    constexpr ColumnChart chart{.height = 6, .columnWidth = 1, .gap = 0};
    constexpr std::size_t axisWidth = 10;
    constexpr std::size_t width = screenWidth - axisWidth - 2;
    constexpr double leastRange = 10;  // metres; less is a receiver's wavering, and no mountain
    if (marks.empty() || marks.back().distance <= 0) return {};
    const std::vector<double> altitudes = altitudesAlong(points, marks, width);
    if (altitudes.empty()) return {};
    const double highest = std::ranges::max(altitudes);
    const double lowest = std::min(std::ranges::min(altitudes), highest - leastRange);
    std::vector<std::int64_t> shares;
    for (const double altitude : altitudes) {
        constexpr double whole = 1000;
        shares.push_back(1 + std::llround(whole * (altitude - lowest) / (highest - lowest)));
    }
    std::string result;
    for (const std::string& line : columnLines(shares, chart)) {
        const bool isTop = result.empty();
        result += rightAligned(isTop ? screen.figures.altitude(highest) : "", axisWidth - 2) +
                  (isTop ? " ┤" : " │") + screen.accented(line) + "\n";
    }
    const std::string axis = distanceAxis(marks.back().distance, width, axisWidth, screen.figures);
    const std::string bottom = rightAligned(screen.figures.altitude(lowest), axisWidth - 2) + " ";
    return result + bottom + axis.substr(axisWidth - 1);
}

std::string splitTable(std::span<const Split> splits, const Activity& activity, const Screen& screen) {
    constexpr std::size_t barWidth = 28;
    const Figures& figures = screen.figures;
    double fastest = 0;  // metres per second
    for (const Split& split : splits) {
        if (split.movingTime > 0) fastest = std::max(fastest, split.distance / split.movingTime);
    }
    std::string result;
    const auto climb = [&](std::string_view sign, double meters) {
        const bool isLevel = meters < figures.smallUnitLength() / 2;
        return rightAligned(isLevel ? std::string() : std::string(sign) + figures.altitude(meters), 9);
    };
    double reached = 0;
    double elapsed = 0;  // seconds
    for (const Split& split : splits) {
        reached += split.distance;
        elapsed += split.movingTime;
        const double share = split.movingTime > 0 ? split.distance / split.movingTime / fastest : 0;
        const std::string label = figures.number(reached / figures.unitLength(), 1);
        result += rightAligned(label, 6) + rightAligned(figures.duration(elapsed), 10) +
                  rightAligned(paceOf(activity, split.movingTime / split.distance, figures), 13) + "  " +
                  screen.accented(leftAligned(bar(share, barWidth), barWidth));
        result += climb("+", split.gain) + climb("-", split.loss);
        result += "\n";
    }
    return result;
}

}  // namespace pedvar
