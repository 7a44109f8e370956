/// Numbers, units and dates the way the person reads them.
#pragma once

#include "apps/cli/texts.h"
#include "core/calendar.h"
#include "core/preferences.h"
#include "platform/number_format.h"

#include <cstdint>
#include <string>

namespace pedvar {

class Figures {
public:
    Figures(const Locale& locale, const UserPreferences& preferences, Texts text);

    /// "8,432".
    std::string number(std::int64_t value) const { return numbers_.number(value); }
    /// Rounded to at most `digits` fraction digits; zeros at the end are left out. "–" for what is no number.
    std::string number(double value, int digits) const { return numbers_.number(value, digits); }

    /// "8,432 steps".
    std::string steps(std::int64_t count) const;
    /// "3 days".
    std::string days(std::int64_t count) const;
    /// In the preferred unit: "6.1 km", "3.8 mi".
    std::string distance(double meters) const;
    /// "312 kcal".
    std::string energy(double kilocalories) const;
    /// "48 min".
    std::string minutes(std::int64_t count) const;
    /// "250 ml", "8.5 fl oz".
    std::string volume(double milliliters, VolumeUnit unit) const;
    /// "12.5 MB".
    std::string bytes(double count) const;

    /// "Wednesday, 1 May 2024".
    std::string longDate(Day day) const;
    /// "1 May 2024".
    std::string date(Day day) const;
    /// "Wed  1".
    std::string weekdayAndDay(Day day) const;
    /// "May 2024".
    std::string month(std::chrono::year_month month) const;
    /// A full hour below a chart: "6", or "6 AM" where the person's clock has twelve hours.
    std::string hour(int hour) const;
    /// "18:05", or "6:05 PM".
    std::string time(LocalTime time) const;

private:
    std::string monthName(std::chrono::month month) const;

    Texts text_;
    NumberFormat numbers_;
    DistanceUnit distanceUnit_;
    bool isTwelveHourClock_;
};

}  // namespace pedvar
