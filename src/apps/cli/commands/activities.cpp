#include "apps/cli/activity_list.h"
#include "apps/cli/application.h"
#include "apps/cli/charts.h"
#include "apps/cli/commands/command.h"

namespace pedvar {
namespace {

JsonObject document(const std::vector<Activity>& activities, const Calendar& calendar) {
    JsonArray entries;
    for (const Activity& activity : activities) entries.push_back({activityDocument(activity, calendar)});
    return {{"activities", {std::move(entries)}}};
}

std::string line(const Activity& activity, const Screen& screen, const Calendar& calendar) {
    const Figures& figures = screen.figures;
    const LocalTime start = calendar.localTime(activity.start);
    const auto shown = [](const std::optional<double>& value, const auto& figure) {
        return value ? figure(*value) : std::string();
    };
    const auto pace = [&](double minutesPerKilometer) {
        return paceOf(activity, minutesPerKilometer * 60 / 1000, figures);
    };
    return leftAligned(figures.weekdayAndDay(std::chrono::floor<std::chrono::days>(start)), 7) +
           rightAligned(figures.time(start), 9) + "  " + leftAligned(harmless(nameOf(activity, screen.text)), 10) +
           rightAligned(shown(activity.distance, [&](double meters) { return figures.distance(meters); }), 9) +
           rightAligned(figures.duration(activity.duration), 10) +
           rightAligned(shown(activity.averagePace, pace), 12) +
           rightAligned(shown(activity.elevationGain, [&](double gain) { return "+" + figures.altitude(gain); }),
                        10) +
           "  " + screen.faint(shortId(activity.id)) + "\n";
}

std::string view(const std::vector<Activity>& activities, const Screen& screen, const Calendar& calendar) {
    if (activities.empty()) {
        return screen.text(
            "There are no activities yet. One that another program has recorded is\n"
            "brought here like this:\n\n    pedvar import walk.gpx --as walk\n");
    }
    std::string result;
    std::optional<std::chrono::year_month> shown;
    for (const Activity& activity : activities) {
        const auto ofActivity = month(std::chrono::floor<std::chrono::days>(calendar.localTime(activity.start)));
        if (shown != ofActivity) {
            result += (shown ? "\n" : "") + screen.bold(screen.figures.month(ofActivity)) + "\n\n";
            shown = ofActivity;
        }
        result += line(activity, screen, calendar);
    }
    return result;
}

}  // namespace

CommandResult<Report> run(const ActivitiesRequest&, Application& application) {
    const SessionHistory& history = application.sessions();
    const auto activities = activitiesOf(application);
    if (!activities) return std::unexpected(activities.error());
    const Calendar calendar = application.settings().calendar();
    std::optional<CommandError> problem;
    if (const std::size_t count = history.unreadableCount(); count > 0) {
        problem =
            CommandError{ErrorKind::damaged,
                         application.text().plural("Of the stored activities, {} cannot be read; it is kept.",
                                                   "Of the stored activities, {} cannot be read; they are kept.",
                                                   static_cast<std::int64_t>(count), count)};
    }
    if (application.wantsJson()) return Report{document(*activities, calendar), std::move(problem)};
    return Report{view(*activities, application.screen(), calendar), std::move(problem)};
}

}  // namespace pedvar
