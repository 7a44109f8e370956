/// GPX documents: reading against Expat with empty handlers, writing against the shortest digits of the
/// coordinates, and both together against gpsbabel.
///
/// It calls itself as `gpx_bench --convert IN OUT` to measure a process that reads a document and writes it again.
#include "bench.h"
#include "core/geodesy.h"
#include "linux/xml/expat_parser.h"
#include "process.h"
#include "routes/gpx_parser.h"
#include "routes/gpx_writer.h"
#include "routes/route_summary.h"

#include <expat.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

using namespace pedvar;
using namespace pedvar::bench;

namespace {

constexpr std::size_t pointCount = 200'000;
constexpr Date start = dateFromUnix(1714545012);

/// A walk at one fix a second, as receivers write it: coordinates of nine decimals, altitudes of one.
std::vector<CLLocation> walk() {
    std::mt19937_64 random(1);
    std::normal_distribution<double> step(0, 1e-5);
    std::vector<CLLocation> locations;
    double latitude = 46.0569;
    double longitude = 14.5058;
    for (std::size_t i = 0; i < pointCount; ++i) {
        latitude += step(random);
        longitude += step(random);
        locations.push_back({.latitude = std::round(latitude * 1e9) / 1e9,
                             .longitude = std::round(longitude * 1e9) / 1e9,
                             .altitude = 300 + std::round(latitude * 1e7) / 100 - 4'605'690,
                             .horizontalAccuracy = 5,
                             .verticalAccuracy = 5,
                             .timestamp = start + Seconds{static_cast<double>(i)}});
    }
    return locations;
}

/// The same document with what watches add to a point.
std::string withExtensions(const std::string& document) {
    constexpr std::string_view end = "      </trkpt>\n";
    constexpr std::string_view extensions =
        "        <extensions>\n          <gpxtpx:TrackPointExtension>\n            <gpxtpx:hr>121</gpxtpx:hr>\n"
        "            <gpxtpx:cad>84</gpxtpx:cad>\n          </gpxtpx:TrackPointExtension>\n        "
        "</extensions>\n";
    std::string result;
    std::size_t from = 0;
    for (std::size_t at = document.find(end); at != std::string::npos; at = document.find(end, from)) {
        result.append(document, from, at - from).append(extensions).append(end);
        from = at + end.size();
    }
    return result.append(document, from);
}

/// Windows as a reader of files takes them; Expat counts lines at the end of each but the last.
constexpr std::size_t window = 256 * 1024;  // bytes

void readBare(std::string_view document, std::size_t piece) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
    while (!document.empty()) {
        const std::string_view next = document.substr(0, piece);
        document.remove_prefix(next.size());
        const auto status =
            XML_Parse(parser, next.data(), static_cast<int>(next.size()), document.empty() ? XML_TRUE : XML_FALSE);
        if (status != XML_STATUS_OK) std::abort();
    }
    XML_ParserFree(parser);
}

GPXDocument read(const std::string& document) {
    auto result = GPXXMLParser(sourceOf(document), start, document.size()).parse(ExpatParser());
    if (!result || result->segments.at(0).points.size() != pointCount) std::abort();
    return std::move(*result);
}

/// The least that writing a point takes: both coordinates, one over the other.
void writeCoordinates(const std::vector<CLLocation>& locations) {
    char text[64];
    for (const auto& location : locations) {
        keep(std::to_chars(text, text + sizeof text, location.latitude).ptr);
        keep(std::to_chars(text, text + sizeof text, location.longitude).ptr);
    }
}

void writeAll(const std::vector<CLLocation>& locations) {
    std::size_t size = 0;
    GPXWriter writer([&](std::string_view piece) { size += piece.size(); }, "Walk", "Walking", start);
    for (const auto& location : locations) writer.add(location);
    writer.finish();
    keep(size);
}

