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
    check("streaks", with(look, {"streaks"}));
    check("awards", with(look, {"awards", "--category", "steps"}));
    check("water", with(look, {"water"}));
    check("containers", with(look, {"containers"}));
    check("goal", with(look, {"goal"}));
    check("settings", with(look, {"settings"}));
    check("setting", with(look, {"settings", "theme"}));
    check("sources", with(look, {"sources"}));
    check("doctor", with(look, {"doctor"}));
    check("blocked", {"--data", "data", "--now", "2024-08-01", "today"});
}

TEST_CASE_FIXTURE(Golden, "an empty store says how to begin, and an import what it did") {
    check("help", {"--help"});
    check("today_empty", {"--data", "data", "--now", sampleNow, "today"});
    check("sources_empty", {"--data", "data", "sources"});
    const Outcome screen = runPedvar(folder.path(), {"import", "export.xml", "--data", "data"});
    CHECK(screen.exitCode == 0);
    checkGolden("import.txt", screen.output);
    const Outcome document = runPedvar(folder.path(), {"import", "export.xml", "--data", "other", "--json"});
    CHECK(document.exitCode == 0);
    checkGolden("import.json", document.output);
}

TEST_CASE_FIXTURE(Golden, "a terminal without UTF-8 gets the same screen in ASCII") {
    writeSampleStore(folder / "data");
    const Arguments arguments{"--data", "data", "--now", sampleNow, "day", "yesterday"};
    const Outcome screen = runPedvar(folder.path(), arguments, {"LC_ALL=C"});
    checkGolden("day_ascii.txt", screen.output);
    CHECK(screen.output.find_first_of("\xE2\xC2") == std::string::npos);
}

}  // namespace
}  // namespace pedvar
