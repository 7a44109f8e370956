#include "apps/cli/live_screen.h"

#include "apps/cli/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <string_view>

namespace pedvar {
namespace {

winsize terminalSize() {
    constexpr winsize usual{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    winsize size{};
    const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 1 && size.ws_col > 0;
    return isKnown ? size : usual;
}

}  // namespace

void LiveScreen::show(const std::vector<std::string>& lines, Importance importance) {
    constexpr std::chrono::milliseconds redrawing{100};
    const auto now = std::chrono::steady_clock::now();
    if (importance == Importance::usual && drawnLines_ > 0 && now - drawn_ < redrawing) return;
    const bool isAscii = terminalBehind(STDOUT_FILENO, ColorOutput::never).charset == Charset::ascii;
    clear();
    // The cursor stands below; what has scrolled away cannot be drawn over.
    drawnLines_ = std::min(lines.size(), std::size_t{terminalSize().ws_row} - 1);
    std::string text;
    for (std::size_t i = 0; i < drawnLines_; ++i) text += (isAscii ? toAscii(lines[i]) : lines[i]) + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    drawn_ = now;
}

void LiveScreen::clear() {
    if (drawnLines_ > 0) std::printf("\x1b[%zuF\x1b[J", drawnLines_);
    std::fflush(stdout);
    drawnLines_ = 0;
}

std::size_t LiveScreen::width() {
    return terminalSize().ws_col;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    std::string line;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        if (!line.empty() && columns(line) + 1 + columns(word) > width) {
            lines.push_back(std::move(line));
            line.clear();
        }
        if (!line.empty()) line += ' ';
        line += word;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    lines.push_back(std::move(line));
    return lines;
}

}  // namespace pedvar
