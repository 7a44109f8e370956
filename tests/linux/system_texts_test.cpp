#include "linux/system/gettext_texts.h"
#include "linux/system/message_file.h"
#include "support/environment.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <list>
#include <map>

using namespace pedvar;

namespace {

/// An environment in which only these variables of languages are set.
std::list<EnvironmentVariable> environment(const std::map<std::string, std::string>& variables) {
    std::list<EnvironmentVariable> result;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE"}) {
        const auto value = variables.find(name);
        result.emplace_back(name, value == variables.end() ? std::nullopt : std::optional(value->second));
    }
    return result;
}

std::string distanceIn(const std::map<std::string, std::string>& variables) {
    const auto surroundings = environment(variables);
    return GettextTexts(PEDVAR_CATALOGUES).text("Distance");
}

}  // namespace

TEST_CASE("the environment names the language, whether its locale is installed or not") {
    CHECK(distanceIn({{"LANG", "de_DE.UTF-8"}}) == "Strecke");
    CHECK(distanceIn({{"LANG", "de_QQ"}}) == "Strecke");
    CHECK(distanceIn({{"LANG", "fr_FR.UTF-8"}}) == "Distance");
    CHECK(distanceIn({{"LANG", "en_US.UTF-8"}, {"LC_MESSAGES", "de_AT.UTF-8"}}) == "Strecke");
    CHECK(distanceIn({{"LANG", "de_DE.UTF-8"}, {"LC_ALL", "C"}}) == "Distance");
    CHECK(distanceIn({{"LANG", "en_US.UTF-8"}, {"LANGUAGE", "fr:de:en"}}) == "Strecke");
    CHECK(distanceIn({{"LANG", "de_DE.UTF-8"}, {"LANGUAGE", "en:de"}}) == "Distance");
    CHECK(distanceIn({{"LANG", "C.UTF-8"}, {"LANGUAGE", "de"}}) == "Strecke");
    CHECK(distanceIn({{"LANG", "C"}, {"LANGUAGE", "de"}}) == "Distance");
    CHECK(distanceIn({{"LANG", "C.UTF-8"}, {"LANGUAGE", "/:..:../de:_"}}) == "Distance");
    CHECK(distanceIn({}) == "Distance");
}

TEST_CASE("a language is changed between two texts, and numbers have the forms of the language") {
    const auto surroundings = environment({{"LANG", "de_DE.UTF-8"}});
    GettextTexts texts(PEDVAR_CATALOGUES);
    const auto days = [&](std::int64_t count) { return texts.plural("{} day", "{} days", count); };
    CHECK(texts.text("Distance") == "Strecke");
    CHECK(days(0) + days(1) + days(2) + days(-1) == "{} Tage{} Tag{} Tage{} Tag");
    texts.speak("en-GB");
    CHECK(texts.text("Distance") == "Distance");
    CHECK(days(0) + days(1) + days(2) == "{} days{} day{} days");
    texts.speak("de");
    CHECK(texts.text("Distance") == "Strecke");
    CHECK(texts.text("No such text") == "No such text");
    CHECK(texts.text("") == "");
    texts.speak("ja");
    CHECK(texts.text("Distance") == "Distance");
    texts.speak("");
    CHECK(texts.text("Distance") == "Strecke");
}

TEST_CASE("a damaged catalogue counts as none") {
    const std::string sound = readFile(std::string(PEDVAR_CATALOGUES) + "/de/LC_MESSAGES/pedvar.mo");
    REQUIRE(isSoundCatalogue(sound));
    CHECK(!isSoundCatalogue(std::string_view()));
    for (std::size_t size = 0; size < sound.size(); size += sound.size() / 97) {
        CHECK(!isSoundCatalogue(std::string_view(sound).substr(0, size)));
    }
    // The magic number, the tables' size and places, the size of a table of hashes, a text's length and place.
    for (const std::size_t place : {0u, 11u, 15u, 19u, 20u, 31u, 35u}) {
        std::string damaged = sound;
        damaged[place] = '\x7F';
        CAPTURE(place);
        CHECK(!isSoundCatalogue(damaged));
    }
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder / "de/LC_MESSAGES");
    writeFile(folder / "de/LC_MESSAGES/pedvar.mo", std::string_view(sound).substr(0, sound.size() / 2));
    GettextTexts texts(folder.path());
    texts.speak("de");
    CHECK(texts.text("Distance") == "Distance");
    CHECK(texts.plural("{} day", "{} days", 2) == "{} days");
}
