/// Looking up the offset of a zone needs whole seconds of a range that its rules can count.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace pedvar {

/// The whole second that holds `seconds` since 1970; farther off than thirty million years, and for NaN, one near
/// enough: offsets have lost their meaning there.
inline std::int64_t wholeSeconds(double seconds) {
    constexpr double farthest = 1e15;
    if (std::isnan(seconds)) return 0;
    return static_cast<std::int64_t>(std::floor(std::clamp(seconds, -farthest, farthest)));
}

}  // namespace pedvar
