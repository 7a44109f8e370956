#include "routes/gpx_error.h"

#include "routes/gpx_values.h"

#include <algorithm>
#include <cstddef>

namespace pedvar {

namespace {

using namespace std::string_view_literals;

/// The bytes that documents of a kind hold at an offset.
struct Signature {
    std::string_view bytes;
    std::string_view kind;
    std::size_t offset = 0;
};

// i18n: texts like ^(an? )
constexpr Signature signatures[] = {
    {"\x1F\x8B", "a gzip archive"},
    {"PK\x03\x04", "a zip archive"},
    {"PK\x05\x06", "an empty zip archive"},
    {"BZh", "a bzip2 archive"},
    {"\xFD"
     "7zXZ\0"sv,
     "an xz archive"},
    {"\x28\xB5\x2F\xFD", "a zstd archive"},
    {"7z\xBC\xAF\x27\x1C", "a 7-Zip archive"},
    {"Rar!", "a RAR archive"},
    {"ustar", "a tar archive", 257},
    {".FIT", "a FIT activity", 8},
    {"SQLite format 3", "a SQLite database"},
    {"%PDF-", "a PDF document"},
    {"\x89PNG", "a picture"},
    {"\xFF\xD8\xFF", "a picture"},
    {"$GP", "a receiver's NMEA log"},
    {"$GN", "a receiver's NMEA log"},
};
// i18n: end

bool startsWithIgnoringCase(std::string_view text, std::string_view lowercase) {
    const auto isSame = [](char character, char lower) {
        return (character >= 'A' && character <= 'Z' ? character - 'A' + 'a' : character) == lower;
    };
    return text.size() >= lowercase.size() &&
           std::ranges::equal(text.substr(0, lowercase.size()), lowercase, isSame);
}

}  // namespace

Phrase description(GPXError error) {
    switch (error) {
        case GPXError::noTrackPoints:
            return Phrase("The GPX file contains no track points.");
        case GPXError::invalidFormat:
            return Phrase("The file is not a valid GPX format.");
        case GPXError::fileNotFound:
            return Phrase("The GPX file could not be found.");
    }
    return {};
}

Phrase GPXFailure::message() const {
    if (detail.isEmpty()) return description(error);
    return Phrase("{} {}", {description(error), detail});
}

// i18n: texts like ^(empty|an? )
std::string_view kindOfDocument(std::string_view beginning) {
    for (const auto& [bytes, kind, offset] : signatures) {
        if (beginning.size() > offset && beginning.substr(offset).starts_with(bytes)) return kind;
    }
    if (beginning.starts_with("\uFEFF")) beginning.remove_prefix(3);
    beginning = trimmed(beginning);
    if (beginning.empty()) return "empty";
    if (startsWithIgnoringCase(beginning, "<!doctype html") || startsWithIgnoringCase(beginning, "<html")) {
        return "a web page";
    }
    if (beginning.starts_with('{') || beginning.starts_with('[')) return "a JSON document";
    return {};
}
// i18n: end

}  // namespace pedvar
