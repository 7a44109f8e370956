/// What the devices of the sample's person measure on one day.
#pragma once

#include "sample_export/day_plan.h"
#include "sample_export/record_writer.h"

#include <vector>

namespace pedvar::sample {

/// Steps that a device counted at one stretch.
struct StepSample {
    Source source;
    Span span;
    int steps;
    bool isBrisk;
};

enum class Density { minutes, seconds };

/// The watch counts each minute, the phone each stretch of some minutes while it is carried: both count the same
/// steps, a few per cent apart. With `Density::seconds` the stretches are some seconds long.
std::vector<StepSample> stepSamples(const Day& day, Density density);

/// At least this many steps in a minute are exercise.
constexpr int briskSteps = 90;

/// What walking `steps` takes and yields.
std::int64_t centimeters(int steps, bool isBrisk);
std::int64_t smallCalories(int steps);

}  // namespace pedvar::sample
