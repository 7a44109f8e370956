#include "routes/way.h"

#include "core/geodesy.h"
#include "recording/elevation_calculator.h"

#include <algorithm>
#include <optional>
#include <ranges>

namespace pedvar {
namespace {

constexpr double standingSpeed = 0.5;   // metres per second; slower than anybody walks
constexpr double shortestLook = 5;      // seconds; over less, a receiver's wavering looks like walking
constexpr double shortestBreak = 60;    // seconds; tunnels and bad reception are shorter
constexpr double unusualInterval = 10;  // times the usual one
constexpr double impossibleSpeed = 70;  // metres per second; nobody rides that fast
constexpr double mostSplits = 10'000;
constexpr double shortestSplit = 1;  // metre; what remains of it is rounding

double secondsBetween(const CLLocation& from, const CLLocation& to) {
    return std::max(Seconds(to.timestamp - from.timestamp).count(), 0.0);
}

/// The seconds between two points above which there was a break.
double longestInterval(std::span<const CLLocation> points) {
    std::vector<double> intervals;
    for (std::size_t i = 1; i < points.size(); ++i) {
        intervals.push_back(secondsBetween(points[i - 1], points[i]));
    }
    if (intervals.empty()) return shortestBreak;
    const auto middle = intervals.begin() + static_cast<std::ptrdiff_t>(intervals.size() / 2);
    std::ranges::nth_element(intervals, middle);
    return std::max(unusualInterval * *middle, shortestBreak);
}

EarthPosition positionOf(const CLLocation& point) {
    return earthPosition(point.latitude, point.longitude).value();
}

/// Piece by piece of at least five seconds, each of which was either gone or stood.
void countMovingTime(std::span<const CLLocation> points, std::span<WayMark> marks) {
    const auto interval = [&](std::size_t i) {
        return marks[i].isAfterBreak ? 0 : secondsBetween(points[marks[i - 1].point], points[marks[i].point]);
    };
    for (std::size_t first = 0, last = 0; first + 1 < marks.size(); first = last) {
        const auto goesOn = [&] {
            return last + 1 < marks.size() && !marks[last].isAfterBreak && !marks[last + 1].isAfterBreak;
        };
        double elapsed = interval(++last);
        while (elapsed < shortestLook && goesOn()) elapsed += interval(++last);
        const double way = distance(positionOf(points[marks[first].point]), positionOf(points[marks[last].point]));
        const bool isMoving = way >= standingSpeed * elapsed;
        for (std::size_t i = first + 1; i <= last; ++i) {
            marks[i].movingTime = marks[i - 1].movingTime + (isMoving ? interval(i) : 0);
        }
    }
}

WayMark between(const WayMark& from, const WayMark& to, double distance) {
    const double share = (distance - from.distance) / (to.distance - from.distance);
    return {.distance = distance,
            .movingTime = from.movingTime + share * (to.movingTime - from.movingTime),
            .gain = from.gain + share * (to.gain - from.gain),
            .loss = from.loss + share * (to.loss - from.loss)};
}

Split splitBetween(const WayMark& from, const WayMark& to) {
    return {.distance = to.distance - from.distance,
            .movingTime = to.movingTime - from.movingTime,
            .gain = to.gain - from.gain,
            .loss = to.loss - from.loss};
}

/// How many of the first points, in the order of the range, lie around the first of them.
template <class Points>
std::size_t countAround(const Points& points, double radius) {
    std::optional<EarthPosition> end;
    std::size_t count = 0;
    for (const CLLocation& point : points) {
        const auto position = earthPosition(point.latitude, point.longitude);
        if (!end) end = position;
        if (position && distance(*end, *position) > radius) break;
        ++count;
    }
    return count;
}

}  // namespace

std::vector<WayMark> marksAlong(std::span<const CLLocation> points) {
    const double longest = longestInterval(points);
    ElevationCalculator::StreamingTracker climb;
    std::vector<WayMark> marks;
    EarthPosition last;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto position = earthPosition(points[i].latitude, points[i].longitude);
        if (!position) continue;
        climb.update(points[i].altitude, points[i].verticalAccuracy);
        WayMark mark{.point = i, .gain = climb.gain, .loss = climb.loss};
        if (!marks.empty()) {
            const WayMark& before = marks.back();
            const double seconds = secondsBetween(points[before.point], points[i]);
            const double way = distance(last, *position);
            mark.isAfterBreak = seconds > longest || (seconds >= shortestLook && way > impossibleSpeed * seconds);
            mark.distance = before.distance + (mark.isAfterBreak ? 0 : way);
        }
        marks.push_back(mark);
        last = *position;
    }
    countMovingTime(points, marks);
    return marks;
}

std::vector<Split> splitsOf(std::span<const WayMark> marks, double length) {
    std::vector<Split> splits;
    if (marks.empty() || !(marks.back().distance <= mostSplits * length)) return splits;
    WayMark start = marks.front();
    for (std::size_t i = 1; i < marks.size(); ++i) {
        double border = static_cast<double>(splits.size() + 1) * length;
        while (marks[i].distance >= border) {
            const WayMark end = between(marks[i - 1], marks[i], border);
            splits.push_back(splitBetween(start, end));
            start = end;
            border = static_cast<double>(splits.size() + 1) * length;
        }
    }
    if (marks.back().distance - start.distance >= shortestSplit) {
        splits.push_back(splitBetween(start, marks.back()));
    }
    return splits;
}

std::span<const CLLocation> withoutEnds(std::span<const CLLocation> points, double radius) {
    const std::size_t before = countAround(points, radius);
    const auto rest = points.subspan(before);
    const std::size_t behind = countAround(points | std::views::reverse, radius);
    return rest.first(rest.size() - std::min(behind, rest.size()));
}

}  // namespace pedvar
