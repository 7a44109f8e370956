#include "apps/cli/interruption.h"
#include "cli/run_pedvar.h"
#include "cli/sample_data.h"
#include "linux/system/sqlite_defaults.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <csignal>

namespace pedvar {
namespace {

struct Writing {
    Outcome run(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--data", "data"});
        Outcome outcome = runPedvar(folder.path(), arguments);
        CHECK(outcome.errors == "");
        return outcome;
    }
    std::optional<std::int64_t> shared(std::string_view key) const {
        return SqliteDefaults(folder / "data", SqliteDefaults::Access::readOnly).shared()->integer(key);
    }

    TemporaryFolder folder;
};

TEST_CASE_FIXTURE(Writing, "a goal is kept and reaches the widgets") {
    CHECK(run({"goal", "8000"}).output == "The daily goal is now 8,000 steps.\n");
    CHECK(run({"goal", "--json"}).output == "{\"dailyGoal\":8000}\n");
    CHECK(shared("dailyGoal") == 8000);
    CHECK(shared("todaySteps") == 0);
}

TEST_CASE_FIXTURE(Writing, "a changed setting is kept and shows") {
    writeSampleStore(folder / "data");
    CHECK(run({"settings", "distanceUnit", "miles"}).output.contains("miles"));
    CHECK(run({"settings", "distanceUnit", "--json"}).output ==
          "{\"key\":\"distanceUnit\",\"value\":\"miles\"}\n");
    CHECK(run({"day", "2024-04-30"}).output.contains(" mi\n"));
    CHECK(run({"settings", "colorOutput", "always", "--json"}).output ==
          "{\"key\":\"colorOutput\",\"value\":\"always\"}\n");
    CHECK(run({"day", "2024-04-30"}).output.contains("\x1b["));
    CHECK(!run({"day", "2024-04-30", "--json"}).output.contains("\x1b["));
}

TEST_CASE_FIXTURE(Writing, "changing one setting keeps what the watch chose meanwhile") {
    CHECK(run({"settings", "theme", "light"}).exitCode == 0);
    SqliteDefaults defaults(folder / "data", SqliteDefaults::Access::readWrite);
    REQUIRE(defaults.write({{defaults.shared(), "distanceUnit", "mi"}}));
    CHECK(run({"settings", "theme", "dark"}).exitCode == 0);
    CHECK(run({"settings", "distanceUnit"}).output.contains("miles"));
}

TEST_CASE_FIXTURE(Writing, "importing again adds nothing, exactly the goal is met, and the age was taken over") {
    writeFile(folder / "export.xml", sampleExport());
    CHECK(
        run({"import", "export.xml", "--json"}).output.starts_with("{\"read\":3,\"added\":2,\"alreadyThere\":0,"));
    CHECK(
        run({"import", "export.xml", "--json"}).output.starts_with("{\"read\":3,\"added\":0,\"alreadyThere\":2,"));
    CHECK(run({"day", "2024-05-01"}).output.contains("1,600 steps"));
    CHECK(run({"goal", "1600"}).exitCode == 0);
    CHECK(
        run({"today", "--now", "2024-05-01", "--json"}).output.contains("\"goalMet\":true,\"currentStreak\":1,"));
    const SqliteDefaults defaults(folder / "data", SqliteDefaults::Access::readOnly);
    const auto metrics = defaults.standard().data("personalMetrics");
    REQUIRE(metrics);
    CHECK(metrics->bytes.contains("\"age\":"));
}

TEST_CASE_FIXTURE(Writing, "the order of sources decides who counts") {
    writeSampleStore(folder / "data");
    const Outcome before = run({"day", "2024-04-30", "--json"});
    const Outcome ordered = run({"sources", "--order", "Ada’s Phone"});
    CHECK(ordered.output.find("Phone") < ordered.output.find("Watch"));
    CHECK(run({"day", "2024-04-30", "--json"}).output != before.output);
}

TEST_CASE_FIXTURE(Writing, "what is stored is for its owner only") {
    run({"goal", "8000"});
    writeFile(folder / "export.xml", sampleExport());
    run({"import", "export.xml"});
    using std::filesystem::perms;
    CHECK(std::filesystem::status(folder / "data").permissions() == perms::owner_all);
    for (const auto& file : std::filesystem::directory_iterator(folder / "data")) {
        CAPTURE(file.path().string());
        CHECK(file.status().permissions() == (perms::owner_read | perms::owner_write));
    }
    CHECK(run({"doctor"}).exitCode == 0);
}

TEST_CASE_FIXTURE(Writing, "drinks are added, counted, listed and taken back") {
    CHECK(run({"water", "300"}).output.starts_with("Added: 300 ml of Water.\n\n300 ml"));
    CHECK(run({"water", "8floz", "--drink", "coffee"}).output.starts_with("Added: 237 ml of Coffee.\n"));
    CHECK(run({"water", "--container", "bottle", "--json"}).output.starts_with("{\"todayMilliliters\":1034.22"));
    const std::string history = run({"water", "--history", "--json"}).output;
    CHECK(
        history.contains("\"milliliters\":500,\"drink\":\"water\",\"waterMilliliters\":500,\"isInHealth\":true}"));
    CHECK(history.contains("\"lastAmountMilliliters\":500,\"days\":[{"));
    for (const char* taken : {"500 ml of Water", "237 ml of Coffee", "300 ml of Water"}) {
        CHECK(run({"water", "--undo"}).output.starts_with("Taken back: " + std::string(taken) + ".\n"));
    }
    CHECK(run({"water"}).output.starts_with("0 ml"));
    CHECK(run({"doctor"}).exitCode == 0);
}

TEST_CASE_FIXTURE(Writing, "containers are added, changed, renamed, made the default and removed") {
    run({"containers", "Mug", "12", "floz", "--drink", "tea"});
    run({"containers", "mug", "--rename", "Big Mug", "--default"});
    CHECK(
        run({"containers"})
            .output.contains("Big Mug                                        355 ml  Tea             default\n"));
    CHECK(run({"water", "--drink", "juice"}).output.starts_with("Added: 355 ml of Juice."));
    CHECK(!run({"containers", "Big Mug", "--remove"}).output.contains("default"));
    CHECK(run({"settings", "waterGoalMilliliters", "2500"}).exitCode == 0);
    CHECK(run({"water", "--json"}).output.contains("\"goalMilliliters\":2500,"));
    CHECK(run({"settings", "waterInHealth", "false"}).exitCode == 0);
    CHECK(run({"water", "250", "--json"}).output.contains("\"waterMilliliters\":250,\"isInHealth\":false}]"));
}

TEST_CASE("an interruption is remembered once and held back no longer afterwards") {
    const auto before = std::signal(SIGTERM, SIG_IGN);
    {
        const Interruption interruption;
        CHECK(!interruption.hasHappened());
        std::raise(SIGTERM);
        CHECK(interruption.hasHappened());
    }
    CHECK((std::signal(SIGTERM, before) == SIG_IGN));
    CHECK(!Interruption().hasHappened());
}

}  // namespace
}  // namespace pedvar
