#include "cli/run_pedvar.h"
#include "cli/sample_data.h"
#include "linux/system/nlohmann_json_parser.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <string>
#include <vector>

namespace pedvar {
namespace {

using Arguments = std::vector<std::string>;

Arguments with(Arguments arguments, const Arguments& more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

struct Golden {
    Golden() { writeFile(folder / "export.xml", sampleExport()); }

    /// Compares the screen with golden/NAME.txt and the document with golden/NAME.json.
    void check(const std::string& name, const Arguments& arguments) {
        CAPTURE(name);
        const Outcome screen = runPedvar(folder.path(), arguments);
        CHECK(screen.exitCode == 0);
        CHECK(screen.errors == "");
        checkGolden(name + ".txt", screen.output);
        const Outcome document = runPedvar(folder.path(), with(arguments, {"--json"}));
        CHECK(document.exitCode == 0);
        CHECK(document.errors == "");
        CHECK(NlohmannJsonParser().parse(document.output).has_value());
        checkGolden(name + ".json", document.output);
    }

    TemporaryFolder folder;
};

TEST_CASE_FIXTURE(Golden, "each command that looks shows the sample store as it always did") {
    writeSampleStore(folder / "data");
    const Arguments look{"--data", "data", "--now", sampleNow};
    check("today", with(look, {"today"}));
    check("day", with(look, {"day", "yesterday"}));
    check("week", with(look, {"week"}));
    check("month", with(look, {"month", "2024-04"}));
    check("pace", with(look, {"pace"}));
    check("rank", with(look, {"rank"}));
    check("compare", with(look, {"compare", "distance", "--date", "yesterday"}));
    check("calendar", with(look, {"calendar", "2024-04"}));
    check("recap", with(look, {"recap"}));
    check("profile", with(look, {"profile"}));
    check("streaks", with(look, {"streaks"}));
    check("awards", with(look, {"awards", "--category", "steps"}));
    check("water", with(look, {"water"}));
    check("containers", with(look, {"containers"}));
    check("widget", with(look, {"widget"}));
    check("goal", with(look, {"goal"}));
    check("settings", with(look, {"settings"}));
    check("setting", with(look, {"settings", "theme"}));
    check("sources", with(look, {"sources"}));
    check("doctor", with(look, {"doctor"}));
    check("blocked", {"--data", "data", "--now", "2024-08-01", "today"});
}

TEST_CASE_FIXTURE(Golden, "weight and height show how they changed") {
    addBodySamples(folder / "data");
    check("weight", {"--data", "data", "--now", sampleNow, "weight"});
    check("height", {"--data", "data", "--now", sampleNow, "height"});
}

TEST_CASE_FIXTURE(Golden, "water shows what was drunk so far, and where the rest came from") {
    addDrinks(folder / "data");
    check("water_drinks", {"--data", "data", "--now", sampleNow, "water"});
    check("water_history", {"--data", "data", "--now", sampleNow, "water", "--history"});
}

TEST_CASE_FIXTURE(Golden, "in colours, today's curve, the own tier and the shades stand out") {
    writeSampleStore(folder / "data");
    REQUIRE(runPedvar(folder.path(), {"--data", "data", "settings", "colorOutput", "always"}).exitCode == 0);
    for (const std::string command : {"pace", "rank", "calendar", "compare"}) {
        const Outcome screen = runPedvar(folder.path(), {"--data", "data", "--now", sampleNow, command});
        checkGolden(command + "_colors.txt", screen.output);
    }
}

TEST_CASE_FIXTURE(Golden, "an empty store says how to begin, and an import what it did") {
    check("help", {"--help"});
    check("record_help", {"record", "--help"});
    check("today_empty", {"--data", "data", "--now", sampleNow, "today"});
    check("sources_empty", {"--data", "data", "sources"});
    const Outcome screen = runPedvar(folder.path(), {"import", "export.xml", "--data", "data"});
    CHECK(screen.exitCode == 0);
    checkGolden("import.txt", screen.output);
    const Outcome document = runPedvar(folder.path(), {"import", "export.xml", "--data", "other", "--json"});
    CHECK(document.exitCode == 0);
    checkGolden("import.json", document.output);
}

TEST_CASE_FIXTURE(Golden, "a track of another program becomes an activity, with pictures and as GPX again") {
    writeFile(folder / "walk.gpx", sampleTrack());
    check("activities_empty", {"--data", "data", "activities"});
    const Outcome screen = runPedvar(folder.path(), {"import", "walk.gpx", "--as", "hike", "--data", "data"});
    CHECK(screen.errors == "");
    checkGolden("import_gpx.txt", screen.output);
    const Outcome document =
        runPedvar(folder.path(), {"import", "walk.gpx", "--as", "hike", "--data", "data", "--json"});
    checkGolden("import_gpx.json", document.output);
    check("activities", {"--data", "data", "activities"});
    check("activity", {"--data", "data", "activity", "last"});
    check("route", {"--data", "data", "route", "walk.gpx"});
    check("export", {"--data", "data", "export", "last", "--hide-home", "1400"});
}

TEST_CASE_FIXTURE(Golden, "a terminal without UTF-8 gets the same screen in ASCII") {
    writeSampleStore(folder / "data");
    const Arguments look{"--data", "data", "--now", sampleNow};
    for (const Arguments& command : {Arguments{"day", "yesterday"}, {"pace"}, {"calendar"}, {"rank"}}) {
        const Outcome screen = runPedvar(folder.path(), with(look, command), {"LC_ALL=C"});
        checkGolden(command.front() + "_ascii.txt", screen.output);
        CHECK(screen.output.find_first_of("\xE2\xC2?") == std::string::npos);
    }
}

}  // namespace
}  // namespace pedvar
