/// Reading routes out of GPX documents.
#pragma once

#include "core/date.h"
#include "platform/location.h"
#include "platform/xml_parser.h"
#include "routes/gpx_error.h"

#include <cstddef>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// Points that were recorded without interruption.
struct GPXSegment {
    std::vector<CLLocation> points;
    std::vector<bool> hasTime;  // of each point; one without has the moment of reading
};

/// What a GPX document holds of tracks and routes, as it stands there: coordinates may be out of range.
struct GPXDocument {
    std::optional<std::string> trackName;
    std::vector<GPXSegment> segments;  // none of them is empty
    bool hasRoutePoints = false;
};

/// What accuracies, speed and course of a point are.
enum class GPXReadings {
    assumed,   // what the class says, no speed and no course
    recorded,  // those that stand in the point, for example in its extensions; assumed where none does
};

/// Reads one GPX document of any version. Elements are known by their names as written; those with a prefix and
/// all others are passed over, as are points without two numbers for coordinates. A point has a horizontal
/// accuracy of 5 metres, and the same in height when it has an elevation.
///
/// Points of routes go where points of tracks go. Those that stand before a segment of a track are lost when it
/// begins; those left over at the end are a segment of their own.
class GPXXMLParser : private XmlHandler {
public:
    /// `now` becomes the time of points that have none. `size` is that of the data in bytes, where it is known:
    /// then room for a long segment is made at once, which takes half the memory and a tenth less time.
    GPXXMLParser(XmlParser::Source data, Date now, std::size_t size = 0,
                 GPXReadings readings = GPXReadings::assumed);

    /// Reads the document, once. `invalidFormat` when it is no well-formed XML; a document without points is no
    /// failure.
    std::expected<GPXDocument, GPXFailure> parse(const XmlParser& xmlParser) &&;

private:
    void startElement(std::string_view name, XmlAttributes attributes) override;
    void endElement(std::string_view name) override;
    void characters(std::string_view text) override;
    bool wantsCharacters() const override { return openTextElements_ > 0; }

    /// Where a reading of the current point goes; null for an element that is none.
    std::optional<double>* readingNamed(std::string_view name);
    void startPoint(XmlAttributes attributes);
    void endPoint();
    void makeRoom();
    void endSegment();
    std::size_t readData(std::span<char> room);

    XmlParser::Source data_;
    Date now_;
    std::size_t size_;  // bytes; 0 when not known
    GPXReadings readings_;
    std::size_t bytesRead_ = 0;     // of the data; the parser is a window behind
    std::size_t segmentStart_ = 0;  // bytes that were read when the current segment began
    std::string beginning_;         // of the data, to tell what it is when it is no XML

    GPXDocument document_;
    GPXSegment currentSegment_;
    std::optional<double> currentLatitude_;
    std::optional<double> currentLongitude_;
    std::optional<double> currentElevation_;
    std::optional<Date> currentTimestamp_;
    struct Readings {
        std::optional<double> horizontalAccuracy, verticalAccuracy, speed, course;
    } currentReadings_;                 // none of them is negative
    std::string currentText_;           // since the last start tag
    std::size_t openTextElements_ = 0;  // whose text will be read
    bool insideTrack_ = false;
    bool insideTrackPoint_ = false;
    bool insideMetadata_ = false;
};

/// The bytes of a document in memory, which must outlive the reading.
XmlParser::Source sourceOf(std::string_view document);

}  // namespace pedvar
