/// The routes of activities.
#pragma once

#include "platform/location.h"
#include "recording/activity_list.h"

#include <cstddef>
#include <vector>

namespace pedvar {

class Application;

struct ActivityRoute {
    std::vector<CLLocation> points;
    std::size_t unreadableCount = 0;  // documents of the health store that are no GPX
};

/// The route as the history or the health store has it; of several documents the one that begins first comes
/// first.
ActivityRoute routeOf(const Activity& activity, Application& application);

}  // namespace pedvar
