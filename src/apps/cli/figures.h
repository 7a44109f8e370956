/// Numbers, units and dates the way the person reads them.
#pragma once

#include "apps/cli/texts.h"
#include "core/calendar.h"
#include "core/preferences.h"
#include "health/step_records.h"
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
    /// In metres, or in feet where distances are in miles: "312 m", "1,024 ft".
    std::string altitude(double meters) const;
    /// "1:12:30", "4:05"; minutes and seconds at least.
    std::string duration(double seconds) const;
    /// Per preferred unit: "11:51 /km"; "–" for what is no pace or slower than 100 minutes.
    std::string pace(double secondsPerMeter) const;
    /// "24.3 km/h", "15.1 mph".
    std::string speed(double metersPerSecond) const;
    /// The length of the preferred unit of distance, in metres, and its name: "km", "mi".
    double unitLength() const;
    /// The length of the unit of heights, in metres.
    double smallUnitLength() const;
    std::string unitName() const;
    /// "312 kcal".
    std::string energy(double kilocalories) const;
    /// "48 min".
    std::string minutes(std::int64_t count) const;
    /// In the unit of the metric: "8,432" steps or floors, "6.1 km", "312 kcal", "48 min".
    std::string amount(ActivityMetric metric, double value) const;
    /// In the preferred unit: "72.5 kg", "159.8 lb".
    std::string weight(double kilograms) const;
    /// Centimetres, or inches for those who weigh in pounds.
    std::string height(double centimeters) const;
    /// "250 ml", "8.5 fl oz".
    std::string volume(double milliliters, VolumeUnit unit) const;
    /// "12.5 MB".
    std::string bytes(double count) const;

    /// "Wednesday, 1 May 2024".
    std::string longDate(Day day) const;
    /// "1 May 2024".
    std::string date(Day day) const;
    /// "06:30", "6:30 AM".
    std::string time(LocalTime time) const;
    /// "Wed".
    std::string weekdayName(Day day) const;
    /// "Wed  1".
    std::string weekdayAndDay(Day day) const;
    /// "May 2024".
    std::string month(std::chrono::year_month month) const;
    /// A full hour below a chart: "6", or "6 AM" where the person's clock has twelve hours.
    std::string hour(int hour) const;

private:
    std::string monthName(std::chrono::month month) const;

    Texts text_;
    NumberFormat numbers_;
    DistanceUnit distanceUnit_;
    WeightUnit weightUnit_;
    bool isTwelveHourClock_;
};

}  // namespace pedvar
