#include "linux/system/glibc_locale.h"

#include "linux/system/environment_language.h"
#include "platform/language_habits.h"

#include <langinfo.h>
#include <locale.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>

namespace pedvar {

namespace {

bool isPlain(std::string_view name) {
    return name == "C" || name.starts_with("C.") || name == "POSIX";
}

struct FreeLocale {
    void operator()(locale_t locale) const { freelocale(locale); }
};
using OwnedLocale = std::unique_ptr<std::remove_pointer_t<locale_t>, FreeLocale>;

/// The locale for the categories of `mask`; null where ISO habits hold.
OwnedLocale installedLocale(int mask, const std::string& name) {
    return OwnedLocale(isPlain(name) ? nullptr : newlocale(mask, name.c_str(), nullptr));
}

/// "de" and "DE" of "de_DE.UTF-8@euro".
struct LocaleParts {
    std::string_view language, territory;
};

LocaleParts partsOf(std::string_view name) {
    name = name.substr(0, name.find_first_of(".@"));
    const auto underscore = name.find('_');
    if (underscore == std::string_view::npos) return {name, {}};
    return {name.substr(0, underscore), name.substr(underscore + 1)};
}

/// The C library keeps some numbers in the place of the text's address.
std::uint32_t numberFor(nl_item item, locale_t locale) {
    const char* value = nl_langinfo_l(item, locale);
    std::uint32_t number = 0;
    std::memcpy(&number, static_cast<const void*>(&value), sizeof(number));
    return number;
}

/// Whether a time format like "%I:%M %p" counts twelve hours.
bool countsTwelveHours(std::string_view format) {
    for (auto at = format.find('%'); at != std::string_view::npos; at = format.find('%', at)) {
        at = format.find_first_not_of("-_0^#EO", at + 1);
        if (at == std::string_view::npos) return false;
        if (std::string_view("rIlpP").contains(format[at])) return true;
        ++at;
    }
    return false;
}

std::string languageOfDevice() {
    const auto languages = languagesOfEnvironment();
    if (languages.empty()) return "en";
    const LocaleParts parts = partsOf(languages.front());
    std::string code(parts.language);
    if (!parts.territory.empty()) code.append("-").append(parts.territory);
    return code;
}

/// What is known of a locale that is not installed. One that says nothing takes the language that is asked for
/// beside it.
std::optional<LanguageHabits> knownHabits(const std::string& locale) {
    if (!isPlain(locale)) return habitsOf(locale);
    const auto languages = locale.starts_with("C.") ? languagesOfEnvironment() : std::vector<std::string>();
    return languages.empty() ? std::nullopt : habitsOf(languages.front());
}

}  // namespace

GlibcLocale::GlibcLocale(const ZoneRules& zone) : zone_(zone), languageCode_(languageOfDevice()) {
    readTime();
    readNumbers();
    readMeasurement();
}

void GlibcLocale::readTime() {
    const std::string name = localeName("LC_TIME");
    const auto locale = installedLocale(LC_TIME_MASK, name);
    if (!locale) {
        const auto habits = knownHabits(name);
        if (habits && !isPlain(name)) firstWeekday_ = habits->firstWeekday;  // a region's, not a language's
        if (habits) usesTwelveHourClock_ = habits->usesTwelveHourClock;
        return;
    }
    // Days are numbered from the weekday of a date, of which only a Sunday and a Monday are in use.
    constexpr std::uint32_t monday = 19'971'201;
    const int first = static_cast<unsigned char>(*nl_langinfo_l(_NL_TIME_FIRST_WEEKDAY, locale.get()));
    const int shift = numberFor(_NL_TIME_WEEK_1STDAY, locale.get()) == monday ? 1 : 0;
    firstWeekday_ = (first - 1 + shift) % 7 + 1;
    usesTwelveHourClock_ = countsTwelveHours(nl_langinfo_l(T_FMT, locale.get()));
}

void GlibcLocale::readNumbers() {
    const std::string name = localeName("LC_NUMERIC");
    const auto locale = installedLocale(LC_NUMERIC_MASK | LC_CTYPE_MASK, name);
    if (!locale) {
        const auto habits = knownHabits(name);
        if (habits) decimalSeparator_ = habits->decimalSeparator;
        if (habits) groupingSeparator_ = habits->groupingSeparator;
        return;
    }
    decimalSeparator_ = nl_langinfo_l(RADIXCHAR, locale.get()) == std::string_view(",") ? "," : ".";
    groupingSeparator_ = nl_langinfo_l(THOUSEP, locale.get());
    const bool isUtf8 = nl_langinfo_l(CODESET, locale.get()) == std::string_view("UTF-8");
    const bool isAscii = std::ranges::all_of(groupingSeparator_, [](char c) { return c > 0; });
    // In an older character set it is a kind of space that no other text here is written in.
    if (!isUtf8 && !isAscii) groupingSeparator_ = " ";
}

void GlibcLocale::readMeasurement() {
    const std::string name = localeName("LC_MEASUREMENT");
    const std::string_view territory = partsOf(name).territory;
    const auto locale = installedLocale(LC_MEASUREMENT_MASK, name);
    constexpr char customary = 2;
    const bool isCustomary = locale && *nl_langinfo_l(_NL_MEASUREMENT_MEASUREMENT, locale.get()) == customary;
    if (isCustomary || territory == "US") measurementSystem_ = MeasurementSystem::unitedStates;
    if (territory == "GB") measurementSystem_ = MeasurementSystem::unitedKingdom;
}

}  // namespace pedvar
