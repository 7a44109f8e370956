/// Lines of a terminal that show the present.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace pedvar {

/// Draws lines over those that it has drawn before, below what the terminal showed until then.
class LiveScreen {
public:
    /// Draws now, as many lines as the terminal has room for, unless it has just done so and `importance` does not
    /// ask for it.
    enum class Importance { usual, high };
    void show(const std::vector<std::string>& lines, Importance importance);
    /// Takes the lines away.
    void clear();

    /// Columns of the terminal.
    static std::size_t width();

private:
    std::size_t drawnLines_ = 0;
    std::chrono::steady_clock::time_point drawn_;
};

/// `text` in lines of at most `width` columns, broken between words where there are any.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

}  // namespace pedvar
