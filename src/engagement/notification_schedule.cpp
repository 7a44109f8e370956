#include "engagement/notification_schedule.h"

#include "core/reflection.h"

#include <algorithm>
#include <chrono>

namespace pedvar {

namespace {

using std::chrono::hours;
using std::chrono::minutes;

constexpr Seconds endOfDay = hours(24);

/// By the clock of the person's day.
struct Span {
    Seconds from;
    Seconds to;
};

constexpr Span spanOf(NotificationKind kind) {
    switch (kind) {
        case NotificationKind::morningMotivation:
            return {hours(8), hours(12)};
        case NotificationKind::weeklyRecap:
            return {hours(9), endOfDay};
        case NotificationKind::eveningReminder:
            return {hours(19), endOfDay};
        case NotificationKind::streakInDanger:
            return {hours(20) + minutes(30), endOfDay};
        case NotificationKind::morningWater:
            return {hours(11), hours(14)};
        case NotificationKind::noonWater:
            return {hours(14), hours(17)};
        case NotificationKind::afternoonWater:
            return {hours(17), hours(20)};
        case NotificationKind::eveningWater:
            return {hours(20), hours(22)};
        case NotificationKind::goalAchieved:
        case NotificationKind::closeToGoal:
        case NotificationKind::newBadges:
            break;
    }
    return {Seconds(0), endOfDay};
}

}  // namespace

bool isItsTime(NotificationKind kind, Seconds sinceMidnight) {
    const Span span = spanOf(kind);
    return span.from <= sinceMidnight && sinceMidnight < span.to;
}

Date nextNotificationMoment(const Calendar& calendar, Date now) {
    const Day today = calendar.day(now);
    Date next = calendar.start(today + std::chrono::days(1));
    for (std::size_t i = 0; i < caseNames<NotificationKind>.size(); ++i) {
        const Date moment = calendar.instant(LocalTime(today) + spanOf(static_cast<NotificationKind>(i)).from);
        if (moment > now) next = std::min(next, moment);
    }
    return next;
}

}  // namespace pedvar
