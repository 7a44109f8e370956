#include "routes/gpx_writer.h"

#include "routes/gpx_values.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace pedvar {

namespace {

constexpr std::size_t pieceSize = 256 * 1024;  // bytes
constexpr std::size_t longestPoint = 2048;     // bytes; three numbers of at most 400 digits and the rest
constexpr std::size_t usualPoint = 160;        // bytes

constexpr std::string_view gpxStart = R"(<?xml version="1.0" encoding="UTF-8"?>
<gpx version="1.1" creator="Pedvar"
  xmlns="http://www.topografix.com/GPX/1/1"
  xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
  xsi:schemaLocation="http://www.topografix.com/GPX/1/1 http://www.topografix.com/GPX/1/1/gpx.xsd">
)";
constexpr std::string_view gpxEnd = "    </trkseg>\n  </trk>\n</gpx>\n";

char* put(char* place, std::string_view text) {
    std::memcpy(place, text.data(), text.size());
    return place + text.size();
}

/// The shortest digits that read back to the same bits, never with an exponent.
char* putShortest(char* place, double value) {
    return std::to_chars(place, place + longestPoint, value, std::chars_format::fixed).ptr;
}

/// What "%.1f" makes of the value, which is finite.
char* putOneDecimal(char* place, double value) {
    const double tenths = std::abs(value) * 10;
    const double below = std::floor(tenths);
    const double rest = tenths - below;
    // The product is off by less than a millionth here; nearer than that to the middle, the exact way decides.
    if (tenths > 1e9 || std::abs(rest - 0.5) < 1e-6) {
        return std::to_chars(place, place + longestPoint, value, std::chars_format::fixed, 1).ptr;
    }
    const auto rounded = static_cast<std::uint32_t>(rest > 0.5 ? below + 1 : below);
    if (std::signbit(value)) *place++ = '-';
    place = std::to_chars(place, place + longestPoint, rounded / 10).ptr;
    *place++ = '.';
    *place++ = static_cast<char>('0' + rounded % 10);
    return place;
}

std::string line(std::string_view start, std::string_view text, std::string_view end) {
    std::string result(start);
    result += text;
    result += end;
    return result += '\n';
}

}  // namespace

GPXWriter::GPXWriter(Sink sink, std::string_view name, std::string_view type, Date start)
    : sink_(std::move(sink)), piece_(pieceSize) {
    const std::string escapedName = escaped(name);
    const std::string escapedType = escaped(type);
    const std::string_view time = dateFormatter_.format(start);
    std::string header(gpxStart);
    header += "  <metadata>\n";
    header += line("    <name>", escapedName, "</name>");
    header += line("    <desc>", escapedType, " recorded with Pedvar</desc>");
    if (!time.empty()) header += line("    <time>", time, "</time>");
    header += "  </metadata>\n  <trk>\n";
    header += line("    <name>", escapedName, "</name>");
    header += line("    <type>", escapedType, "</type>");
    header += "    <trkseg>\n";
    sink_(header);
}

void GPXWriter::add(const CLLocation& location) {
    if (!std::isfinite(location.latitude) || !std::isfinite(location.longitude)) return;
    if (piece_.size() - used_ < longestPoint) flush();
    char* end = put(piece_.data() + used_, "      <trkpt lat=\"");
    end = putShortest(end, location.latitude);
    end = put(end, "\" lon=\"");
    end = putShortest(end, location.longitude);
    end = put(end, "\">\n");
    if (std::isfinite(location.altitude) && (location.altitude != 0 || location.verticalAccuracy >= 0)) {
        end = put(end, "        <ele>");
        end = putOneDecimal(end, location.altitude);
        end = put(end, "</ele>\n");
    }
    if (const std::string_view time = dateFormatter_.format(location.timestamp); !time.empty()) {
        end = put(end, "        <time>");
        end = put(end, time);
        end = put(end, "</time>\n");
    }
    end = put(end, "      </trkpt>\n");
    used_ = static_cast<std::size_t>(end - piece_.data());
}

void GPXWriter::finish() {
    flush();
    sink_(gpxEnd);
}

void GPXWriter::flush() {
    if (used_ > 0) sink_({piece_.data(), used_});
    used_ = 0;
}

std::string writeGPX(std::span<const CLLocation> locations, std::string_view name, std::string_view type,
                     Date start) {
    std::string document;
    document.reserve(locations.size() * usualPoint);
    GPXWriter writer([&](std::string_view piece) { document += piece; }, name, type, start);
    for (const auto& location : locations) writer.add(location);
    writer.finish();
    return document;
}

}  // namespace pedvar
