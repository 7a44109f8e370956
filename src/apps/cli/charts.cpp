#include "apps/cli/charts.h"

#include "apps/cli/terminal.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pedvar {
namespace {

constexpr std::array<std::string_view, 9> fromLeft{" ", "▏", "▎", "▍", "▌", "▋", "▊", "▉", "█"};
constexpr std::array<std::string_view, 9> fromBelow{" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::size_t eighths = 8;

/// `share` of `whole`, at least 1 when the share is above 0.
std::size_t part(double share, std::size_t whole) {
    if (!(share > 0)) return 0;
    const double exact = std::round(std::min(share, 1.0) * static_cast<double>(whole));
    return std::max<std::size_t>(static_cast<std::size_t>(exact), 1);
}

std::string blanksUpTo(std::string_view text, std::size_t width) {
    const std::size_t taken = columns(text);
    return std::string(taken < width ? width - taken : 0, ' ');
}

}  // namespace

std::string bar(double share, std::size_t width) {
    const std::size_t filled = part(share, width * eighths);
    std::string result = repeated(fromLeft.back(), filled / eighths);
    if (filled % eighths != 0) result += fromLeft.at(filled % eighths);
    return result;
}

std::string groove(std::string_view bar, std::size_t width) {
    return repeated("░", blanksUpTo(bar, width).size());
}

std::vector<std::string> columnLines(std::span<const std::int64_t> values, const ColumnChart& chart) {
    const std::int64_t greatest = values.empty() ? 0 : std::ranges::max(values);
    std::vector<std::string> lines(chart.height);
    for (const std::int64_t value : values) {
        const double share = greatest > 0 ? static_cast<double>(value) / static_cast<double>(greatest) : 0;
        const std::size_t filled = part(share, chart.height * eighths);
        for (std::size_t line = 0; line < chart.height; ++line) {
            const std::size_t below = (chart.height - 1 - line) * eighths;
            const std::size_t here = filled > below ? std::min(filled - below, eighths) : 0;
            lines[line] += repeated(fromBelow.at(here), chart.columnWidth) + std::string(chart.gap, ' ');
        }
    }
    return lines;
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

std::string rightAligned(std::string_view text, std::size_t width) {
    return blanksUpTo(text, width).append(text);
}

std::string leftAligned(std::string_view text, std::size_t width) {
    return std::string(text) + blanksUpTo(text, width);
}

}  // namespace pedvar
