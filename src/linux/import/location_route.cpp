#include "linux/import/location_route.h"

#include <cmath>
#include <string_view>

namespace pedvar {

namespace {

std::optional<double> numberOf(const Tag& tag, std::string_view name) {
    std::string scratch;
    const Attribute* const attribute = tag.find(name);
    return attribute == nullptr ? std::nullopt : parseExportNumber(valueOf(*attribute, scratch));
}

/// None where the export says "unknown" (-1) or nothing.
std::optional<double> positiveOf(const Tag& tag, std::string_view name) {
    const auto number = numberOf(tag, name);
    return number && *number >= 0 ? number : std::nullopt;
}

}  // namespace

void LocationRoute::add(const Tag& location, ExportDateParser& dates) {
    std::string scratch;
    const Attribute* const date = location.find("date");
    if (date == nullptr) return;
    const auto time = dates.parse(valueOf(*date, scratch));
    const auto latitude = numberOf(location, "latitude");
    const auto longitude = numberOf(location, "longitude");
    if (!time || !latitude || !longitude || std::abs(*latitude) > 90 || std::abs(*longitude) > 180) return;
    text_.add({.time = *time,
               .latitude = *latitude,
               .longitude = *longitude,
               .altitude = numberOf(location, "altitude"),
               .speed = positiveOf(location, "speed"),
               .course = positiveOf(location, "course"),
               .horizontalAccuracy = positiveOf(location, "horizontalAccuracy"),
               .verticalAccuracy = positiveOf(location, "verticalAccuracy")});
}

}  // namespace pedvar
