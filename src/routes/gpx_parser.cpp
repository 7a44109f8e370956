#include "routes/gpx_parser.h"

#include "routes/gpx_values.h"
#include "routes/iso8601.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

constexpr double assumedAccuracy = 5;                 // metres; documents do not tell
constexpr std::size_t longestText = 4 * 1024 * 1024;  // bytes; what is longer is no name and is cut
constexpr std::size_t beginningSize = 512;            // bytes
constexpr std::size_t longSegment =
    32'768;  // points; fewer are copied in no time, and windows are small against it

enum class Element { other, elevation, metadata, name, routePoint, time, track, trackPoint, trackSegment };

Element elementNamed(std::string_view name) {
    switch (name.size()) {
        case 3:
            return name == "ele" ? Element::elevation : name == "trk" ? Element::track : Element::other;
        case 4:
            return name == "time" ? Element::time : name == "name" ? Element::name : Element::other;
        case 5:
            return name == "trkpt" ? Element::trackPoint : name == "rtept" ? Element::routePoint : Element::other;
        case 6:
            return name == "trkseg" ? Element::trackSegment : Element::other;
        case 8:
            return name == "metadata" ? Element::metadata : Element::other;
        default:
            return Element::other;
    }
}

}  // namespace

GPXXMLParser::GPXXMLParser(XmlParser::Source data, Date now, std::size_t size, GPXReadings readings)
    : data_(std::move(data)), now_(now), size_(size), readings_(readings) {}

std::expected<GPXDocument, GPXFailure> GPXXMLParser::parse(const XmlParser& xmlParser) && {
    const auto outcome = xmlParser.parse([this](std::span<char> room) { return readData(room); }, *this);
    if (!outcome) {
        const std::string_view kind = kindOfDocument(beginning_);
        Phrase detail =
            kind.empty() ? Phrase("It is broken: {}.", {outcome.error().message}) : Phrase("It is {}.", {kind});
        return std::unexpected(GPXFailure{GPXError::invalidFormat, std::move(detail)});
    }
    endSegment();
    return std::move(document_);
}

std::size_t GPXXMLParser::readData(std::span<char> room) {
    const std::size_t count = data_(room);
    bytesRead_ += count;
    const std::size_t wanted = std::min(count, beginningSize - beginning_.size());
    beginning_.append(room.data(), wanted);
    return count;
}

void GPXXMLParser::startElement(std::string_view name, XmlAttributes attributes) {
    currentText_.clear();
    switch (elementNamed(name)) {
        case Element::metadata:
            insideMetadata_ = true;
            break;
        case Element::track:
            insideTrack_ = true;
            break;
        case Element::trackSegment:
            currentSegment_ = {};
            break;
        case Element::routePoint:
            document_.hasRoutePoints = true;
            [[fallthrough]];
        case Element::trackPoint:
            startPoint(attributes);
            break;
        case Element::name:
        case Element::elevation:
        case Element::time:
            ++openTextElements_;
            break;
        case Element::other:
            if (readingNamed(name)) ++openTextElements_;
            break;
    }
}

void GPXXMLParser::characters(std::string_view text) {
    if (currentText_.size() < longestText) currentText_ += text;
}

void GPXXMLParser::endElement(std::string_view name) {
    switch (elementNamed(name)) {
        case Element::metadata:
            insideMetadata_ = false;
            break;
        case Element::track:
            insideTrack_ = false;
            break;
        case Element::trackSegment:
            endSegment();
            break;
        case Element::routePoint:
        case Element::trackPoint:
            endPoint();
            break;
        case Element::name:
            --openTextElements_;
            if (insideTrack_ && !insideMetadata_ && !document_.trackName) {
                const std::string_view text = trimmed(currentText_);
                if (!text.empty()) document_.trackName = text;
            }
            break;
        case Element::elevation:
            --openTextElements_;
            if (insideTrackPoint_) currentElevation_ = parseGPXNumber(trimmed(currentText_));
            break;
        case Element::time:
            --openTextElements_;
            if (insideTrackPoint_) currentTimestamp_ = parseISO8601(trimmed(currentText_));
            break;
        case Element::other:
            if (auto* const reading = readingNamed(name)) {
                --openTextElements_;
                *reading = parseGPXNumber(trimmed(currentText_));
            }
            break;
    }
}

/// Prefixes differ from program to program.
std::optional<double>* GPXXMLParser::readingNamed(std::string_view name) {
    if (readings_ == GPXReadings::assumed || !insideTrackPoint_) return nullptr;
    name.remove_prefix(name.find(':') + 1);
    if (name == "hAcc" || name == "accuracy_horizontal") return &currentReadings_.horizontalAccuracy;
    if (name == "vAcc" || name == "accuracy_vertical") return &currentReadings_.verticalAccuracy;
    if (name == "speed") return &currentReadings_.speed;
    if (name == "course") return &currentReadings_.course;
    return nullptr;
}

void GPXXMLParser::startPoint(XmlAttributes attributes) {
    insideTrackPoint_ = true;
    currentLatitude_.reset();
    currentLongitude_.reset();
    currentElevation_.reset();
    currentTimestamp_.reset();
    currentReadings_ = {};
    for (const auto& [name, value] : attributes) {
        if (name == "lat") currentLatitude_ = parseGPXNumber(value);
        if (name == "lon") currentLongitude_ = parseGPXNumber(value);
    }
}

void GPXXMLParser::endPoint() {
    insideTrackPoint_ = false;
    if (!currentLatitude_ || !currentLongitude_) return;
    makeRoom();
    const auto& [horizontalAccuracy, verticalAccuracy, speed, course] = currentReadings_;
    currentSegment_.points.push_back(
        {.latitude = *currentLatitude_,
         .longitude = *currentLongitude_,
         .altitude = currentElevation_.value_or(0),
         .horizontalAccuracy = horizontalAccuracy.value_or(assumedAccuracy),
         .verticalAccuracy = currentElevation_ ? verticalAccuracy.value_or(assumedAccuracy) : -1,
         .course = course.value_or(-1),
         .speed = speed.value_or(-1),
         .timestamp = currentTimestamp_.value_or(now_)});
    currentSegment_.hasTime.push_back(currentTimestamp_.has_value());
}

/// When a long segment has filled its room: room for the rest of the document, if that goes on likewise.
void GPXXMLParser::makeRoom() {
    auto& points = currentSegment_.points;
    if (points.empty()) segmentStart_ = bytesRead_;
    if (points.size() < points.capacity() || points.size() < longSegment) return;
    if (segmentStart_ >= bytesRead_ || bytesRead_ >= size_) return;
    const double perByte = static_cast<double>(points.size()) / static_cast<double>(bytesRead_ - segmentStart_);
    points.reserve(points.size() +
                   static_cast<std::size_t>(1.1 * perByte * static_cast<double>(size_ - bytesRead_)));
}

void GPXXMLParser::endSegment() {
    auto& points = currentSegment_.points;
    if (points.empty()) return;
    if (points.size() < points.capacity() / 2) points.shrink_to_fit();
    document_.segments.push_back(std::exchange(currentSegment_, {}));
}

XmlParser::Source sourceOf(std::string_view document) {
    return [document](std::span<char> room) mutable {
        const std::size_t count = document.copy(room.data(), room.size());
        document.remove_prefix(count);
        return count;
    };
}

}  // namespace pedvar
