#include "apps/cli/progress_bar.h"

#include "apps/cli/charts.h"

#include <cmath>
#include <cstdio>

namespace pedvar {
namespace {

/// "0:42", "12:05", "1:02:33".
std::string clockText(Seconds duration) {
    const auto seconds = static_cast<std::int64_t>(std::ceil(duration.count()));
    if (seconds < 3600) return fmt::format("{}:{:02}", seconds / 60, seconds % 60);
    return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

}  // namespace

std::string progressLine(const Progress& progress, const Figures& figures, const Texts& text) {
    constexpr std::size_t barWidth = 30;
    constexpr Seconds settled{1};  // earlier rates jump about
    const double share = progress.totalBytes > 0 ? progress.doneBytes / progress.totalBytes : 0;
    const std::string filled = bar(share, barWidth);
    std::string line = filled + groove(filled, barWidth) + " ";
    line += text("{} of {}", figures.bytes(progress.doneBytes), figures.bytes(progress.totalBytes));
    if (progress.elapsed < settled || !(progress.doneBytes > 0)) return line;
    const double rate = progress.doneBytes / progress.elapsed.count();
    const Seconds left{std::fmax(progress.totalBytes - progress.doneBytes, 0) / rate};
    return line + text(", {}/s, {} left", figures.bytes(rate), clockText(left));
}

ProgressBar::ProgressBar(const Figures& figures, const Texts& text, const Terminal& errorTerminal)
    : figures_(figures), text_(text), terminal_(errorTerminal), start_(std::chrono::steady_clock::now()) {}

ProgressBar::~ProgressBar() {
    clear();
}

void ProgressBar::show(double doneBytes, double totalBytes) {
    constexpr std::chrono::milliseconds redrawing{100};
    if (!terminal_.isInteractive) return;
    const SteadyTime now = std::chrono::steady_clock::now();
    if (isDrawn_ && now - drawn_ < redrawing) return;
    const Progress progress{doneBytes, totalBytes, now - start_};
    std::string line = progressLine(progress, figures_, text_);
    if (terminal_.charset == Charset::ascii) line = toAscii(line);
    std::fprintf(stderr, "\r\x1b[K%s", line.c_str());
    std::fflush(stderr);
    drawn_ = now;
    isDrawn_ = true;
}

void ProgressBar::clear() {
    if (!isDrawn_) return;
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
    isDrawn_ = false;
}

}  // namespace pedvar
