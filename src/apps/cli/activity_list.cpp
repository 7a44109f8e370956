#include "apps/cli/activity_list.h"

#include "apps/cli/application.h"
#include "apps/cli/commands/day_views.h"
#include "apps/cli/health.h"
#include "apps/cli/moment.h"
#include "core/reflection.h"

#include <fmt/ranges.h>

#include <algorithm>

namespace pedvar {
namespace {

constexpr std::string_view newest = "last";
constexpr std::size_t shownDigits = 8;

bool beginsWith(std::string_view id, std::string_view prefix) {
    const auto upperCase = [](char character) {
        return 'a' <= character && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
    };
    return id.size() >= prefix.size() &&
           std::ranges::equal(id.substr(0, prefix.size()), prefix, {}, {}, upperCase);
}

/// "MindAndBody" as people write it: "Mind and body".
std::string spaced(std::string_view kind) {
    std::string result;
    for (const char character : kind) {
        const bool startsWord = 'A' <= character && character <= 'Z' && !result.empty();
        if (startsWord) result += ' ';
        result += startsWord ? static_cast<char>(character - 'A' + 'a') : character;
    }
    return result;
}

/// "walk", "mindAndBody".
std::string documentName(const Activity& activity) {
    if (activity.type) return std::string(caseName(*activity.type));
    std::string name = activity.kind;
    if (!name.empty() && 'A' <= name.front() && name.front() <= 'Z') {
        name.front() = static_cast<char>(name.front() - 'A' + 'a');
    }
    return name;
}

template <class Value>
JsonValue orNull(const std::optional<Value>& value) {
    return value ? JsonValue{*value} : JsonValue{};
}

}  // namespace

CommandResult<std::vector<Activity>> activitiesOf(Application& application) {
    using namespace std::chrono_literals;
    constexpr Interval always{dateOf(std::chrono::sys_days(1y / 1 / 1)),
                              dateOf(std::chrono::sys_days(9999y / 12 / 31))};
    const auto health = application.health();
    if (!health) return std::unexpected(health.error());
    const auto workouts = application.loop().run((*health)->manager.workouts().fetchWorkouts(always));
    return activityList(application.sessions().savedSessions(), workouts);
}

CommandResult<Activity> activityNamed(std::string_view name, const std::vector<Activity>& activities,
                                      const Texts& text) {
    if (activities.empty()) {
        return std::unexpected(CommandError{ErrorKind::unknownActivity, text("There are no activities yet.")});
    }
    if (name == newest) return activities.front();
    const auto isMeant = [&](const Activity& activity) {
        return beginsWith(activity.id.text(), name) ||
               std::ranges::any_of(activity.copies,
                                   [&](const Activity::Copy& copy) { return beginsWith(copy.id.text(), name); });
    };
    const auto first = std::ranges::find_if(activities, isMeant);
    if (name.empty() || first == activities.end()) {
        return std::unexpected(
            CommandError{ErrorKind::unknownActivity,
                         text("There is no activity \"{}\"; `pedvar activities` lists them.", std::string(name))});
    }
    if (const auto count = std::ranges::count_if(activities, isMeant); count > 1) {
        return std::unexpected(CommandError{
            ErrorKind::ambiguousActivity,
            text.plural("{0} activity begins with \"{1}\"; add digits.",
                        "{0} activities begin with \"{1}\"; add digits.", count, count, std::string(name))});
    }
    return *first;
}

CommandResult<ActivityType> activityTypeNamed(std::string_view name, const Texts& text) {
    if (const auto type = caseNamed<ActivityType>(name)) return *type;
    return usageError(text("\"{}\" is no kind of activity; valid: {}.", std::string(name),
                           fmt::format("{}", fmt::join(caseNames<ActivityType>, ", "))));
}

std::string nameOf(const Activity& activity, const Texts& text) {
    return text.lookUp(spaced(activity.kind));
}

std::string titleOf(const Activity& activity, const Screen& screen, const Calendar& calendar) {
    const LocalTime start = calendar.localTime(activity.start);
    const Day day = std::chrono::floor<std::chrono::days>(start);
    return screen.text("{0}, {1} {2}", nameOf(activity, screen.text), screen.figures.date(day),
                       screen.figures.time(start));
}

std::string shortId(UUID id) {
    return id.text().substr(0, shownDigits);
}

std::string paceOf(const Activity& activity, double secondsPerMeter, const Figures& figures) {
    const bool isCycling = activity.type == ActivityType::cycle;
    return isCycling && secondsPerMeter > 0 ? figures.speed(1 / secondsPerMeter) : figures.pace(secondsPerMeter);
}

std::string factsOf(const Activity& activity, std::optional<double> movingTime, const Screen& screen) {
    const Figures& figures = screen.figures;
    std::vector<std::pair<std::string, std::string>> lines;
    if (activity.distance) lines.emplace_back(screen.text("Distance"), figures.distance(*activity.distance));
    lines.emplace_back(screen.text("Time"), figures.duration(activity.duration));
    if (movingTime) lines.emplace_back(screen.text("Moving"), figures.duration(*movingTime));
    if (activity.averagePace) {
        lines.emplace_back(screen.text("Average"), paceOf(activity, *activity.averagePace * 60 / 1000, figures));
    }
    if (activity.steps) lines.emplace_back(screen.text("Steps"), figures.number(*activity.steps));
    if (activity.calories) {
        lines.emplace_back(screen.text("Energy"), figures.energy(static_cast<double>(*activity.calories)));
    }
    if (activity.elevationGain || activity.elevationLoss) {
        lines.emplace_back(screen.text("Climb"),
                           screen.text("{0} up, {1} down", figures.altitude(activity.elevationGain.value_or(0)),
                                       figures.altitude(activity.elevationLoss.value_or(0))));
    }
    lines.emplace_back(screen.text("Recorded by"), harmless(activity.source));
    return labelled(lines);
}

JsonObject activityDocument(const Activity& activity, const Calendar& calendar) {
    return {
        {"id", {activity.id.text()}},
        {"activityType", {documentName(activity)}},
        {"startTime", {isoText(activity.start, calendar)}},
        {"endTime", {isoText(activity.end, calendar)}},
        {"steps", orNull(activity.steps)},
        {"distance", orNull(activity.distance)},
        {"duration", {activity.duration}},
        {"calories", orNull(activity.calories)},
        {"averagePace", orNull(activity.averagePace)},
        {"elevationGain", orNull(activity.elevationGain)},
        {"elevationLoss", orNull(activity.elevationLoss)},
        {"points", orNull(activity.points)},
        {"source", {activity.source}},
    };
}

}  // namespace pedvar
