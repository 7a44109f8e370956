#include "apps/cli/figures.h"

#include "core/units.h"

#include <array>

namespace pedvar {
namespace {

bool hasTwelveHourClock(const Locale& locale, TimeFormat format) {
    switch (format) {
        case TimeFormat::twelveHour:
            return true;
        case TimeFormat::twentyFourHour:
            return false;
        case TimeFormat::system:
            break;
    }
    return locale.usesTwelveHourClock();
}

}  // namespace

Figures::Figures(const Locale& locale, const UserPreferences& preferences, Texts text)
    : text_(text),
      numbers_(locale),
      distanceUnit_(preferences.distanceUnit),
      weightUnit_(preferences.weightUnit),
      isTwelveHourClock_(hasTwelveHourClock(locale, preferences.timeFormat)) {}

std::string Figures::steps(std::int64_t count) const {
    return text_.plural("{} step", "{} steps", count, number(count));
}

std::string Figures::days(std::int64_t count) const {
    return text_.plural("{} day", "{} days", count, number(count));
}

std::string Figures::distance(double meters) const {
    if (distanceUnit_ == DistanceUnit::miles) return text_("{} mi", number(meters / metersPerMile, 1));
    return text_("{} km", number(meters / metersPerKilometer, 1));
}

std::string Figures::altitude(double meters) const {
    const std::string shown = number(meters / smallUnitLength(), 0);
    return distanceUnit_ == DistanceUnit::miles ? text_("{} ft", shown) : text_("{} m", shown);
}

std::string Figures::duration(double seconds) const {
    constexpr double longest = 1e12;
    if (!(std::abs(seconds) < longest)) return "–";
    const auto whole = static_cast<std::int64_t>(std::llround(std::max(seconds, 0.0)));
    const std::int64_t hours = whole / 3600;
    if (hours == 0) return fmt::format("{}:{:02}", whole / 60, whole % 60);
    return fmt::format("{}:{:02}:{:02}", number(hours), whole / 60 % 60, whole % 60);
}

std::string Figures::pace(double secondsPerMeter) const {
    constexpr double slowest = 100 * 60;  // seconds a unit
    const double perUnit = secondsPerMeter * unitLength();
    const bool isPace = perUnit > 0 && perUnit < slowest;
    if (!isPace) return "–";
    return text_("{0} /{1}", duration(perUnit), unitName());
}

std::string Figures::speed(double metersPerSecond) const {
    const std::string perHour = number(metersPerSecond * 3600 / unitLength(), 1);
    return distanceUnit_ == DistanceUnit::miles ? text_("{} mph", perHour) : text_("{} km/h", perHour);
}

double Figures::unitLength() const {
    return distanceUnit_ == DistanceUnit::miles ? metersPerMile : metersPerKilometer;
}

double Figures::smallUnitLength() const {
    constexpr double metersPerFoot = 0.3048;
    return distanceUnit_ == DistanceUnit::miles ? metersPerFoot : 1;
}

std::string Figures::unitName() const {
    return distanceUnit_ == DistanceUnit::miles ? text_("mi") : text_("km");
}

std::string Figures::energy(double kilocalories) const {
    return text_("{} kcal", number(kilocalories, 0));
}

std::string Figures::minutes(std::int64_t count) const {
    return text_("{} min", number(count));
}

std::string Figures::amount(ActivityMetric metric, double value) const {
    switch (metric) {
        case ActivityMetric::distance:
            return distance(value);
        case ActivityMetric::calories:
            return energy(value);
        case ActivityMetric::activeMinutes:
            return text_("{} min", number(value, 0));
        case ActivityMetric::steps:
        case ActivityMetric::flights:
            break;
    }
    return number(value, 0);
}

std::string Figures::weight(double kilograms) const {
    if (weightUnit_ == WeightUnit::pounds) return text_("{} lb", number(kilograms / kilogramsPerPound, 1));
    return text_("{} kg", number(kilograms, 1));
}

std::string Figures::height(double centimeters) const {
    if (weightUnit_ == WeightUnit::pounds) return text_("{} in", number(centimeters / centimetersPerInch, 1));
    return text_("{} cm", number(centimeters, 1));
}

std::string Figures::volume(double milliliters, VolumeUnit unit) const {
    if (unit == VolumeUnit::milliliters) return text_("{} ml", number(milliliters, 0));
    return text_("{} fl oz", number(unitNamed("fl_oz_us")->fromKept(milliliters), 1));
}

std::string Figures::bytes(double count) const {
    constexpr double megabyte = 1e6;
    if (count < megabyte) return text_("{} kB", number(count / 1e3, 0));
    if (count < 1e3 * megabyte) return text_("{} MB", number(count / megabyte, 1));
    return text_("{} GB", number(count / 1e9, 2));
}

std::string Figures::longDate(Day day) const {
    const std::array names{text_("Sunday"),   text_("Monday"), text_("Tuesday"), text_("Wednesday"),
                           text_("Thursday"), text_("Friday"), text_("Saturday")};
    return text_("{}, {}", names.at(static_cast<std::size_t>(weekday(day)) - 1), date(day));
}

std::string Figures::date(Day day) const {
    const std::chrono::year_month_day parts(day);
    return text_("{0} {1} {2}", static_cast<unsigned>(parts.day()), monthName(parts.month()),
                 static_cast<int>(parts.year()));
}

std::string Figures::time(LocalTime time) const {
    const auto ofDay = time - std::chrono::floor<std::chrono::days>(time);
    const auto whole = std::chrono::floor<std::chrono::minutes>(ofDay).count();
    const auto hour = static_cast<int>(whole / 60);
    const auto minute = static_cast<int>(whole % 60);
    if (!isTwelveHourClock_) return fmt::format("{:02}:{:02}", hour, minute);
    const int shown = hour % 12 == 0 ? 12 : hour % 12;
    return hour < 12 ? text_("{0}:{1:02} AM", shown, minute) : text_("{0}:{1:02} PM", shown, minute);
}

std::string Figures::weekdayName(Day day) const {
    const std::array names{text_("Sun"), text_("Mon"), text_("Tue"), text_("Wed"),
                           text_("Thu"), text_("Fri"), text_("Sat")};
    return names.at(static_cast<std::size_t>(weekday(day)) - 1);
}

std::string Figures::weekdayAndDay(Day day) const {
    const auto number = static_cast<unsigned>(std::chrono::year_month_day(day).day());
    return text_("{0} {1:2}", weekdayName(day), number);
}

std::string Figures::month(std::chrono::year_month month) const {
    return text_("{0} {1}", monthName(month.month()), static_cast<int>(month.year()));
}

std::string Figures::hour(int hour) const {
    if (!isTwelveHourClock_) return std::to_string(hour);
    const int shown = hour % 12 == 0 ? 12 : hour % 12;
    return hour < 12 ? text_("{} AM", shown) : text_("{} PM", shown);
}

std::string Figures::monthName(std::chrono::month month) const {
    const std::array names{text_("January"),   text_("February"), text_("March"),    text_("April"),
                           text_("May"),       text_("June"),     text_("July"),     text_("August"),
                           text_("September"), text_("October"),  text_("November"), text_("December")};
    return names.at(static_cast<unsigned>(month) - 1);
}

}  // namespace pedvar
