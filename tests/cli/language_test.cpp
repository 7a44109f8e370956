#include "apps/cli/application.h"
#include "cli/run_pedvar.h"
#include "cli/sample_data.h"
#include "support/environment.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <string>
#include <vector>

namespace pedvar {
namespace {

using Arguments = std::vector<std::string>;

/// A locale of a territory that there is not, so that none is installed.
const std::string german = "de_QQ.UTF-8";

struct Languages {
    Languages() { writeSampleStore(folder / "data"); }

    Outcome run(const std::string& locale, const Arguments& arguments) const {
        Arguments words{"--data", "data", "--now", sampleNow};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return runPedvar(folder.path(), words, {"LC_ALL=" + locale});
    }
    std::string screen(const std::string& locale, const Arguments& arguments) const {
        const Outcome outcome = run(locale, arguments);
        CHECK(outcome.errors == "");
        CHECK(outcome.exitCode == 0);
        return outcome.output;
    }

    TemporaryFolder folder;
};

TEST_CASE_FIXTURE(Languages, "in German the screens read as a German expects them") {
    checkGolden("today_de.txt", screen(german, {"today"}));
    checkGolden("week_de.txt", screen(german, {"week"}));
    checkGolden("compare_de.txt", screen(german, {"compare", "distance", "--date", "yesterday"}));
    checkGolden("awards_de.txt", screen(german, {"awards"}));
    checkGolden("help_de.txt", screen(german, {"--help"}));
    checkGolden("import_help_de.txt", screen(german, {"import", "--help"}));
    CHECK(screen(german, {"week", "--json"}) == screen("C.UTF-8", {"week", "--json"}));
    CHECK(run(german, {"import", "nothing"}).errors ==
          "pedvar: --now ist zum Ansehen da; ein Befehl, der etwas ändert, lehnt es ab.\n");
    CHECK(run(german, {"wek"}).errors == "pedvar: Es gibt keinen Befehl „wek“; `pedvar --help` zählt sie auf.\n");
    CHECK(run("de_QQ", {"day"}).errors == "pedvar: DATUM fehlt; `pedvar --help` sagt mehr.\n");
}

TEST_CASE_FIXTURE(Languages, "the chosen language goes before that of the system, for help and errors too") {
    const std::string english = screen("C.UTF-8", {"streaks"});
    const auto choose = [&](const std::string& language) {
        return runPedvar(folder.path(), {"--data", "data", "settings", "appLanguage", language}).exitCode;
    };
    REQUIRE(choose("german") == 0);
    CHECK(screen("C.UTF-8", {"streaks"}) == screen(german, {"streaks"}));
    CHECK(screen("C.UTF-8", {"goal"}) == "10.000 Schritte am Tag\n");
    CHECK(screen("C.UTF-8", {"week", "--help"}).contains("Aufruf: pedvar week"));
    CHECK(run("C.UTF-8", {"day", "2024-13-01"}).errors.contains("ist kein Tag"));
    const auto inData = [&](Arguments words) {
        words.insert(words.end(), {"--data", "data"});
        return RunningPedvar(folder.path(), words);
    };
    CHECK(inData({"settings", "updateAddress", "http://127.0.0.1:1/"}).finish().exitCode == 0);
    CHECK(inData({"update", "--check"}).finish().errors.contains("nicht bekannt: Keine Verbindung zum Server\n"));
    CHECK(inData({"record", "walk", "--gpsd", "localhost:1"}).says("gpsd (keine Verbindung zu diesem Rechner"));
    CHECK(inData({"sources", "--order", "Uhr"}).finish().errors ==
          "pedvar: Keine Quelle heißt „Uhr“. Wähl eine von diesen: „Ada’s Watch“, „Ada’s Phone“.\n");
    CHECK(inData({"containers", "glas", "--rename", "flasche"}).finish().errors ==
          "pedvar: Ein Gefäß „flasche“ gibt es schon.\n");
    CHECK(inData({"containers", "glas", "--rename", "Krug"}).finish().output.contains("Krug "));
    REQUIRE(choose("english") == 0);
    CHECK(screen(german, {"streaks"}) == english);
    REQUIRE(choose("japanese") == 0);
    CHECK(screen("C.UTF-8", {"streaks"}) == english);
}

TEST_CASE_FIXTURE(Languages, "a process that runs for long follows a change of the language") {
    const EnvironmentVariable locale("LC_ALL", "C.UTF-8");
    const EnvironmentVariable language("LANGUAGE", std::nullopt);  // in which gettext is told of it
    GlobalOptions options;
    options.dataFolder = (folder / "data").string();
    const auto opened = Application::open(options, Access::readOnly);
    REQUIRE(opened);
    Application& application = **opened;
    const Day day(std::chrono::year(2024) / 5 / 1);
    const Texts& text = application.text();
    CHECK(text("Distance") == "Distance");
    CHECK(application.screen().figures.longDate(day) == "Wednesday, 1 May 2024");
    REQUIRE(runPedvar(folder.path(), {"--data", "data", "settings", "appLanguage", "german"}).exitCode == 0);
    CHECK(application.text()("Distance") == "Strecke");
    CHECK(application.screen().figures.longDate(day) == "Mittwoch, 1. Mai 2024");
    CHECK(application.screen().figures.distance(12'345'600) == "12.345,6 km");
    CHECK(application.achievementTexts().formatDistance(21'097, DistanceUnit::kilometers) == "21,1");
}

}  // namespace
}  // namespace pedvar
