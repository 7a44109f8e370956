/// Lines of a terminal that show the present.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// How early a line goes where there is no room for all: the later ones first.
enum class Rank { asked, essential, problem, keys, news, value, explanation, blank };

struct ScreenLine {
    std::string text;
    Rank rank = Rank::value;
    bool operator==(const ScreenLine&) const = default;
};

/// Draws lines on a screen of their own, over which the terminal forgets nothing that it showed before.
class LiveScreen {
public:
    /// Draws now, what fits, unless it has just done so and `importance` does not ask for it. Nothing is drawn
    /// while the terminal belongs to another process.
    enum class Importance { usual, high };
    void show(const std::vector<ScreenLine>& lines, Importance importance);
    /// Goes back to what the terminal showed before.
    void clear();

    /// Columns of the terminal.
    static std::size_t width();

private:
    bool isOpen_ = false;
    std::chrono::steady_clock::time_point drawn_;
};

/// At most `rows` of the lines, in their order. Of those with one rank the last ones go first.
std::vector<std::string> fitting(std::vector<ScreenLine> lines, std::size_t rows);

/// `text` in lines of at most `width` columns, broken between words where they fit.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

}  // namespace pedvar
