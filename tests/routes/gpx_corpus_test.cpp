/// Real files of many writers, where a collection of them lies beside the project.
#include "routes/read_gpx.h"
#include "routes/route_summary.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <sstream>

using namespace pedvar;
using nlohmann::json;

namespace {

const std::filesystem::path corpus = PEDVAR_CORPUS;

double numberIn(const std::string& text) {
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// Coordinates as sums in order, which differ when any bit of any point does, or almost any order.
json sumsOf(const GPXDocument& document) {
    double latitude = 0;
    double longitude = 0;
    double altitude = 0;
    for (const auto& segment : document.segments) {
        for (const auto& point : segment.points) {
            latitude += point.latitude;
            longitude += point.longitude;
            altitude += point.altitude;
        }
    }
    return {{"lat_sum", latitude}, {"lon_sum", longitude}, {"alt_sum", altitude}};
}

/// What was read, under the names of the expectation.
json readingOf(const std::expected<GPXDocument, GPXFailure>& document) {
    if (!document) return {{"result", "failure"}};
    const auto summary = summaryOf(*document);
    json reading = sumsOf(*document);
    reading["result"] = summary.points > 0 ? "points" : "no_points";
    reading["track_name"] = document->trackName ? json(*document->trackName) : json();
    reading["segment_sizes"] = summary.segments;
    reading["has_route_points"] = document->hasRoutePoints;
    reading["with_elevation"] = summary.withElevation;
    reading["with_time"] = summary.withTime;
    return reading;
}

/// A figure that others state of a file, where it is one of ours.
std::optional<double> figure(const std::string& quantity, const GPXDocument& document) {
    const auto summary = summaryOf(document);
    if (quantity == "total_points") return static_cast<double>(summary.points);
    if (quantity == "length_2d" || quantity == "distance") return summary.distance;
    if (quantity == "elevation_gain") return summary.elevation.value_or(ElevationChange{}).gain;
    if (quantity == "elevation_loss") return summary.elevation.value_or(ElevationChange{}).loss;
    if (quantity == "duration") {
        Seconds duration{};
        for (const auto& segment : document.segments) {
            duration += segment.points.back().timestamp - segment.points.front().timestamp;
        }
        return duration.count();
    }
    return std::nullopt;
}

/// "4%" of the value, "0.5", or nothing for exactly.
double allowance(const std::string& tolerance, double value) {
    return numberIn(tolerance) * (tolerance.contains('%') ? std::abs(value) / 100 : 1) + 1e-3;
}

}  // namespace

TEST_CASE("real files are read as an independent reader reads them") {
    if (!exists(corpus)) {
        MESSAGE("skipped: no corpus beside the project");
        return;
    }
    std::size_t count = 0;
    const json expectations = json::parse(readFile(corpus / "expected_open.json"));
    for (const auto& [file, expected] : expectations.at("files").items()) {
        const json reading = readingOf(readGPX(readFile(corpus / file)));
        for (const auto& [name, value] : reading.items()) {
            const json& other = expected[name];
            if (value == (name.ends_with("_sum") ? json(numberIn(other)) : other)) continue;
            MESSAGE(file, ": ", name, " is ", value.dump(), ", not ", other.dump());
            // The other reader leaves times without a zone unread, which are in UTC.
            REQUIRE(name == "with_time");
            CHECK(value.get<int>() - other.get<int>() == expected["time_other"].value("rejected:no_zone", 0));
        }
        ++count;
    }
    CHECK(count > 50);
}

TEST_CASE("figures that others state of their files are ours too, within their tolerances") {
    if (!exists(corpus)) {
        MESSAGE("skipped: no corpus beside the project");
        return;
    }
    std::istringstream lines(readFile(corpus / "truth/expected_open.tsv"));
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line);) {
        std::string file, quantity, relation, value, tolerance;
        std::istringstream cells(line);
        for (auto* cell : {&file, &quantity, &relation, &value, &tolerance}) std::getline(cells, *cell, '\t');
        if (!file.ends_with(".gpx") || tolerance == "informative" || tolerance.contains("pauses")) continue;
        const auto document = readGPX(readFile(corpus / file));
        const auto ours = document ? figure(quantity, *document) : std::nullopt;
        if (!ours) continue;
        CAPTURE(line);
        CAPTURE(*ours);
        const double theirs = numberIn(value);
        CHECK(*ours - theirs <= allowance(tolerance, theirs));
        CHECK((relation == "<=" || theirs - *ours <= allowance(tolerance, theirs)));
        ++count;
    }
    CHECK(count > 30);
}
