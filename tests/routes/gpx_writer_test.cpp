#include "routes/gpx_writer.h"

#include "routes/read_gpx.h"

#include <doctest/doctest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <vector>

using namespace pedvar;

namespace {

constexpr Date start = dateFromUnix(1714545012);
constexpr double infinite = std::numeric_limits<double>::infinity();

std::string between(std::string_view text, std::string_view before, std::string_view after) {
    const std::size_t begin = text.find(before) + before.size();
    return std::string(text.substr(begin, text.find(after, begin) - begin));
}

std::string writtenName(std::string_view name) {
    return between(writeGPX({}, name, "Walking", start), "  <trk>\n    <name>", "</name>");
}

std::string writtenPoint(const CLLocation& location) {
    return between(writeGPX({{location}}, "", "", start), "<trkseg>\n", "    </trkseg>");
}

}  // namespace

TEST_CASE("a document is written to the letter") {
    const std::vector<CLLocation> locations = {
        {.latitude = 46.123456789012345,
         .longitude = -14.5,
         .altitude = 512.25,
         .verticalAccuracy = 3,
         .timestamp = dateFromUnix(1714545012.25)},
        {.latitude = 1e-05,
         .longitude = 180,
         .altitude = 0,
         .verticalAccuracy = -1,
         .timestamp = dateFromUnix(1714545013.9996)},
        {.latitude = -0.1,
         .longitude = 1e-7,
         .altitude = 0,
         .verticalAccuracy = 3,
         .timestamp = dateFromUnix(1714545015)},
    };
    CHECK(writeGPX(locations, "Tom & Jerry's <run> \"x\"", "Hiking", start) ==
          R"(<?xml version="1.0" encoding="UTF-8"?>
<gpx version="1.1" creator="Pedvar"
  xmlns="http://www.topografix.com/GPX/1/1"
  xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
  xsi:schemaLocation="http://www.topografix.com/GPX/1/1 http://www.topografix.com/GPX/1/1/gpx.xsd">
  <metadata>
    <name>Tom &amp; Jerry&apos;s &lt;run&gt; &quot;x&quot;</name>
    <desc>Hiking recorded with Pedvar</desc>
    <time>2024-05-01T06:30:12.000Z</time>
  </metadata>
  <trk>
    <name>Tom &amp; Jerry&apos;s &lt;run&gt; &quot;x&quot;</name>
    <type>Hiking</type>
    <trkseg>
      <trkpt lat="46.123456789012344" lon="-14.5">
        <ele>512.2</ele>
        <time>2024-05-01T06:30:12.250Z</time>
      </trkpt>
      <trkpt lat="0.00001" lon="180">
        <time>2024-05-01T06:30:14.000Z</time>
      </trkpt>
      <trkpt lat="-0.1" lon="0.0000001">
        <ele>0.0</ele>
        <time>2024-05-01T06:30:15.000Z</time>
      </trkpt>
    </trkseg>
  </trk>
</gpx>
)");
}

TEST_CASE("names keep their letters and lose control characters and broken bytes") {
    CHECK(writtenName("Höhe 山 &amp;") == "Höhe 山 &amp;amp;");
    CHECK(writtenName("a\x01\x0B\x7F\tb\n\u0085\uFFFE" + std::string(1, '\0')) == "ab");
    CHECK(writtenName("a\xFF\xC3(\xED\xA0\x80") == "a\uFFFD\uFFFD(\uFFFD\uFFFD\uFFFD");
}

TEST_CASE("what GPX cannot express is left out") {
    CHECK(writtenPoint({.latitude = infinite, .longitude = 2, .timestamp = start}).empty());
    CHECK(writtenPoint({.latitude = 1, .longitude = std::nan(""), .timestamp = start}).empty());
    CHECK(writtenPoint({.latitude = 1, .longitude = 2, .altitude = infinite, .timestamp = Date{Seconds{1e300}}}) ==
          "      <trkpt lat=\"1\" lon=\"2\">\n      </trkpt>\n");
}

TEST_CASE("altitudes have the decimal that printf gives them") {
    std::mt19937_64 random(1);
    std::vector<double> altitudes = {0.05,
                                     0.15,
                                     0.25,
                                     0.35,
                                     2.5,
                                     1234.95,
                                     -0.04,
                                     -0.05,
                                     9.949999999999999,
                                     9.95,
                                     1e8,
                                     123456789012.35,
                                     std::numeric_limits<double>::max()};
    for (int i = 0; i < 2000; ++i) {
        altitudes.push_back(static_cast<double>(static_cast<int>(random() % 200'000) - 50'000) / 20);
        altitudes.push_back(static_cast<double>(random() % 1'000'000'000) / 99'999);
    }
    for (const double altitude : altitudes) {
        char expected[400];
        std::snprintf(expected, sizeof expected, "%.1f", altitude);
        REQUIRE(between(writtenPoint({.altitude = altitude}), "<ele>", "</ele>") == expected);
    }
}

TEST_CASE("coordinates of any size read back exactly from a document written in pieces") {
    std::mt19937_64 random(2);
    std::vector<CLLocation> locations;
    while (locations.size() < 10'000) {
        const double any = std::bit_cast<double>(random());
        if (!std::isfinite(any)) continue;
        locations.push_back({.latitude = static_cast<double>(random() >> 11) * 0x1p-53 * 180 - 90,
                             .longitude = any,
                             .altitude = 1,
                             .horizontalAccuracy = 5,
                             .verticalAccuracy = 5,
                             .timestamp = start});
    }
    std::size_t pieces = 0;
    std::string text;
    const auto collect = [&](std::string_view piece) {
        CHECK(piece.size() <= 256 * 1024);
        text += piece;
        ++pieces;
    };
    GPXWriter writer(collect, "n", "t", start);
    for (const auto& location : locations) writer.add(location);
    writer.finish();
    CHECK(pieces > 10);
    const auto document = readGPX(text);
    REQUIRE(document);
    CHECK(document->segments.at(0).points == locations);
}
