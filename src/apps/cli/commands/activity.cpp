#include "apps/cli/activity_list.h"
#include "apps/cli/activity_pictures.h"
#include "apps/cli/activity_route.h"
#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/command.h"
#include "routes/way.h"

#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <iostream>

namespace pedvar {
namespace {

/// An activity with what its route tells.
struct Whole {
    Activity activity;
    std::vector<CLLocation> points;
    std::vector<WayMark> marks;
    std::vector<Split> splits;
    std::optional<CommandError> problem;
};

Whole wholeOf(const Activity& activity, Application& application, const Figures& figures) {
    ActivityRoute route = routeOf(activity, application);
    Whole whole{.activity = activity, .points = std::move(route.points), .marks = {}, .splits = {}, .problem = {}};
    whole.activity.points = std::ssize(whole.points);
    if (route.unreadableCount > 0) {
        whole.problem =
            CommandError{ErrorKind::damaged, application.text()("The route of this activity cannot be read.")};
    }
    whole.marks = marksAlong(whole.points);
    whole.splits = splitsOf(whole.marks, figures.unitLength());
    return whole;
}

/// At most the time that it took, which the route of an imported workout may exceed at its ends.
std::optional<double> movingTimeOf(const Whole& whole) {
    if (whole.marks.size() < 2) return std::nullopt;
    return std::min(whole.marks.back().movingTime, whole.activity.duration);
}

JsonObject document(const Whole& whole, const Calendar& calendar) {
    JsonObject result = activityDocument(whole.activity, calendar);
    const auto movingTime = movingTimeOf(whole);
    JsonArray splits;
    for (const Split& split : whole.splits) {
        splits.push_back({JsonObject{{"distance", {split.distance}},
                                     {"movingTime", {split.movingTime}},
                                     {"elevationGain", {split.gain}},
                                     {"elevationLoss", {split.loss}}}});
    }
    result.emplace_back("movingTime", movingTime ? JsonValue{*movingTime} : JsonValue{});
    result.emplace_back("splits", JsonValue{std::move(splits)});
    return result;
}

std::string view(const Whole& whole, const Screen& screen, const Calendar& calendar) {
    const std::string title = harmless(titleOf(whole.activity, screen, calendar));
    std::string result = screen.bold(title) +
                         screen.faint(rightAligned(shortId(whole.activity.id), screenWidth - columns(title))) +
                         "\n\n" + factsOf(whole.activity, movingTimeOf(whole), screen);
    const auto add = [&](const std::string& heading, const std::string& picture) {
        if (!picture.empty()) result += "\n" + screen.bold(heading) + "\n\n" + picture;
    };
    add(screen.text("Route"), routePicture(whole.points, whole.marks, screen));
    add(screen.text("Elevation"), elevationPicture(whole.points, whole.marks, screen));
    add(screen.figures.unitLength() == metersPerMile ? screen.text("Miles") : screen.text("Kilometres"),
        splitTable(whole.splits, whole.activity, screen));
    return result;
}

/// Whether a person says yes at the terminal.
bool isConfirmed(const std::string& question, const std::string& yes) {
    std::fputs(question.c_str(), stderr);
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes" || answer == yes;
}

CommandResult<Report> deleted(const Activity& activity, const ActivityRequest& request, Application& application) {
    const Screen screen = application.screen();
    const std::string title = titleOf(activity, screen, application.settings().calendar());
    bool isWanted = request.deletion == ActivityRequest::Deletion::atOnce;
    if (!isWanted) {
        if (application.wantsJson() || isatty(STDIN_FILENO) != 1) {
            return usageError(screen.text("--delete asks first, and here nobody can answer; add --yes."));
        }
        isWanted = isConfirmed(screen.text("Delete \"{}\" with its route? [y/N] ", title), screen.text("y"));
    }
    if (isWanted) {
        const auto removed = commandResult(application.sessions().remove(activity.id));
        if (!removed) return std::unexpected(removed.error());
    }
    if (application.wantsJson()) return Report{JsonObject{{"id", {activity.id.text()}}, {"deleted", {isWanted}}}};
    if (!isWanted) return Report{screen.text("Nothing was deleted.") + "\n"};
    std::string said = screen.text("Deleted: {}.", title) + "\n";
    const auto rest = activitiesOf(application);
    if (!rest) return std::unexpected(rest.error());
    for (const Activity::Copy& copy : activity.copies) {
        // One may be a copy of another activity, too.
        if (std::ranges::find(*rest, copy.id, &Activity::id) == rest->end()) continue;
        said +=
            screen.text("The copy that the health store has from {} is listed from now on.", copy.source) + "\n";
    }
    return Report{std::move(said)};
}

CommandResult<Report> changed(Activity activity, const std::string& typeName, Application& application) {
    const auto type = activityTypeNamed(typeName, application.text());
    if (!type) return std::unexpected(type.error());
    SessionHistory& history = application.sessions();
    if (const auto saved = commandResult(history.changeType(activity.id, *type)); !saved) {
        return std::unexpected(saved.error());
    }
    activity.type = *type;
    activity.kind = displayName(*type);
    const Calendar calendar = application.settings().calendar();
    if (application.wantsJson()) return Report{activityDocument(activity, calendar)};
    const Screen screen = application.screen();
    return Report{screen.text("Now: {}.", titleOf(activity, screen, calendar)) + "\n"};
}

}  // namespace

CommandResult<Report> run(const ActivityRequest& request, Application& application) {
    const auto activities = activitiesOf(application);
    if (!activities) return std::unexpected(activities.error());
    const auto activity = activityNamed(request.activity, *activities, application.text());
    if (!activity) return std::unexpected(activity.error());
    const Screen screen = application.screen();
    const Calendar calendar = application.settings().calendar();
    const bool isToDelete = request.deletion != ActivityRequest::Deletion::none;
    if ((isToDelete || request.type) && !activity->isOfHistory) {
        return std::unexpected(
            CommandError{ErrorKind::notChangeable,
                         application.text()(
                             "\"{0}\" is a workout of the health store, by {1}; those stay as they were imported.",
                             titleOf(*activity, screen, calendar), activity->source)});
    }
    if (isToDelete) return deleted(*activity, request, application);
    if (request.type) return changed(*activity, *request.type, application);
    Whole whole = wholeOf(*activity, application, screen.figures);
    if (application.wantsJson()) return Report{document(whole, calendar), std::move(whole.problem)};
    return Report{view(whole, screen, calendar), std::move(whole.problem)};
}

}  // namespace pedvar
