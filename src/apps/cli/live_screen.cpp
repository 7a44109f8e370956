#include "apps/cli/live_screen.h"

#include "apps/cli/live_input.h"
#include "apps/cli/terminal.h"
#include "core/utf8.h"

#include <sys/ioctl.h>
#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

namespace pedvar {
namespace {

winsize terminalSize() {
    constexpr winsize usual{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    winsize size{};
    const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0;
    return isKnown ? size : usual;
}

/// As many whole characters as stand in `width` columns.
std::string_view beginning(std::string_view text, std::size_t width) {
    std::size_t length = 0;
    for (; width > 0 && length < text.size(); --width) {
        length += std::max<std::size_t>(characterLength(text.substr(length)), 1);
    }
    return text.substr(0, length);
}

}  // namespace

void LiveScreen::show(const std::vector<ScreenLine>& lines, Importance importance) {
    constexpr std::chrono::milliseconds redrawing{100};
    const auto now = std::chrono::steady_clock::now();
    if (importance == Importance::usual && isOpen_ && now - drawn_ < redrawing) return;
    if (isInBackground(STDOUT_FILENO)) return;
    const bool isAscii = terminalBehind(STDOUT_FILENO, ColorOutput::never).charset == Charset::ascii;
    // The terminal is not to break lines where characters take two columns.
    std::string text = isOpen_ ? "" : "\x1b[?1049h\x1b[?7l";
    text += "\x1b[H\x1b[J";
    const winsize size = terminalSize();
    const auto shown = fitting(lines, size.ws_row);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        if (i > 0) text += '\n';
        text += beginning(isAscii ? toAscii(shown[i]) : shown[i], size.ws_col);
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    isOpen_ = true;
    drawn_ = now;
}

void LiveScreen::clear() {
    if (!std::exchange(isOpen_, false)) return;
    std::fputs("\x1b[?7h\x1b[?1049l", stdout);
    std::fflush(stdout);
}

std::size_t LiveScreen::width() {
    return terminalSize().ws_col;
}

std::vector<std::string> fitting(std::vector<ScreenLine> lines, std::size_t rows) {
    while (lines.size() > rows) {
        const auto least = std::ranges::max_element(lines.rbegin(), lines.rend(), {}, &ScreenLine::rank);
        lines.erase(std::next(least).base());
    }
    std::vector<std::string> texts;
    for (ScreenLine& line : lines) texts.push_back(std::move(line.text));
    return texts;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    std::string line;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        std::string_view word = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!line.empty() && columns(line) + 1 + columns(word) > width) lines.push_back(std::exchange(line, ""));
        for (; columns(word) > width; word.remove_prefix(lines.back().size())) {
            lines.emplace_back(beginning(word, width));
        }
        if (!line.empty()) line += ' ';
        line += word;
    }
    lines.push_back(std::move(line));
    return lines;
}

}  // namespace pedvar
