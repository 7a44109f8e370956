/// Measuring as ratios within one run.
///
/// A time on one machine says little; a ratio to a peer or to a floor, measured in turn in the same run, says what
/// the code is worth.
#pragma once

#include <algorithm>
#include <chrono>
#include <concepts>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace pedvar::bench {

using Run = std::function<void()>;

inline double secondsOf(const Run& run) {
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Seconds of each run, the medians of `rounds` in which all take their turn.
inline std::vector<double> inTurn(int rounds, const std::vector<Run>& runs) {
    std::vector<std::vector<double>> seconds(runs.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < runs.size(); ++i) seconds[i].push_back(secondsOf(runs[i]));
    }
    std::vector<double> medians;
    for (auto& times : seconds) medians.push_back(median(std::move(times)));
    return medians;
}

/// Keeps a result from being optimised away.
template <class T>
void keep(const T& value) {
    asm volatile("" : : "g"(&value) : "memory");
}

/// One row of the table: what was measured against what, the ratio, and the highest ratio that is meant.
inline void row(const std::string& job, double ratio, double goal, const std::string& detail) {
    std::printf("| %s | %.3g | %.3g | %s | %s |\n", job.c_str(), ratio, goal, ratio <= goal ? "yes" : "NO",
                detail.c_str());
    std::fflush(stdout);
}

inline std::string milliseconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, seconds < 0.01 ? "%.3f ms" : "%.1f ms", seconds * 1e3);
    return text;
}

}  // namespace pedvar::bench
