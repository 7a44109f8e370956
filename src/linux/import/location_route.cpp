#include "linux/import/location_route.h"

#include "core/date.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>

namespace pedvar {

namespace {

struct CivilTime {
    std::chrono::year_month_day day;
    std::chrono::hh_mm_ss<std::chrono::seconds> time;
};

CivilTime civilTime(Milliseconds time) {
    using namespace std::chrono;
    const sys_seconds moment{floor<seconds>(milliseconds(time)) + referenceEpoch};
    const auto day = floor<days>(moment);
    return {day, hh_mm_ss<seconds>(moment - day)};
}

std::string civilText(Milliseconds time, char between, char clockSeparator) {
    const auto [day, clock] = civilTime(time);
    return fmt::format("{:04}-{:02}-{:02}{}{:02}{}{:02}{}{:02}Z", static_cast<int>(day.year()),
                       static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()), between,
                       clock.hours().count(), clockSeparator, clock.minutes().count(), clockSeparator,
                       clock.seconds().count());
}

/// The shortest decimal text of the number; GPX has no exponents.
std::string decimalText(double number) {
    std::array<char, 400> text{};  // the longest double without an exponent has 327 characters
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return {text.data(), end};
}

std::optional<double> numberOf(const Tag& tag, std::string_view name) {
    std::string scratch;
    const Attribute* const attribute = tag.find(name);
    return attribute == nullptr ? std::nullopt : parseExportNumber(valueOf(*attribute, scratch));
}

}  // namespace

void LocationRoute::add(const Tag& location, ExportDateParser& dates) {
    std::string scratch;
    const Attribute* const date = location.find("date");
    if (date == nullptr) return;
    const auto time = dates.parse(valueOf(*date, scratch));
    const auto latitude = numberOf(location, "latitude");
    const auto longitude = numberOf(location, "longitude");
    if (!time || !latitude || !longitude || std::abs(*latitude) > 90 || std::abs(*longitude) > 180) return;

    if (points_.empty()) start_ = *time;
    points_ += fmt::format("      <trkpt lon=\"{}\" lat=\"{}\">", decimalText(*longitude), decimalText(*latitude));
    if (const auto altitude = numberOf(location, "altitude")) {
        points_ += fmt::format("<ele>{}</ele>", decimalText(*altitude));
    }
    points_ += fmt::format("<time>{}</time>", civilText(*time, 'T', ':'));
    constexpr std::pair<std::string_view, std::string_view> extensions[] = {
        {"speed", "speed"}, {"course", "course"}, {"horizontalAccuracy", "hAcc"}, {"verticalAccuracy", "vAcc"}};
    std::string known;
    for (const auto& [attribute, element] : extensions) {
        const auto number = numberOf(location, attribute);
        if (!number || *number < 0) continue;
        known += fmt::format("<{0}>{1}</{0}>", element, decimalText(*number));
    }
    if (!known.empty()) points_ += fmt::format("<extensions>{}</extensions>", known);
    points_ += "</trkpt>\n";
}

std::optional<WorkoutRouteFile> LocationRoute::finish() const {
    if (points_.empty()) return std::nullopt;
    WorkoutRouteFile file{.name = fmt::format("route_{}.gpx", civilText(start_, '_', '.')), .gpx = {}};
    file.gpx = fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<gpx version=\"1.1\" creator=\"Pedvar\" xmlns=\"http://www.topografix.com/GPX/1/1\">\n"
        "  <trk>\n"
        "    <name>Route {}</name>\n"
        "    <trkseg>\n"
        "{}"
        "    </trkseg>\n"
        "  </trk>\n"
        "</gpx>\n",
        civilText(start_, ' ', ':'), points_);
    return file;
}

}  // namespace pedvar
