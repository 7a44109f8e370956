/// The person's choices of display and behaviour.
#pragma once

#include "core/record.h"

#include <string_view>

namespace pedvar {

enum class DistanceUnit { kilometers, miles };
enum class WeightUnit { kilograms, pounds };
enum class VolumeUnit { milliliters, fluidOunces };
enum class TemperatureUnit { celsius, fahrenheit };
enum class PressureUnit { hPa, inHg, mbar };
enum class AppTheme { light, dark, system };
enum class WeekStart { monday, tuesday, wednesday, thursday, friday, saturday, sunday };
enum class TimeFormat { system, twelveHour, twentyFourHour };
enum class StepColor { green, blue, purple, orange, pink, cyan, teal, indigo, custom };
enum class WeekRowStyle { calendarWeek, rollingSevenDays };
enum class AppTab { home, trends, activities, hydration, settings };
enum class UnitSystem { metric, imperial };
enum class AppLanguage {
    system,
    english,
    englishAustralia,
    englishCanada,
    englishUK,
    german,
    japanese,
    spanish,
    spanishMexico,
    french,
    frenchCanada,
    italian,
    portugueseBrazil,
    portuguesePortugal,
    russian,
    korean,
    chineseSimplified,
    chineseTraditional,
    dutch,
    polish,
    swedish,
    norwegian,
    danish,
    finnish,
    turkish,
    greek,
    hebrew,
    hindi,
    thai,
    vietnamese,
    indonesian,
    malay,
    czech,
    hungarian,
    romanian,
    slovak,
    croatian,
    ukrainian,
    catalan,
    arabic,
};

/// The preferences of a new person without a region; see `defaultPreferences`.
struct UserPreferences {
    DistanceUnit distanceUnit = DistanceUnit::kilometers;
    WeightUnit weightUnit = WeightUnit::kilograms;
    VolumeUnit volumeUnit = VolumeUnit::milliliters;
    TemperatureUnit temperatureUnit = TemperatureUnit::fahrenheit;
    PressureUnit pressureUnit = PressureUnit::hPa;
    AppTheme theme = AppTheme::dark;
    WeekStart weekStartsOn = WeekStart::monday;
    TimeFormat timeFormat = TimeFormat::system;
    bool notificationsEnabled = true;
    bool morningMotivationEnabled = true;
    bool goalAchievedAlertEnabled = true;
    bool closeToGoalReminderEnabled = true;
    bool streakProtectionEnabled = true;
    bool eveningReminderEnabled = true;
    bool weeklyRecapEnabled = true;
    bool hapticFeedbackEnabled = true;
    StepColor preferredStepColor = StepColor::green;
    double customStepColorRed = 0.2;  // the three are used with StepColor::custom only; 0 to 1
    double customStepColorGreen = 0.85;
    double customStepColorBlue = 0.5;
    AppLanguage appLanguage = AppLanguage::system;
    bool showJapaneseWalking = true;
    bool autoPauseEnabled = false;
    WeekRowStyle homeWeekRowStyle = WeekRowStyle::calendarWeek;
    AppTab defaultTab = AppTab::home;

    using Fields =
        FieldList<&UserPreferences::distanceUnit, &UserPreferences::weightUnit, &UserPreferences::volumeUnit,
                  &UserPreferences::temperatureUnit, &UserPreferences::pressureUnit, &UserPreferences::theme,
                  &UserPreferences::weekStartsOn, &UserPreferences::timeFormat,
                  &UserPreferences::notificationsEnabled, &UserPreferences::morningMotivationEnabled,
                  &UserPreferences::goalAchievedAlertEnabled, &UserPreferences::closeToGoalReminderEnabled,
                  &UserPreferences::streakProtectionEnabled, &UserPreferences::eveningReminderEnabled,
                  &UserPreferences::weeklyRecapEnabled, &UserPreferences::hapticFeedbackEnabled,
                  &UserPreferences::preferredStepColor, &UserPreferences::customStepColorRed,
                  &UserPreferences::customStepColorGreen, &UserPreferences::customStepColorBlue,
                  &UserPreferences::appLanguage, &UserPreferences::showJapaneseWalking,
                  &UserPreferences::autoPauseEnabled, &UserPreferences::homeWeekRowStyle,
                  &UserPreferences::defaultTab>;
    bool operator==(const UserPreferences&) const = default;
};
static_assert(isComplete<UserPreferences>);

/// The preferences of a new person. Units mix systems on purpose: only the volume unit and the first day of the
/// week follow the region. `firstWeekday`: 1 = Sunday ... 7 = Saturday.
UserPreferences defaultPreferences(int firstWeekday, bool isUnitedStates);

/// The week start of a calendar whose first weekday is `weekday` (1 = Sunday ... 7 = Saturday); Monday for others.
WeekStart weekStart(int weekday);
/// Back again.
int weekday(WeekStart start);

/// How a language names itself.
struct LanguageNames {
    std::string_view code;         // "en-GB"; empty for `system`, which follows the language of the device
    std::string_view nativeName;   // "Español (México)"
    std::string_view englishName;  // "Spanish (Mexico)"
};
const LanguageNames& names(AppLanguage language);

/// What people read for a choice, in English; the key under which its translation is looked up.
std::string_view displayName(DistanceUnit unit);
std::string_view displayName(WeightUnit unit);
std::string_view displayName(VolumeUnit unit);
std::string_view displayName(TemperatureUnit unit);
std::string_view displayName(PressureUnit unit);
std::string_view displayName(AppTheme theme);
std::string_view displayName(WeekStart start);
std::string_view displayName(TimeFormat format);
std::string_view displayName(StepColor color);
std::string_view displayName(WeekRowStyle style);
std::string_view displayName(AppTab tab);
std::string_view displayName(UnitSystem system);
/// The language's own name, which is not translated; "System" for `system`.
std::string_view displayName(AppLanguage language);

}  // namespace pedvar
