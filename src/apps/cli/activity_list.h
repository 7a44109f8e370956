/// The activities of a person, from wherever they are kept.
#pragma once

#include "apps/cli/error.h"
#include "apps/cli/screen.h"
#include "core/json_value.h"
#include "recording/activity_list.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

class Application;

/// History and health store as one list, the newest by start first.
CommandResult<std::vector<Activity>> activitiesOf(Application& application);

/// The one activity whose identifier, or that of a copy, begins with `name` in either case; the newest one for
/// "last".
CommandResult<Activity> activityNamed(std::string_view name, const std::vector<Activity>& activities,
                                      const Texts& text);

CommandResult<ActivityType> activityTypeNamed(std::string_view name, const Texts& text);

/// "Walking", "Mind and body", in the person's language.
std::string nameOf(const Activity& activity, const Texts& text);

/// "Walking, 1 May 2024 06:30".
std::string titleOf(const Activity& activity, const Screen& screen, const Calendar& calendar);

/// As much of an identifier as people need.
std::string shortId(UUID id);

/// The pace, or the speed of who cycles.
std::string paceOf(const Activity& activity, double secondsPerMeter, const Figures& figures);

/// What is known of it, a line each.
std::string factsOf(const Activity& activity, std::optional<double> movingTime, const Screen& screen);

JsonObject activityDocument(const Activity& activity, const Calendar& calendar);

}  // namespace pedvar
