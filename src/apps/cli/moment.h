/// Moments as people type them.
#pragma once

#include "core/calendar.h"

#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

/// The moment of an ISO 8601 text: a date and a time with "Z" or an offset ("2024-05-01T06:30:00+02:00"), or as
/// the zone's clocks show it ("2024-05-01T06:30"). A date alone is its last second in the zone, so that the whole
/// day can be looked at. None when the text is something else or no such moment exists; seconds may have a
/// fraction.
std::optional<Date> parseMoment(std::string_view text, const ZoneRules& zone);

/// "2024-05-01T06:30:00+02:00", without the fraction of its second.
std::string isoMoment(Date moment, const Calendar& calendar);

}  // namespace pedvar
