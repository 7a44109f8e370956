/// Days, weeks and months as people in a zone live them.
#pragma once

#include "core/date.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace pedvar {

/// What a wall clock shows; no zone.
using LocalTime = std::chrono::local_time<Seconds>;
/// A calendar day.
using Day = std::chrono::local_days;

/// The offsets of one zone through history.
class ZoneRules {
public:
    virtual ~ZoneRules() = default;

    /// Tells zones apart ("Europe/Berlin").
    virtual std::string name() const = 0;

    /// What the zone's clocks show at `moment`.
    virtual LocalTime localTime(Date moment) const = 0;

    /// The first moment at which the zone's clocks show `time`; where they skip it, the moment of the skip.
    virtual Date instant(LocalTime time) const = 0;
};

/// Days and weeks of a zone, in the years 1 to 9999. Days follow each other by the calendar, never by 86,400 s:
/// each moment belongs to one day and one of its hours, and each begins where the one before it ends.
class Calendar {
public:
    /// `firstWeekday`: 1 = Sunday ... 7 = Saturday. Keeps a reference to `zone`.
    Calendar(const ZoneRules& zone, int firstWeekday);

    int firstWeekday() const { return firstWeekday_; }
    std::string zoneName() const { return zone_->name(); }
    LocalTime localTime(Date moment) const { return zone_->localTime(moment); }
    Date instant(LocalTime time) const { return zone_->instant(time); }

    /// The day that holds `moment`, which is the day that clocks show but where they go back across midnight: then
    /// the second evening belongs to the new day.
    Day day(Date moment) const;
    /// The first moment of `day`; where midnight does not exist, the moment when the day begins.
    Date start(Day day) const;
    Date startOfDay(Date moment) const { return start(day(moment)); }
    /// The moments of `day`: 23 to 25 hours as a rule.
    Interval interval(Day day) const;
    /// The moments of clock hour `hour` (0 to 23) of `day`: none where the clocks skip it, two hours' worth where
    /// they show it twice.
    Interval hour(Day day, int hour) const;

    /// The first day of the week that holds `day`.
    Day weekStart(Day day) const;

private:
    const ZoneRules* zone_;
    int firstWeekday_;
};

/// 1 = Sunday ... 7 = Saturday.
int weekday(Day day);

std::chrono::year_month month(Day day);
Day firstDay(std::chrono::year_month month);
int dayCount(std::chrono::year_month month);

/// "2024-05-01".
std::string isoText(Day day);
/// "2024-05".
std::string monthKey(std::chrono::year_month month);
/// A day or month that exists, written exactly so; none otherwise. Years 1 to 9999.
std::optional<Day> parseDay(std::string_view text);
std::optional<std::chrono::year_month> parseMonth(std::string_view text);

}  // namespace pedvar
