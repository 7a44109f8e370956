/// The stored days of the step pace.
#pragma once

#include "core/calendar.h"
#include "core/record.h"
#include "platform/json_parser.h"
#include "platform/user_defaults.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace pedvar {

/// The steps of one day, hour by hour.
struct PaceDay {
    Date date;  // start of the local day
    std::array<std::int64_t, 24> hourly{};

    using Fields = FieldList<&PaceDay::date, &PaceDay::hourly>;
    bool operator==(const PaceDay&) const = default;
};
static_assert(isComplete<PaceDay>);

/// The stored days in the order in which they stand; none of them when they do not decode.
std::vector<PaceDay> loadPaceDays(const DefaultsDomains& defaults, const JsonParser& json);

/// Replaces the stored days. What did not decode is kept under the key with ".unreadable" behind it.
DefaultsResult savePaceDays(DefaultsDomains& defaults, const JsonParser& json, const std::vector<PaceDay>& days);

/// Drops the days that `touched` intervals reach into, and those that are none. An interval that ends where it
/// starts touches the day of its moment. Yields how many are gone.
std::size_t dropTouched(std::vector<PaceDay>& days, const Calendar& calendar, std::span<const Interval> touched);

/// Drops the stored days that `touched` intervals reach into, so that they are read anew. What does
/// not decode is left alone.
DefaultsResult forgetPaceDays(DefaultsDomains& defaults, const JsonParser& json, const Calendar& calendar,
                              std::span<const Interval> touched);

}  // namespace pedvar
