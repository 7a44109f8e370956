#include "apps/cli/live_screen.h"

#include "apps/cli/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <string_view>

namespace pedvar {

void LiveScreen::show(const std::vector<std::string>& lines, Importance importance) {
    constexpr std::chrono::milliseconds redrawing{100};
    const auto now = std::chrono::steady_clock::now();
    if (importance == Importance::usual && drawnLines_ > 0 && now - drawn_ < redrawing) return;
    const bool isAscii = terminalBehind(STDOUT_FILENO, ColorOutput::never).charset == Charset::ascii;
    clear();
    std::string text;
    for (const std::string& line : lines) text += (isAscii ? toAscii(line) : line) + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    drawnLines_ = lines.size();
    drawn_ = now;
}

void LiveScreen::clear() {
    if (drawnLines_ > 0) std::printf("\x1b[%zuF\x1b[J", drawnLines_);
    std::fflush(stdout);
    drawnLines_ = 0;
}

std::size_t LiveScreen::width() {
    constexpr std::size_t usual = 80;
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
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
