#include "cli/run_pedvar.h"
#include "cli/sample_data.h"
#include "linux/backup/data_folder.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

namespace pedvar {
namespace {

struct KeepingData {
    Outcome run(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--data", "data", "--json"});
        return runPedvar(folder.path(), arguments);
    }
    std::string goal() { return run({"goal"}).output; }

    TemporaryFolder folder;
};

TEST_CASE_FIXTURE(KeepingData, "a backup brings the data back, and what was there is kept aside") {
    writeSampleStore(folder / "data");
    run({"goal", "8000"});
    const std::string week = run({"week", "2024-04-30"}).output;
    CHECK(run({"backup", "kept.zip"}).exitCode == 0);
    CHECK(run({"backup", "kept.zip"}).output.contains(R"("kind":"fileExists")"));
    run({"goal", "9000"});
    CHECK(run({"backup", "kept.zip", "--force"}).exitCode == 0);
    run({"goal", "5000"});
    const Outcome restored = run({"restore", "kept.zip"});
    CHECK(restored.output ==
          "{\"file\":\"kept.zip\",\"keptAside\":\"" + (folder / "data.before-restore").string() + "\"}\n");
    CHECK(goal() == "{\"dailyGoal\":9000}\n");
    CHECK(run({"week", "2024-04-30"}).output == week);
    CHECK(runPedvar(folder.path(), {"goal", "--data", "data.before-restore"}).output.contains("5,000"));
    CHECK(runPedvar(folder.path(), {"restore", "kept.zip", "--data", "new/"}).exitCode == 0);
    CHECK(runPedvar(folder.path(), {"goal", "--data", "new"}).output.contains("9,000"));
}

TEST_CASE_FIXTURE(KeepingData, "what cannot be restored changes nothing, and leaves nothing behind") {
    run({"goal", "8000"});
    run({"backup", "kept.zip"});
    writeFile(folder / "cut.zip", readFile(folder / "kept.zip").substr(0, 1500));
    CHECK(run({"restore", "cut.zip"}).output.contains(R"("kind":"damaged")"));
    CHECK(run({"restore", "none.zip"}).output.contains(R"("kind":"fileNotFound")"));
    {
        const FolderUse recording = FolderUse::among(folder / "data");
        CHECK(run({"restore", "kept.zip"}).output.contains(R"("kind":"busy")"));
    }
    CHECK(runPedvar(folder / "data", {"restore", "../kept.zip", "--data", "."}).exitCode == 1);
    CHECK(run({"backup", "data/defaults.sqlite", "--force"}).output.contains(R"("kind":"unwritable")"));
    CHECK(run({"export-days", "data/defaults.sqlite", "--force"}).exitCode == 1);
    CHECK(goal() == "{\"dailyGoal\":8000}\n");
    int entries = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) entries += entry.exists() ? 1 : 0;
    CHECK(entries == 3);  // the data and two archives
    CHECK(runPedvar(folder.path(), {"backup", "b.zip", "--data", "nothing"}).exitCode == 1);
}

TEST_CASE_FIXTURE(KeepingData, "settings that cannot be read do not keep a backup from being restored") {
    run({"goal", "8000"});
    run({"backup", "kept.zip"});
    writeFile(folder / "data/defaults.sqlite", "damaged");
    CHECK(run({"goal"}).exitCode == 1);
    CHECK(run({"restore", "kept.zip"}).exitCode == 0);
    CHECK(goal() == "{\"dailyGoal\":8000}\n");
}

TEST_CASE_FIXTURE(KeepingData, "the days become a table, which replaces no file unasked") {
    writeSampleStore(folder / "data");
    const std::vector<std::string> words{"export-days", "days.csv", "--now", sampleNow};
    CHECK(run(words).output == "{\"file\":\"days.csv\",\"days\":24}\n");
    checkGolden("days.csv", readFile(folder / "days.csv"));
    CHECK(run(words).output.contains(R"("kind":"fileExists")"));
    writeFile(folder / "days.csv", "");
    CHECK(run({"export-days", "days.csv", "--now", sampleNow, "--force"}).exitCode == 0);
    CHECK(readFile(folder / "days.csv").starts_with("date,steps,"));
}

TEST_CASE_FIXTURE(KeepingData, "the last import is taken back, and the widgets know") {
    writeFile(folder / "export.xml", sampleExport());
    run({"import", "export.xml"});
    const Outcome undone = run({"import", "--undo"});
    CHECK(undone.output.contains("\"samples\":2,\"workouts\":0,\"routes\":0,\"sources\":1"));
    CHECK(run({"day", "2024-05-01"}).output.contains("\"steps\":0,"));
    CHECK(run({"import", "--undo"}).exitCode == 1);
    CHECK(run({"import", "export.xml", "--undo"}).exitCode == 2);
    CHECK(run({"import", "--as", "walk", "--undo"}).exitCode == 2);
    CHECK(run({"import", "export.xml"}).output.starts_with("{\"read\":3,\"added\":2,"));
}

}  // namespace
}  // namespace pedvar
