/// Pictures made of block characters, as UTF-8 text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

inline constexpr std::size_t screenWidth = 80;  // columns

/// A bar of `share` (clamped to 0...1; 0 for NaN) of `width` columns, to an eighth of a column. A share above 0
/// always shows something.
std::string bar(double share, std::size_t width);

/// What `bar` leaves of `width` columns, drawn as an empty groove.
std::string groove(std::string_view bar, std::size_t width);

/// The size of upright bars that stand side by side.
struct ColumnChart {
    std::size_t height = 6;       // lines
    std::size_t columnWidth = 2;  // columns of the screen
    std::size_t gap = 1;          // blanks behind each
};

/// The lines of the chart from the top down, without axes. The greatest of `values` reaches the top; none is
/// negative.
std::vector<std::string> columnLines(std::span<const std::int64_t> values, const ColumnChart& chart);

std::string repeated(std::string_view text, std::size_t count);

/// `text` with blanks before or behind it, up to `width` columns.
std::string rightAligned(std::string_view text, std::size_t width);
std::string leftAligned(std::string_view text, std::size_t width);

}  // namespace pedvar
