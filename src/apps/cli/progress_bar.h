/// How far a long command has come.
#pragma once

#include "apps/cli/figures.h"
#include "apps/cli/terminal.h"
#include "core/date.h"

#include <chrono>
#include <string>

namespace pedvar {

struct Progress {
    double doneBytes = 0;
    double totalBytes = 0;
    Seconds elapsed{};
};

/// One line of at most 79 columns: bar, bytes, rate and the time left, as far as they are known by now.
std::string progressLine(const Progress& progress, const Figures& figures, const Texts& text);

/// Redraws one line of standard error while a person looks on, a few times a second; otherwise does nothing. The
/// line is gone when the bar is.
class ProgressBar {
public:
    ProgressBar(const Figures& figures, const Texts& text, const Terminal& errorTerminal);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(double doneBytes, double totalBytes);
    /// Takes the line away; the next `show` draws it again.
    void clear();

private:
    using SteadyTime = std::chrono::steady_clock::time_point;

    const Figures& figures_;
    const Texts& text_;
    Terminal terminal_;
    SteadyTime start_;
    SteadyTime drawn_;
    bool isDrawn_ = false;
};

}  // namespace pedvar
