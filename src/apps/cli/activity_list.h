/// The activities of a person, from wherever they are kept.
#pragma once

#include "apps/cli/error.h"
#include "apps/cli/screen.h"
#include "core/json_value.h"
#include "recording/session_history.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// What every kind of activity can tell of itself; absent is what it does not know.
struct ListedActivity {
    std::string id;
    std::string activityType;  // for documents: "walk"
    std::string typeName;      // for people: "Walking"
    Date startTime;
    std::optional<Date> endTime;
    std::optional<std::int64_t> steps;
    std::optional<double> distance;        // metres
    std::optional<double> duration;        // seconds without pauses
    std::optional<std::int64_t> calories;  // kilocalories
    std::optional<double> averagePace;     // minutes per kilometre
    std::optional<double> elevationGain;   // metres
    std::optional<double> elevationLoss;   // metres
    std::int64_t points = 0;               // of its route
    std::string source;                    // who recorded it
};

/// A session of the history, which has `points` points.
ListedActivity listed(const ActivitySession& session, std::size_t points, const Texts& text);

/// The sessions of the history, the newest by start first.
std::vector<ListedActivity> activitiesOf(const SessionHistory& history, const Texts& text);

/// The one activity whose identifier begins with `name`, in either case, or the newest one for "last".
CommandResult<ListedActivity> activityNamed(std::string_view name, const std::vector<ListedActivity>& activities,
                                            const Texts& text);

CommandResult<ActivityType> activityTypeNamed(std::string_view name, const Texts& text);

/// "Walking", in the person's language.
std::string nameOf(ActivityType type, const Texts& text);

/// "Walking, 1 May 2024 06:30".
std::string titleOf(const ListedActivity& activity, const Screen& screen, const Calendar& calendar);

/// As much of an identifier as people need.
std::string shortId(std::string_view id);

/// The pace, or the speed of who cycles.
std::string paceOf(const ListedActivity& activity, double secondsPerMeter, const Figures& figures);

JsonObject activityDocument(const ListedActivity& activity, const Calendar& calendar);

}  // namespace pedvar
