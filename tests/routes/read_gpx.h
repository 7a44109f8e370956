/// Reading GPX in tests.
#pragma once

#include "linux/xml/expat_parser.h"
#include "routes/gpx_parser.h"

#include <string>
#include <string_view>

namespace pedvar {

/// The moment of parsing in tests.
inline constexpr Date momentOfReading{Seconds{800'000'000}};

inline std::expected<GPXDocument, GPXFailure> readGPX(std::string_view document) {
    return GPXXMLParser(sourceOf(document), momentOfReading).parse(ExpatParser());
}

/// What a document holds that is known to be well-formed.
inline GPXDocument gpxOf(std::string_view content) {
    return readGPX("<gpx>" + std::string(content) + "</gpx>").value();
}

}  // namespace pedvar
