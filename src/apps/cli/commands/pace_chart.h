/// Today's steps against a usual day, as a picture.
#pragma once

#include "apps/cli/screen.h"
#include "insights/step_pace_baseline.h"

#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// What the chart shows.
struct PaceCurves {
    std::vector<double> today;  // steps since midnight at the hours 0, 1, ... that are over, and now
    double hour = 0;            // now
    std::optional<StepPaceBaseline> usual;
};

/// The steps since midnight at `hour`, up to now.
double todayAt(const PaceCurves& curves, double hour);

/// A chart of screen width with its legend: the middle half of days as a band, the median in it, and today's curve
/// as far as it has come.
std::string paceChart(const PaceCurves& curves, const Screen& screen);

}  // namespace pedvar
