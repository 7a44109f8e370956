/// What an activity looks like.
#pragma once

#include "apps/cli/activity_list.h"
#include "apps/cli/screen.h"
#include "routes/way.h"

#include <span>
#include <string>

namespace pedvar {

/// The route seen from above, north up, with a scale below it. Empty for a route without extent.
std::string routePicture(std::span<const CLLocation> points, std::span<const WayMark> marks, const Screen& screen);

/// The altitude along the way. Empty where no altitude or no distance is known.
std::string elevationPicture(std::span<const CLLocation> points, std::span<const WayMark> marks,
                             const Screen& screen);

/// One line for each kilometre or mile: the moving time until its end, its pace, climb and descent. Empty without
/// splits.
std::string splitTable(std::span<const Split> splits, const Activity& activity, const Screen& screen);

}  // namespace pedvar
