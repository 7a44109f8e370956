/// When the day's notifications come.
#pragma once

#include "core/calendar.h"

#include <optional>

namespace pedvar {

/// Each is shown at most once a day, the recap of the week once a week.
enum class NotificationKind {
    goalAchieved,
    closeToGoal,
    streakInDanger,
    morningMotivation,
    eveningReminder,
    weeklyRecap,
    newBadges,
    morningWater,
    noonWater,
    afternoonWater,
    eveningWater,
};

/// Whether the clock shows a time at which `kind` may be shown. What was missed, because the machine slept, is
/// made up for until its time is over.
bool isItsTime(NotificationKind kind, Seconds sinceMidnight);

/// The next moment after `now` at which something may become due: one of those times, or the beginning of a day.
Date nextNotificationMoment(const Calendar& calendar, Date now);

}  // namespace pedvar
