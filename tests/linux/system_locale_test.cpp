#include "linux/system/absl_zone.h"
#include "linux/system/glibc_locale.h"
#include "platform/language_habits.h"
#include "support/environment.h"

#include <doctest/doctest.h>
#include <locale.h>

#include <list>
#include <map>

using namespace pedvar;

namespace {

/// The locale of an environment in which only these variables of locales are set.
GlibcLocale localeOf(const std::map<std::string, std::string>& variables) {
    static const auto zone = AbslZone::utc();
    std::list<EnvironmentVariable> environment;
    for (const char* name :
         {"LC_ALL", "LC_TIME", "LC_NUMERIC", "LC_MEASUREMENT", "LC_MESSAGES", "LANG", "LANGUAGE"}) {
        const auto value = variables.find(name);
        environment.emplace_back(name, value == variables.end() ? std::nullopt : std::optional(value->second));
    }
    return GlibcLocale(*zone);
}

/// What a person sees of it: "1: 10,000.5 unitedStates 12h".
std::string habits(const GlibcLocale& locale) {
    constexpr const char* systems[]{"metric", "unitedStates", "unitedKingdom"};
    return std::to_string(locale.firstWeekday()) + ": 10" + locale.groupingSeparator() + "000" +
           locale.decimalSeparator() + "5 " + systems[static_cast<int>(locale.measurementSystem())] +
           (locale.usesTwelveHourClock() ? " 12h" : " 24h");
}

bool isInstalled(const std::string& name) {
    const locale_t locale = newlocale(LC_ALL_MASK, name.c_str(), nullptr);
    if (!locale) {
        MESSAGE("not installed: " << name);
        return false;
    }
    freelocale(locale);
    return true;
}

}  // namespace

TEST_CASE("plain and unknown locales follow ISO habits but keep the language they name") {
    for (const char* name : {"", "C", "C.UTF-8", "POSIX", "tlh_QO.UTF-8", "...", "@", "_"}) {
        CAPTURE(name);
        CHECK(habits(localeOf({{"LANG", name}})) == "2: 10,000.5 metric 24h");
    }
    CHECK(localeOf({}).languageCode() == "en");
    CHECK(localeOf({{"LANG", "C.UTF-8"}}).languageCode() == "en");
    CHECK(localeOf({{"LANG", "tlh_QO.UTF-8"}}).languageCode() == "tlh-QO");
    CHECK(localeOf({{"LANG", "eo.UTF-8@x"}}).languageCode() == "eo");
    CHECK(localeOf({{"LANG", "de_AT"}, {"LC_MESSAGES", "fr_FR"}}).languageCode() == "fr-FR");
    CHECK(localeOf({{"LANG", "de_AT"}, {"LC_MESSAGES", "fr_FR"}, {"LC_ALL", "it_IT"}}).languageCode() == "it-IT");
    CHECK(localeOf({{"LANG", "de_AT"}, {"LANGUAGE", "pt_BR:en"}}).languageCode() == "pt-BR");
    CHECK(localeOf({{"LANG", "C"}, {"LANGUAGE", "pt_BR:en"}}).languageCode() == "en");
}

TEST_CASE("installed locales decide week and units and separators and clock") {
    const std::pair<const char*, const char*> expectations[]{
        {"de_DE.UTF-8", "2: 10.000,5 metric 24h"},
        {"en_US.UTF-8", "1: 10,000.5 unitedStates 12h"},
        {"en_GB.UTF-8", "2: 10,000.5 unitedKingdom 24h"},
        {"ar_EG.UTF-8", "7: 10,000.5 metric 12h"},
    };
    for (const auto& [name, expected] : expectations) {
        if (isInstalled(name)) CHECK(habits(localeOf({{"LANG", name}})) == expected);
    }
}

TEST_CASE(
    "what is known of a language is what its installed locales say, and holds where they are not installed") {
    for (const char* name : {"de_DE", "de_AT", "de_CH", "de_LI", "de_LU", "de_BE", "en_US", "en_GB", "en_AU",
                             "en_CA", "en_IE", "en_NZ", "en_ZA", "en_SG", "en_DK"}) {
        CAPTURE(name);
        const std::string locale = std::string(name) + ".UTF-8";
        if (!isInstalled(locale)) continue;
        const std::string notInstalled = std::string(name) + ".no-such-charset";
        REQUIRE(newlocale(LC_ALL_MASK, notInstalled.c_str(), nullptr) == nullptr);
        CHECK(habits(localeOf({{"LANG", notInstalled}})) == habits(localeOf({{"LANG", locale}})));
    }
    CHECK(habits(localeOf({{"LANG", "C.UTF-8"}, {"LANGUAGE", "de"}})) == "2: 10.000,5 metric 24h");
    CHECK(habits(localeOf({{"LANG", "C.UTF-8"}, {"LANGUAGE", "en_US"}})) == "2: 10,000.5 metric 12h");
    CHECK(habits(localeOf({{"LANG", "C"}, {"LANGUAGE", "de"}})) == "2: 10,000.5 metric 24h");
}

TEST_CASE("a chosen language brings its numbers and its clock, and leaves week and units to the region") {
    const GlibcLocale region = localeOf({{"LANG", "en_US.UTF-8"}});
    const auto shown = [&](std::string_view code) {
        const LanguageLocale locale(region, code);
        return locale.groupingSeparator() + locale.decimalSeparator() +
               (locale.usesTwelveHourClock() ? "12" : "24") + std::to_string(locale.firstWeekday());
    };
    CHECK(shown("") == ",.121");
    CHECK(shown("de") == ".,241");
    CHECK(shown("en-GB") == ",.241");
    CHECK(shown("fr") == ",.121");
}

TEST_CASE("each category may have a locale of its own") {
    if (!isInstalled("de_DE.UTF-8") || !isInstalled("en_US.UTF-8")) return;
    const auto mixed =
        localeOf({{"LANG", "en_US.UTF-8"}, {"LC_TIME", "de_DE.UTF-8"}, {"LC_MEASUREMENT", "de_DE.UTF-8"}});
    CHECK(habits(mixed) == "2: 10,000.5 metric 24h");
}
