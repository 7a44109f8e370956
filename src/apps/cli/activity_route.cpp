#include "apps/cli/activity_route.h"

#include "apps/cli/application.h"
#include "apps/cli/health.h"
#include "linux/xml/expat_parser.h"
#include "routes/gpx_parser.h"

#include <algorithm>
#include <iterator>

namespace pedvar {
namespace {

ActivityRoute storedRoute(std::int64_t workout, Application& application) {
    ActivityRoute route;
    const auto health = application.health();
    if (!health) return route;
    std::vector<GPXSegment> segments;
    for (const StoredRoute& stored : application.loop().run((*health)->manager.workouts().fetchRoutes(workout))) {
        auto document =
            GPXXMLParser(sourceOf(stored.gpx), application.clock().now(), stored.gpx.size()).parse(ExpatParser());
        if (!document) {
            ++route.unreadableCount;
            continue;
        }
        std::ranges::move(document->segments, std::back_inserter(segments));
    }
    std::ranges::sort(segments, {}, [](const GPXSegment& segment) { return segment.points.front().timestamp; });
    for (const GPXSegment& segment : segments) {
        route.points.insert(route.points.end(), segment.points.begin(), segment.points.end());
    }
    return route;
}

}  // namespace

ActivityRoute routeOf(const Activity& activity, Application& application) {
    if (activity.routeWorkout) return storedRoute(*activity.routeWorkout, application);
    ActivityRoute route;
    const auto session = application.sessions().wholeSession(activity.id);
    if (!session) return route;
    for (const LocationPoint& point : session->route) route.points.push_back(locationOf(point));
    return route;
}

}  // namespace pedvar
