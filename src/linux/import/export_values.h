/// Dates and numbers as exports write them.
#pragma once

#include "linux/health/samples.h"

#include <array>
#include <chrono>
#include <optional>
#include <string_view>

namespace pedvar {

/// Reads "2024-05-01 06:30:00 +0200". Remembers the last day and offset, because neighbours in an export share
/// them.
class ExportDateParser {
public:
    /// None when `text` is written otherwise or no such time exists.
    std::optional<Milliseconds> parse(std::string_view text);

private:
    std::array<char, 10> dayText_{};
    Milliseconds day_ = 0;
    std::array<char, 6> offsetText_{};
    Milliseconds offset_ = 0;
};

/// "1990-05-20".
std::optional<std::chrono::year_month_day> parseExportDay(std::string_view text);

/// A finite decimal number and nothing else.
std::optional<double> parseExportNumber(std::string_view text);

}  // namespace pedvar
