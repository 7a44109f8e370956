#include "routes/read_gpx.h"
#include "routes/route_summary.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <string>

using namespace pedvar;

namespace {

std::string failureOf(std::string_view document) {
    const auto outcome = readGPX(document);
    if (outcome) return "(read)";
    CHECK(outcome.error().error == GPXError::invalidFormat);
    return outcome.error().detail.inEnglish();
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

/// A document as a slow source has it: a few bytes at a time.
XmlParser::Source inPiecesOf(std::size_t size, std::string_view document) {
    return [size, document](std::span<char> room) mutable {
        const std::size_t count = document.copy(room.data(), std::min(size, room.size()));
        document.remove_prefix(count);
        return count;
    };
}

}  // namespace

TEST_CASE("what is no XML is told by its kind, and broken XML by the place where it breaks") {
    using namespace std::string_literals;
    for (const auto& [document, kind] : {std::pair(" \n"s, "empty"),
                                         {"\x1F\x8B\x08\x00"s, "a gzip archive"},
                                         {"PK\x03\x04", "a zip archive"},
                                         {"BZh91AY", "a bzip2 archive"},
                                         {std::string(257, 'a') + "ustar", "a tar archive"},
                                         {"\uFEFF\n<!DocType HTML><p>moved<br></HTML>", "a web page"},
                                         {"<html><br></html>", "a web page"},
                                         {"{\"points\": []}", "a JSON document"},
                                         {"$GPGGA,063012", "a receiver's NMEA log"}}) {
        CHECK(failureOf(document) == "It is "s + kind + ".");
    }
    CHECK(failureOf("<gpx>\n <name>A & B</name></gpx>") ==
          "It is broken: not well-formed (invalid token) (line 2, column 10).");
    CHECK(failureOf("<gpx><trk></gpx>") == "It is broken: mismatched tag (line 1, column 12).");
    CHECK(failureOf("<?xml version='1.0' encoding='klingon'?><gpx/>").contains("unknown encoding"));
    CHECK(GPXFailure{GPXError::invalidFormat, "It is empty."}.message().inEnglish() ==
          "The file is not a valid GPX format. It is empty.");
    CHECK(GPXFailure{GPXError::noTrackPoints, {}}.message().inEnglish() ==
          "The GPX file contains no track points.");
    CHECK(description(GPXError::fileNotFound).inEnglish() == "The GPX file could not be found.");
}

TEST_CASE("documents that would cost out of proportion are refused") {
    std::string laughs = "<!DOCTYPE gpx [<!ENTITY a0 \"ha ha ha ha ha ha ha ha ha ha\">";
    for (char level = '1'; level <= '8'; ++level) {
        const std::string inner = "&a" + std::string(1, static_cast<char>(level - 1)) + ";";
        laughs += "<!ENTITY a" + std::string(1, level) + " \"" + repeated(inner, 10) + "\">";
    }
    CHECK(failureOf(laughs + "]><gpx><trk><name>&a8;</name></trk></gpx>").contains("amplification"));
    CHECK(failureOf("<!DOCTYPE gpx [<!ENTITY a \"&a;\">]><gpx>&a;</gpx>").contains("recursive"));
    CHECK(failureOf(repeated("<a>", 100'000)).contains("nested too deep"));
    CHECK(failureOf(repeated("<a>", 256) + repeated("</a>", 256)) == "(read)");
    const std::string large(17 * 1024 * 1024, 'x');
    CHECK(failureOf("<gpx><!--" + large + "--></gpx>").contains("too long"));
    const auto named = readGPX("<gpx><trk><name>" + large + "</name></trk></gpx>");
    REQUIRE(named);
    CHECK(named->trackName->size() < 5 * 1024 * 1024);
}

TEST_CASE("an external entity is passed over, an internal one is read") {
    const auto document = readGPX(R"(<!DOCTYPE gpx SYSTEM "http://localhost/gpx.dtd"
        [<!ENTITY f SYSTEM "file:///etc/passwd"><!ENTITY n "in">]>
        <gpx><trk><name>[&f;&unknown;]&n;</name></trk></gpx>)");
    REQUIRE(document);
    CHECK(document->trackName == "[]in");
}

TEST_CASE("where a document is cut into pieces does not matter, nor does its encoding") {
    const std::string content =
        "<gpx><trk><name>H\xC3\xB6he</name><trkseg><trkpt lat='46.5' lon='14.25'><ele>5</ele>"
        "<time>2024-05-01T06:30:12Z</time></trkpt></trkseg></trk></gpx>";
    for (const std::size_t size : {1u, 2u, 7u, 64u}) {
        const auto document = GPXXMLParser(inPiecesOf(size, content), momentOfReading).parse(ExpatParser());
        REQUIRE(document);
        CHECK(document->trackName == "Höhe");
        CHECK(document->segments.at(0).points.at(0).timestamp == dateFromUnix(1714545012));
    }
    CHECK(readGPX("\uFEFF" + content)->trackName == "Höhe");
    CHECK(readGPX("<?xml version='1.0' encoding='ISO-8859-1'?><gpx><trk><name>H\xF6he</name></trk></gpx>")
              ->trackName == "Höhe");

    // Points across the borders of windows, and a comment that needs larger ones.
    const std::string many = repeated("<trkpt lat='46.5' lon='14.25'><ele>5.5</ele></trkpt>\n", 20'000);
    const auto document = gpxOf("<!--" + std::string(1'000'000, '.') + "-->" + many);
    const auto summary = summaryOf(document);
    CHECK(summary.points == 20'000);
    CHECK(summary.withElevation == 20'000);
}

TEST_CASE("a document cut off anywhere fails, and changed anywhere does no harm") {
    const std::string whole =
        "<gpx><trk><name>a&amp;b</name><trkseg><trkpt lat=\"46.5\" lon=\"14\"><ele>5</ele><time>"
        "2024-05-01T06:30:12.5+02:00</time></trkpt></trkseg></trk></gpx>";
    for (std::size_t length = 0; length < whole.size(); ++length) CHECK(!readGPX(whole.substr(0, length)));
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (const char change : {'\0', '<', '&', '"', '-', '9', 'e', '\xFF'}) {
            std::string changed = whole;
            changed[place] = change;
            const auto document = readGPX(changed);
            if (document) CHECK(summaryOf(*document).points <= 1);
        }
    }
}
