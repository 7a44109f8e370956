/// Any bytes as a GPX document: what is read is summed up, written and read again, and must then be the same.
#include "core/check.h"
#include "linux/xml/expat_parser.h"
#include "routes/gpx_parser.h"
#include "routes/gpx_writer.h"
#include "routes/route_summary.h"

#include <cmath>
#include <cstdint>

using namespace pedvar;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto document = GPXXMLParser(sourceOf(text), Date{}).parse(ExpatParser());
    if (!document) {
        check(!document.error().message().isEmpty(), "a failure has a message");
        return 0;
    }
    const auto summary = summaryOf(*document);
    check(std::isfinite(summary.distance), "a distance is finite");
    check(!summary.elevation || std::isfinite(summary.elevation->gain + summary.elevation->loss), "so is a climb");
    for (const auto& segment : document->segments) {
        const std::string written = writeGPX(segment.points, document->trackName.value_or(""), "Fuzz", Date{});
        const auto again = GPXXMLParser(sourceOf(written), Date{}).parse(ExpatParser());
        check(again && again->segments.size() == 1, "what is written can be read");
        const auto& points = again->segments[0].points;
        check(points.size() == segment.points.size(), "no point is lost");
        for (std::size_t i = 0; i < points.size(); ++i) {
            check(points[i].latitude == segment.points[i].latitude, "latitudes stay the same");
            check(points[i].longitude == segment.points[i].longitude, "longitudes stay the same");
        }
    }
    return 0;
}
