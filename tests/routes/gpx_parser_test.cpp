#include "routes/gpx_parser.h"

#include "routes/read_gpx.h"
#include "routes/route_summary.h"

#include <doctest/doctest.h>

#include <cmath>
#include <vector>

using namespace pedvar;

namespace {

constexpr std::string_view point = R"(<trkpt lat="1" lon="2"/>)";

/// Points of each segment.
std::vector<std::size_t> segmentsOf(std::string_view content) {
    return summaryOf(gpxOf(content)).segments;
}

/// The elevation read from the text of an `ele` element; NaN for none.
double elevationOf(std::string_view text) {
    const auto document = gpxOf(R"(<trkpt lat="1" lon="2"><ele>)" + std::string(text) + "</ele></trkpt>");
    const CLLocation& location = document.segments.at(0).points.at(0);
    return location.verticalAccuracy >= 0 ? location.altitude : std::nan("");
}

std::string nameOf(std::string_view content) {
    return gpxOf(content).trackName.value_or("(none)");
}

std::string points(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += point;
    return text;
}

}  // namespace

TEST_CASE("a point has its coordinates, elevation and time, and says which of them it lacked") {
    const auto document = gpxOf(R"(<trk><trkseg>
        <trkpt lat="46.5" lon="-14.25"><ele> 512.5 </ele><time>
            2024-05-01T06:30:12.250Z</time></trkpt>
        <trkpt lon="15" lat="47"><time>yesterday</time></trkpt>
        <trkpt lat="48"><ele>900</ele><time>2024-05-01T06:30:12Z</time></trkpt>
        <trkpt lat="91" lon="1e10"><ele>low</ele></trkpt>
        </trkseg></trk>)");
    REQUIRE(document.segments.size() == 1);
    CHECK(document.segments[0].points ==
          std::vector<CLLocation>{
              {.latitude = 46.5,
               .longitude = -14.25,
               .altitude = 512.5,
               .horizontalAccuracy = 5,
               .verticalAccuracy = 5,
               .timestamp = dateFromUnix(1714545012.25)},
              {.latitude = 47, .longitude = 15, .horizontalAccuracy = 5, .timestamp = momentOfReading},
              {.latitude = 91, .longitude = 1e10, .horizontalAccuracy = 5, .timestamp = momentOfReading}});
    CHECK(document.segments[0].hasTime == std::vector<bool>{true, false, false});
    CHECK(!document.trackName);
    CHECK(!document.hasRoutePoints);
}

TEST_CASE("readings in a point's extensions count only when they are asked for") {
    constexpr std::string_view text = R"(<gpx><trk><speed>9</speed><trkseg>
        <trkpt lat="1" lon="2"><ele>3</ele><extensions><speed>1.5</speed><course>270</course><hAcc>8.25</hAcc>
            <vAcc>4</vAcc></extensions></trkpt>
        <trkpt lat="1" lon="2"><ele>3</ele><extensions><x:accuracy_horizontal>12</x:accuracy_horizontal>
            <x:speed>-1</x:speed><x:course>north</x:course></extensions></trkpt>
        <trkpt lat="1" lon="2"><extensions><vAcc>4</vAcc></extensions></trkpt>
        <trkpt lat="1" lon="2"><ele>3</ele><extensions><hAcc>-1</hAcc><vAcc>-1</vAcc></extensions></trkpt>
        </trkseg></trk></gpx>)";
    const auto read = [&](GPXReadings readings) {
        return GPXXMLParser(sourceOf(text), momentOfReading, 0, readings)
            .parse(ExpatParser())
            ->segments.at(0)
            .points;
    };
    CLLocation place{.latitude = 1,
                     .longitude = 2,
                     .altitude = 3,
                     .horizontalAccuracy = 5,
                     .verticalAccuracy = 5,
                     .timestamp = momentOfReading};
    CHECK(read(GPXReadings::assumed).front() == place);
    const auto recorded = read(GPXReadings::recorded);
    CHECK(recorded[2].verticalAccuracy == -1);
    CHECK(recorded[3].horizontalAccuracy == -1);  // so the receiver called them invalid
    CHECK(recorded[3].verticalAccuracy == -1);
    place.horizontalAccuracy = 12;
    CHECK(recorded[1] == place);
    place.horizontalAccuracy = 8.25;
    place.verticalAccuracy = 4;
    place.speed = 1.5;
    place.course = 270;
    CHECK(recorded[0] == place);
}

