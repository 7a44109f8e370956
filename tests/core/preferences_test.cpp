#include "core/preferences.h"

#include <doctest/doctest.h>

#include <cctype>
#include <set>
#include <string>

using namespace pedvar;

namespace {

/// "frenchcanada" of "French (Canada)" and of "frenchCanada".
std::string lettersOf(std::string_view text) {
    std::string letters;
    for (const char character : text) {
        if (std::isalpha(static_cast<unsigned char>(character))) letters += static_cast<char>(character | 0x20);
    }
    return letters;
}

}  // namespace

TEST_CASE("defaults follow the region in the volume unit and the first weekday only") {
    const UserPreferences american = defaultPreferences(1, true);
    UserPreferences expected;
    expected.volumeUnit = VolumeUnit::fluidOunces;
    expected.weekStartsOn = WeekStart::sunday;
    CHECK(american == expected);
    CHECK(american.distanceUnit == DistanceUnit::kilometers);
    CHECK(american.temperatureUnit == TemperatureUnit::fahrenheit);
    CHECK(defaultPreferences(2, false) == UserPreferences{});
}

TEST_CASE("week starts and weekday numbers map to each other, numbers of no weekday to Monday") {
    CHECK(weekStart(1) == WeekStart::sunday);
    CHECK(weekStart(2) == WeekStart::monday);
    CHECK(weekStart(7) == WeekStart::saturday);
    for (int number = 1; number <= 7; ++number) CHECK(weekday(weekStart(number)) == number);
    for (const int number : {-1, 0, 8, 100}) CHECK(weekStart(number) == WeekStart::monday);
}

TEST_CASE("every language has a code and names of its own, in the order of the cases") {
    std::set<std::string_view> codes, nativeNames, englishNames;
    for (const std::string_view name : caseNames<AppLanguage>) {
        const LanguageNames& language = names(*caseNamed<AppLanguage>(name));
        codes.insert(language.code);
        nativeNames.insert(language.nativeName);
        englishNames.insert(language.englishName);
        CHECK(lettersOf(language.englishName).starts_with(lettersOf(name)));
    }
    CHECK(codes.size() == 40);
    CHECK(nativeNames.size() == 40);
    CHECK(englishNames.size() == 40);
    CHECK(names(AppLanguage::portuguesePortugal).code == "pt-PT");
    CHECK(names(AppLanguage::chineseTraditional).englishName == "Chinese (Traditional)");
    CHECK(names(AppLanguage::system).code.empty());
    CHECK(displayName(AppLanguage::spanishMexico) == "Español (México)");
    CHECK(displayName(AppLanguage::arabic) == "العربية");
}
