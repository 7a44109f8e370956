/// Moments as ISO 8601 texts.
#pragma once

#include "core/date.h"

#include <array>
#include <chrono>
#include <optional>
#include <string_view>

namespace pedvar {

/// The moment of a text such as "2024-05-01T06:30:12Z" or "2024-05-01T08:30:12.250+02:00", in capitals or not,
/// with any number of digits of a second and with or without the colon of the offset. Without a zone it is in UTC.
/// The leap second ":60" is the first second of the next minute. None for everything else, days that do not exist
/// included.
std::optional<Date> parseISO8601(std::string_view text);

/// Writes moments as "2024-05-01T06:30:12.250Z": in UTC, rounded to milliseconds.
class ISO8601Formatter {
public:
    /// Valid until the next call. Empty for moments outside of the years 0 to 9999.
    std::string_view format(Date moment);

private:
    std::array<char, 24> text_{'0', '0', '0', '0', '-', '0', '0', '-', '0', '0', 'T', '0',
                               '0', ':', '0', '0', ':', '0', '0', '.', '0', '0', '0', 'Z'};
    std::optional<std::chrono::sys_days> day_;  // whose date stands in the text
};

}  // namespace pedvar
