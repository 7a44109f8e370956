/// Fractions as the whole numbers that people read.
#pragma once

#include <cstdint>

namespace pedvar {

/// The nearest whole number, halves away from zero. 0 for what is no number, and never so large that adding up
/// results overflows.
std::int64_t nearestWhole(double value);

}  // namespace pedvar