int convert(const std::string& from, const std::string& to) {
    std::ifstream in(from, std::ios::binary);
    std::ofstream out(to, std::ios::binary);
    const auto source = [&](std::span<char> room) {
        return static_cast<std::size_t>(in.read(room.data(), static_cast<std::streamsize>(room.size())).gcount());
    };
    const auto document = GPXXMLParser(source, start, std::filesystem::file_size(from)).parse(ExpatParser());
    if (!document) return 1;
    GPXWriter writer(
        [&](std::string_view piece) { out.write(piece.data(), static_cast<std::streamsize>(piece.size())); },
        "Walk", "Walking", start);
    for (const auto& segment : document->segments) {
        for (const auto& location : segment.points) writer.add(location);
    }
    writer.finish();
    return out.flush() ? 0 : 1;
}

void benchProcesses(const std::string& document) {
    std::string folder = std::filesystem::temp_directory_path() / "gpx_bench-XXXXXX";
    if (!mkdtemp(folder.data())) std::abort();
    const std::string from = folder + "/from.gpx", to = folder + "/to.gpx";
    std::ofstream(from, std::ios::binary) << document;
    const auto times =
        inTurn(5, {[&] { runProcess({"gpsbabel", "-i", "gpx", "-f", from, "-o", "gpx", "-F", to}); },
                   [&] { runProcess({"/proc/self/exe", "--convert", from, to}); }});
    row("GPX to GPX as a process, against gpsbabel", times[1] / times[0], 0.25,
        milliseconds(times[1]) + " to " + milliseconds(times[0]));
    std::filesystem::remove_all(folder);
}

double haversine(const CLLocation& from, const CLLocation& to) {
    constexpr double degree = 3.14159265358979323846 / 180;
    const double latitude = std::sin((to.latitude - from.latitude) * degree / 2);
    const double longitude = std::sin((to.longitude - from.longitude) * degree / 2);
    const double square = latitude * latitude + std::cos(from.latitude * degree) * std::cos(to.latitude * degree) *
                                                    longitude * longitude;
    return 2 * 6'371'008.8 * std::asin(std::sqrt(square));
}

}  // namespace

int main(int count, char** words) {
    if (count == 4 && std::string_view(words[1]) == "--convert") return convert(words[2], words[3]);
    const auto locations = walk();
    const std::string usual = writeGPX(locations, "Walk", "Walking", start);
    const std::string extended = withExtensions(usual);
    const auto document = read(usual);
    std::vector<EarthPosition> positions;
    for (const auto& location : locations) {
        positions.push_back(*earthPosition(location.latitude, location.longitude));
    }
    const auto times = inTurn(
        11, {[&] { readBare(usual, window); }, [&] { keep(read(usual)); }, [&] { readBare(extended, window); },
             [&] { keep(read(extended)); }, [&] { readBare(usual, usual.size()); },
             [&] { writeCoordinates(locations); }, [&] { writeAll(locations); },
             [&] {
                 double sum = 0;
                 for (std::size_t i = 1; i < locations.size(); ++i) {
                     sum += haversine(locations[i - 1], locations[i]);
                 }
                 keep(sum);
             },
             [&] {
                 double sum = 0;
                 for (std::size_t i = 1; i < positions.size(); ++i) {
                     sum += distance(positions[i - 1], positions[i]);
                 }
                 keep(sum);
             },
             [&] { keep(summaryOf(document)); }});
    const auto against = [&](std::size_t ours, std::size_t floor) {
        return milliseconds(times[ours]) + " to " + milliseconds(times[floor]);
    };
    row("GPX of 200,000 points read, against Expat with empty handlers", times[1] / times[0], 1.25,
        against(1, 0) + ", in one piece " + milliseconds(times[4]));
    row("the same with extensions", times[3] / times[2], 1.25, against(3, 2));
    row("GPX written, against the digits of its coordinates", times[6] / times[5], 1.5, against(6, 5));
    row("distances between kept positions, against haversine", times[8] / times[7], 1, against(8, 7));
    row("its whole summary, against reading it", times[9] / times[1], 0.2, against(9, 1));
    benchProcesses(usual);
}
