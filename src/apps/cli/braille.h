/// Drawing with dots, eight to a character.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace pedvar {

/// A place on a drawing, in dots from its upper left corner.
struct Dot {
    int x = 0;
    int y = 0;
};

/// A drawing of Braille characters, two dots wide and four high each. Dots outside of it are left out.
class BrailleCanvas {
public:
    static constexpr int dotsAcross = 2;  // of a character
    static constexpr int dotsDown = 4;

    BrailleCanvas(std::size_t columns, std::size_t lines);

    std::size_t columns() const { return columns_; }
    std::size_t lines() const { return cells_.size() / columns_; }

    void set(Dot dot);
    /// A straight line with both its ends.
    void line(Dot from, Dot to);

    /// One character as UTF-8; a blank where there are no dots.
    std::string character(std::size_t column, std::size_t line) const;

private:
    std::size_t columns_;
    std::vector<std::uint8_t> cells_;  // line by line, a bit for each dot
};

}  // namespace pedvar