TEST_CASE("a number is the whole text in decimal notation") {
    for (const auto& [text, value] : {std::pair("5.", 5.0),
                                      {".5", 0.5},
                                      {"+7", 7.0},
                                      {"-3e2", -300.0},
                                      {"1E+1", 10.0},
                                      {"\u00A05\u3000", 5.0},
                                      {"4.9e-324", 4.9e-324},
                                      {"1e-400", 0.0},
                                      {"0.1", 0.1}}) {
        CAPTURE(text);
        CHECK(elevationOf(text) == value);
    }
    for (const char* text : {"", ".", "-", "+-5", "--5", "nan", "-inf", "+infinity", "0x10", "1e", "e5", "1 2",
                             "5,5", "1_0", "1e400", "5m", "5\u200B"}) {
        CAPTURE(text);
        CHECK(std::isnan(elevationOf(text)));
    }
    CHECK(segmentsOf(R"(<trkpt lat=" 1" lon="2"/><trkpt lat="1" lon="2 "/><trkpt lat="1" lon="0x2"/>)").empty());
}

TEST_CASE("route points go where track points go, and leftovers are one last segment") {
    const std::string two = "<trkseg>" + points(2) + "</trkseg>";
    const std::string route = R"(<rte><rtept lat="1" lon="2"/></rte>)";
    struct Case {
        std::string content;
        std::vector<std::size_t> segments;
    };
    const Case cases[] = {
        {two + "<trkseg/>" + two, {2, 2}},
        {route + route, {2}},
        {route + two, {2}},
        {two + route + route, {2, 2}},
        {two + route + two + route, {2, 2, 1}},
        {"<trkseg>" + points(1) + "<trkseg>" + points(3) + "</trkseg>" + points(1) + "</trkseg>", {3, 1}},
        {"<trk>" + points(1) + "</trk><trk>" + points(1) + "</trk>", {2}},
        {R"(<wpt lat="1" lon="2"/><x:trkpt lat="1" lon="2"/><TRKPT lat="1" lon="2"/>)", {}},
    };
    for (const auto& [content, segments] : cases) {
        CAPTURE(content);
        CHECK(segmentsOf(content) == segments);
        CHECK(gpxOf(content).hasRoutePoints == content.contains("rtept"));
    }
}

TEST_CASE("the name is the first within a track that is not blank") {
    CHECK(nameOf("<metadata><name>file</name></metadata><rte><name>route</name></rte>") == "(none)");
    CHECK(nameOf("<name>file</name><trk><name> \u2003 </name><name/></trk><trk><name>b</name></trk>") == "b");
    CHECK(nameOf("<trk><metadata><name>m</name></metadata><trkpt lat='x'><name>km "
                 "1</name></trkpt><name>t</name></trk>") == "km 1");
    CHECK(nameOf("<trk><name>\u3000a <![CDATA[<b>]]><!-- c --> &amp; &#xe9;\n</name></trk>") == "a <b> & é");
    CHECK(nameOf("<trk><name>lost<i>kept</i> too</name></trk>") == "kept too");
    CHECK(nameOf("<trk><x:name>x</x:name></trk>") == "(none)");
}

TEST_CASE("the last elevation and time inside a point count, wherever they stand, and none outlives it") {
    const auto document = gpxOf(R"(<trkpt lat="1" lon="2"><extensions><ele>1</ele></extensions><ele>2</ele></trkpt>
        <trkpt lat="1" lon="2"><ele>3</ele><time>2024-05-01T06:30:12Z</time><x><ele>?</ele><time>?</time></x></trkpt>
        <trkpt lat="1"><ele>4</ele><time>2024-05-01T06:30:12Z</time></trkpt><ele>5</ele><trkpt lat="1" lon="2"/>)");
    const auto& locations = document.segments.at(0).points;
    REQUIRE(locations.size() == 3);
    CHECK(locations[0].altitude == 2);
    CHECK(locations[1].verticalAccuracy == -1);
    CHECK(locations[2].verticalAccuracy == -1);
    CHECK(document.segments[0].hasTime == std::vector<bool>(3, false));
}

TEST_CASE("a summary adds segments up without the ways between them") {
    const auto summary = summaryOf(gpxOf(R"(
        <trkseg><trkpt lat="0" lon="0"><ele>100</ele></trkpt><trkpt lat="0" lon="200"/>
        <trkpt lat="0" lon="0.001"><ele>110</ele><time>2024-05-01T06:30:12Z</time></trkpt></trkseg>
        <trkseg><trkpt lat="50" lon="7"><ele>5000</ele></trkpt></trkseg>
        <trkseg><trkpt lat="9" lon="0"><ele>500</ele></trkpt><trkpt lat="9" lon="0"><ele>495</ele></trkpt></trkseg>)"));
    CHECK(summary.segments == std::vector<std::size_t>{3, 1, 2});
    CHECK(summary.points == 6);
    CHECK(summary.withElevation == 5);
    CHECK(summary.withTime == 1);
    CHECK(summary.distance == doctest::Approx(111.319490793).epsilon(1e-9));
    CHECK(summary.elevation == ElevationChange{10, 5, 100, 500});
    CHECK(!summaryOf(gpxOf("")).elevation);
}
