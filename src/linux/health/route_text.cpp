#include "linux/health/route_text.h"

#include "core/date.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <string_view>
#include <utility>

namespace pedvar {

namespace {

struct CivilTime {
    std::chrono::year_month_day day;
    std::chrono::hh_mm_ss<std::chrono::milliseconds> time;
};

CivilTime civilTime(Milliseconds time) {
    using namespace std::chrono;
    const sys_time<milliseconds> moment{milliseconds(time) + referenceEpoch};
    const auto day = floor<days>(moment);
    return {day, hh_mm_ss(moment - day)};
}

/// Without a fraction of the second.
std::string civilText(Milliseconds time, char between, char clockSeparator) {
    const auto [day, clock] = civilTime(time);
    return fmt::format("{:04}-{:02}-{:02}{}{:02}{}{:02}{}{:02}", static_cast<int>(day.year()),
                       static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()), between,
                       clock.hours().count(), clockSeparator, clock.minutes().count(), clockSeparator,
                       clock.seconds().count());
}

std::string exactText(Milliseconds time) {
    const auto fraction = civilTime(time).time.subseconds().count();
    const std::string text = civilText(time, 'T', ':');
    return fraction == 0 ? text + "Z" : fmt::format("{}.{:03}Z", text, fraction);
}

/// The shortest decimal text of the number; GPX has no exponents.
std::string decimalText(double number) {
    std::array<char, 400> text{};  // the longest double without an exponent has 327 characters
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return {text.data(), end};
}

}  // namespace

void RouteText::add(const RouteTextPoint& point) {
    if (points_.empty()) start_ = point.time;
    points_ += fmt::format("      <trkpt lon=\"{}\" lat=\"{}\">", decimalText(point.longitude),
                           decimalText(point.latitude));
    if (point.altitude) points_ += fmt::format("<ele>{}</ele>", decimalText(*point.altitude));
    points_ += fmt::format("<time>{}</time>", exactText(point.time));
    const std::pair<std::string_view, std::optional<double>> extensions[] = {{"speed", point.speed},
                                                                             {"course", point.course},
                                                                             {"hAcc", point.horizontalAccuracy},
                                                                             {"vAcc", point.verticalAccuracy}};
    std::string known;
    for (const auto& [element, number] : extensions) {
        if (number) known += fmt::format("<{0}>{1}</{0}>", element, decimalText(*number));
    }
    if (!known.empty()) points_ += fmt::format("<extensions>{}</extensions>", known);
    points_ += "</trkpt>\n";
}

std::optional<WorkoutRouteFile> RouteText::finish() const {
    if (points_.empty()) return std::nullopt;
    WorkoutRouteFile file{.name = fmt::format("route_{}Z.gpx", civilText(start_, '_', '.')), .gpx = {}};
    file.gpx = fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<gpx version=\"1.1\" creator=\"Pedvar\" xmlns=\"http://www.topografix.com/GPX/1/1\">\n"
        "  <trk>\n"
        "    <name>Route {}Z</name>\n"
        "    <trkseg>\n"
        "{}"
        "    </trkseg>\n"
        "  </trk>\n"
        "</gpx>\n",
        civilText(start_, ' ', ':'), points_);
    return file;
}

}  // namespace pedvar
