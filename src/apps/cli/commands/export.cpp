#include "apps/cli/activity_list.h"
#include "apps/cli/activity_route.h"
#include "apps/cli/application.h"
#include "apps/cli/commands/arguments.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/output_file.h"
#include "routes/gpx_writer.h"
#include "routes/way.h"

namespace pedvar {
namespace {

/// What becomes a GPX document.
struct ExportedRoute {
    std::string name;
    std::string type;
    Date start;
    std::vector<CLLocation> points;
};

void write(const ExportedRoute& route, const TextSink& sink) {
    GPXWriter writer(sink, route.name, route.type, route.start);
    for (const CLLocation& point : route.points) writer.add(point);
    writer.finish();
}

/// Removes what lies so near to both ends. That the walk then begins later is part of what is hidden.
CommandResult<void> hideHome(std::vector<CLLocation>& points, Activity& activity, const std::string& metres,
                             const Texts& text) {
    const auto radius = coarseNumberNamed(metres);
    if (!radius || *radius <= 0) {
        return usageError(text("\"{}\" is no distance; --hide-home takes metres, for example 200.", metres));
    }
    const auto rest = withoutEnds(points, *radius);
    if (rest.empty()) {
        return std::unexpected(
            CommandError{ErrorKind::noRoute,
                         text("Without {} metres around both ends, nothing is left of the route.", metres)});
    }
    points = std::vector(rest.begin(), rest.end());
    activity.start = points.front().timestamp;
    return {};
}

CommandResult<ExportedRoute> exportedRoute(Activity activity, const ExportRequest& request,
                                           Application& application) {
    const Texts& text = application.text();
    const Calendar calendar = application.settings().calendar();
    const std::string title = titleOf(activity, application.screen(), calendar);
    auto [points, unreadableCount] = routeOf(activity, application);
    if (unreadableCount > 0) {
        return std::unexpected(
            CommandError{ErrorKind::damaged, text("The route of \"{}\" cannot be read.", title)});
    }
    if (points.empty()) {
        return std::unexpected(
            CommandError{ErrorKind::noRoute, text("\"{}\" was recorded without a route.", title)});
    }
    if (request.hiddenRadius) {
        const auto hidden = hideHome(points, activity, *request.hiddenRadius, text);
        if (!hidden) return std::unexpected(hidden.error());
    }
    return ExportedRoute{.name = titleOf(activity, application.screen(), calendar),
                         .type = nameOf(activity, text),
                         .start = activity.start,
                         .points = std::move(points)};
}

CommandResult<Report> toFile(const ExportedRoute& route, const ExportRequest& request, Application& application) {
    const bool mayReplace = request.existing == ExportRequest::Existing::overwrite;
    auto file =
        OutputFile::create(*request.file, mayReplace ? OutputFile::Existing::replace : OutputFile::Existing::keep);
    if (!file) return std::unexpected(file.error());
    write(route, [&](std::string_view piece) { file->write(piece); });
    if (const auto kept = file->keep(); !kept) return std::unexpected(kept.error());
    const auto count = static_cast<std::int64_t>(route.points.size());
    if (application.wantsJson()) return Report{JsonObject{{"file", {*request.file}}, {"points", {count}}}};
    const Screen screen = application.screen();
    return Report{screen.text.plural("{0} point is in {1}.", "{0} points are in {1}.", count,
                                     screen.figures.number(count), harmless(*request.file)) +
                  "\n"};
}

}  // namespace

CommandResult<Report> run(const ExportRequest& request, Application& application) {
    const auto activities = activitiesOf(application);
    if (!activities) return std::unexpected(activities.error());
    const auto activity = activityNamed(request.activity, *activities, application.text());
    if (!activity) return std::unexpected(activity.error());
    auto route = exportedRoute(*activity, request, application);
    if (!route) return std::unexpected(route.error());
    if (request.file) return toFile(*route, request, application);
    if (application.wantsJson()) {
        return Report{JsonObject{{"gpx", {writeGPX(route->points, route->name, route->type, route->start)}}}};
    }
    return Report{LongAnswer([route = std::move(*route)](const TextSink& sink) -> std::optional<CommandError> {
        write(route, sink);
        return std::nullopt;
    })};
}

}  // namespace pedvar
