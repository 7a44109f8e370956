#include "core/preferences.h"

#include <iterator>
#include <utility>

namespace pedvar {

namespace {

constexpr LanguageNames languages[] = {
    {"", "System", "System"},
    {"en", "English", "English"},
    {"en-AU", "English (Australia)", "English (Australia)"},
    {"en-CA", "English (Canada)", "English (Canada)"},
    {"en-GB", "English (UK)", "English (UK)"},
    {"de", "Deutsch", "German"},
    {"ja", "日本語", "Japanese"},
    {"es", "Español (España)", "Spanish (Spain)"},
    {"es-MX", "Español (México)", "Spanish (Mexico)"},
    {"fr", "Français", "French"},
    {"fr-CA", "Français (Canada)", "French (Canada)"},
    {"it", "Italiano", "Italian"},
    {"pt", "Português (Brasil)", "Portuguese (Brazil)"},
    {"pt-PT", "Português (Portugal)", "Portuguese (Portugal)"},
    {"ru", "Русский", "Russian"},
    {"ko", "한국어", "Korean"},
    {"zh", "简体中文", "Chinese (Simplified)"},
    {"zh-Hant", "繁體中文", "Chinese (Traditional)"},
    {"nl", "Nederlands", "Dutch"},
    {"pl", "Polski", "Polish"},
    {"sv", "Svenska", "Swedish"},
    {"nb", "Norsk", "Norwegian"},
    {"da", "Dansk", "Danish"},
    {"fi", "Suomi", "Finnish"},
    {"tr", "Türkçe", "Turkish"},
    {"el", "Ελληνικά", "Greek"},
    {"he", "עברית", "Hebrew"},
    {"hi", "हिन्दी", "Hindi"},
    {"th", "ไทย", "Thai"},
    {"vi", "Tiếng Việt", "Vietnamese"},
    {"id", "Bahasa Indonesia", "Indonesian"},
    {"ms", "Bahasa Melayu", "Malay"},
    {"cs", "Čeština", "Czech"},
    {"hu", "Magyar", "Hungarian"},
    {"ro", "Română", "Romanian"},
    {"sk", "Slovenčina", "Slovak"},
    {"hr", "Hrvatski", "Croatian"},
    {"uk", "Українська", "Ukrainian"},
    {"ca", "Català", "Catalan"},
    {"ar", "العربية", "Arabic"},
};

/// The text of a case; `texts` has one a case, in their order.
template <Enumeration E, std::size_t Count>
std::string_view pick(E enumerator, const std::string_view (&texts)[Count]) {
    static_assert(Count == caseNames<E>.size());
    return texts[caseIndex(enumerator)];
}

}  // namespace

UserPreferences defaultPreferences(int firstWeekday, bool isUnitedStates) {
    UserPreferences preferences;
    preferences.volumeUnit = isUnitedStates ? VolumeUnit::fluidOunces : VolumeUnit::milliliters;
    preferences.weekStartsOn = weekStart(firstWeekday);
    return preferences;
}

WeekStart weekStart(int weekday) {
    if (weekday == 1) return WeekStart::sunday;
    return 2 <= weekday && weekday <= 7 ? static_cast<WeekStart>(weekday - 2) : WeekStart::monday;
}

int weekday(WeekStart start) {
    return start == WeekStart::sunday ? 1 : std::to_underlying(start) + 2;
}

const LanguageNames& names(AppLanguage language) {
    static_assert(std::size(languages) == caseNames<AppLanguage>.size());
    return languages[caseIndex(language)];
}

// i18n: texts
std::string_view displayName(DistanceUnit unit) {
    return pick(unit, {"Kilometers", "Miles"});
}

std::string_view displayName(WeightUnit unit) {
    return pick(unit, {"Kilograms", "Pounds"});
}

std::string_view displayName(VolumeUnit unit) {
    return pick(unit, {"Millilitres (ml)", "Fluid Ounces (fl oz)"});
}

std::string_view displayName(TemperatureUnit unit) {
    return pick(unit, {"Celsius (°C)", "Fahrenheit (°F)"});
}

std::string_view displayName(PressureUnit unit) {
    return pick(unit, {"Hectopascals (hPa)", "Inches of Mercury (inHg)", "Millibars (mbar)"});
}

std::string_view displayName(AppTheme theme) {
    return pick(theme, {"Light", "Dark", "System"});
}

std::string_view displayName(WeekStart start) {
    return pick(start, {"Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"});
}

std::string_view displayName(TimeFormat format) {
    return pick(format, {"System", "12-Hour", "24-Hour"});
}

std::string_view displayName(StepColor color) {
    return pick(color, {"Green", "Blue", "Purple", "Orange", "Pink", "Cyan", "Teal", "Indigo", "Custom"});
}

std::string_view displayName(WeekRowStyle style) {
    return pick(style, {"Calendar Week", "Last 7 Days"});
}

std::string_view displayName(AppTab tab) {
    return pick(tab, {"Home", "Trends", "Activities", "Hydration", "Settings"});
}

std::string_view displayName(UnitSystem system) {
    return pick(system, {"Metric", "Imperial"});
}
// i18n: end

std::string_view displayName(AppLanguage language) {
    return names(language).nativeName;
}

}  // namespace pedvar
