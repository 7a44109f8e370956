#include "apps/cli/activity_list.h"

#include "apps/cli/moment.h"
#include "core/reflection.h"
#include "routes/imported_activity.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <tuple>

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

/// The nearest moment that has a date; what was stored may be any number.
Date dated(Date moment) {
    using namespace std::chrono_literals;
    constexpr Date first = dateOf(std::chrono::sys_days(1y / 1 / 2));
    constexpr Date last = dateOf(std::chrono::sys_days(9999y / 12 / 30));
    return std::clamp(moment, first, last);
}

template <class Value>
JsonValue orNull(const std::optional<Value>& value) {
    return value ? JsonValue{*value} : JsonValue{};
}

}  // namespace

ListedActivity listed(const ActivitySession& session, std::size_t points, const Texts& text) {
    const bool isForeign = isImported(session);
    return {
        .id = session.id.text(),
        .activityType = std::string(caseName(session.activityType)),
        .typeName = nameOf(session.activityType, text),
        .startTime = dated(session.startTime),
        .endTime = session.endTime.transform(dated),
        .steps = isForeign ? std::nullopt : std::optional(session.steps),
        .distance = session.distance,
        .duration = session.duration,
        .calories = session.calories,
        .averagePace = session.averagePace,
        .elevationGain = session.elevationGain,
        .elevationLoss = session.elevationLoss,
        .points = static_cast<std::int64_t>(points),
        .source = isForeign ? "GPX" : "Pedvar",
    };
}

std::vector<ListedActivity> activitiesOf(const SessionHistory& history, const Texts& text) {
    std::vector<ListedActivity> result;
    for (const SavedSession& saved : history.savedSessions()) {
        result.push_back(listed(saved.session, saved.pointCount, text));
    }
    std::ranges::sort(result, [](const ListedActivity& one, const ListedActivity& other) {
        return std::tie(other.startTime, one.id) < std::tie(one.startTime, other.id);
    });
    return result;
}

CommandResult<ListedActivity> activityNamed(std::string_view name, const std::vector<ListedActivity>& activities,
                                            const Texts& text) {
    if (activities.empty()) {
        return std::unexpected(CommandError{ErrorKind::unknownActivity, text("There are no activities yet.")});
    }
    if (name == newest) return activities.front();
    const auto isMeant = [&](const ListedActivity& activity) { return beginsWith(activity.id, name); };
    const auto first = std::ranges::find_if(activities, isMeant);
    if (name.empty() || first == activities.end()) {
        return std::unexpected(
            CommandError{ErrorKind::unknownActivity,
                         text("There is no activity \"{}\"; `pedvar activities` lists them.", std::string(name))});
    }
    if (const auto count = std::ranges::count_if(activities, isMeant); count > 1) {
        return std::unexpected(
            CommandError{ErrorKind::ambiguousActivity,
                         text("{0} activities begin with \"{1}\"; add digits.", count, std::string(name))});
    }
    return *first;
}

CommandResult<ActivityType> activityTypeNamed(std::string_view name, const Texts& text) {
    if (const auto type = caseNamed<ActivityType>(name)) return *type;
    return usageError(text("\"{}\" is no kind of activity; valid: {}.", std::string(name),
                           fmt::format("{}", fmt::join(caseNames<ActivityType>, ", "))));
}

std::string nameOf(ActivityType type, const Texts& text) {
    switch (type) {
        case ActivityType::walk:
            return text("Walking");
        case ActivityType::run:
            return text("Running");
        case ActivityType::hike:
            return text("Hiking");
        case ActivityType::cycle:
            return text("Cycling");
    }
    return {};
}

std::string titleOf(const ListedActivity& activity, const Screen& screen, const Calendar& calendar) {
    const LocalTime start = calendar.localTime(activity.startTime);
    const Day day = std::chrono::floor<std::chrono::days>(start);
    return screen.text("{0}, {1} {2}", activity.typeName, screen.figures.date(day), screen.figures.time(start));
}

std::string shortId(std::string_view id) {
    return std::string(id.substr(0, shownDigits));
}

std::string paceOf(const ListedActivity& activity, double secondsPerMeter, const Figures& figures) {
    const bool isCycling = activity.activityType == caseName(ActivityType::cycle);
    return isCycling && secondsPerMeter > 0 ? figures.speed(1 / secondsPerMeter) : figures.pace(secondsPerMeter);
}

JsonObject activityDocument(const ListedActivity& activity, const Calendar& calendar) {
    return {
        {"id", {activity.id}},
        {"activityType", {activity.activityType}},
        {"startTime", {isoText(activity.startTime, calendar)}},
        {"endTime", activity.endTime ? JsonValue{isoText(*activity.endTime, calendar)} : JsonValue{}},
        {"steps", orNull(activity.steps)},
        {"distance", orNull(activity.distance)},
        {"duration", orNull(activity.duration)},
        {"calories", orNull(activity.calories)},
        {"averagePace", orNull(activity.averagePace)},
        {"elevationGain", orNull(activity.elevationGain)},
        {"elevationLoss", orNull(activity.elevationLoss)},
        {"points", {activity.points}},
        {"source", {activity.source}},
    };
}

}  // namespace pedvar
