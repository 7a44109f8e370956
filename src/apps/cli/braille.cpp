#include "apps/cli/braille.h"

#include <algorithm>
#include <cstdlib>

namespace pedvar {

BrailleCanvas::BrailleCanvas(std::size_t columns, std::size_t lines)
    : columns_(std::max<std::size_t>(columns, 1)), cells_(columns_ * lines) {}

void BrailleCanvas::set(Dot dot) {
    if (dot.x < 0 || dot.y < 0) return;
    const auto column = static_cast<std::size_t>(dot.x / dotsAcross);
    const auto row = static_cast<std::size_t>(dot.y / dotsDown);
    if (column >= columns_ || row >= lines()) return;
    // The order of the bits in U+2800 to U+28FF.
    constexpr std::uint8_t bits[dotsDown][dotsAcross] = {{0x01, 0x08}, {0x02, 0x10}, {0x04, 0x20}, {0x40, 0x80}};
    cells_[row * columns_ + column] |= bits[dot.y % dotsDown][dot.x % dotsAcross];
}

void BrailleCanvas::line(Dot from, Dot to) {
    const int width = to.x - from.x;
    const int height = to.y - from.y;
    const int steps = std::max(std::abs(width), std::abs(height));
    const auto share = [steps](int whole, int step) {
        return (2 * whole * step + (whole < 0 ? -steps : steps)) / (2 * steps);  // rounded
    };
    set(from);
    for (int step = 1; step <= steps; ++step) set({from.x + share(width, step), from.y + share(height, step)});
}

std::string BrailleCanvas::character(std::size_t column, std::size_t line) const {
    const std::uint8_t dots = cells_[line * columns_ + column];
    if (dots == 0) return " ";
    return {'\xE2', static_cast<char>(0xA0 | dots >> 6), static_cast<char>(0x80 | (dots & 0x3F))};
}

}  // namespace pedvar
