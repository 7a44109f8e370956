#include "insights/rounding.h"

#include <algorithm>
#include <cmath>

namespace pedvar {

namespace {

constexpr double highest = 1e15;  // exact as a double, and thousands of it fit in 64 bits

}  // namespace

std::int64_t nearestWhole(double value) {
    if (std::isnan(value)) return 0;
    return static_cast<std::int64_t>(std::round(std::clamp(value, -highest, highest)));
}

}  // namespace pedvar
