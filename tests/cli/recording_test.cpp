#include "cli/run_pedvar.h"
#include "cli/sample_data.h"

#include <doctest/doctest.h>

#include <csignal>

namespace pedvar {
namespace {

constexpr const char* nowhere = "localhost:1";  // where no gpsd listens

std::string lastLine(const std::string& text) {
    return text.substr(text.rfind('\n', text.size() - 2) + 1);
}

struct Recording {
    Recording() { writeFile(folder / "walk.gpx", sampleTrack()); }

    Outcome run(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--data", "data"});
        return runPedvar(folder.path(), arguments);
    }
    RunningPedvar recording(const std::string& type) {
        return {folder.path(), {"record", type, "--gpsd", nowhere, "--json", "--data", "data"}};
    }
    std::size_t activities() {
        const std::string list = run({"activities", "--json"}).output;
        std::size_t count = 0;
        for (auto at = list.find("\"id\""); at != std::string::npos; at = list.find("\"id\"", at + 1)) ++count;
        return count;
    }

    TemporaryFolder folder;
};

TEST_CASE_FIXTURE(Recording,
                  "a replay shows what the recorder makes of a track, and keeps it only when asked to") {
    const Outcome screen = run({"record", "hike", "--replay", "walk.gpx"});
    CHECK(screen.errors == "");
    checkGolden("replay.txt", screen.output);
    const Outcome document = run({"record", "hike", "--replay", "walk.gpx", "--json"});
    CHECK(document.errors == "");
    checkGolden("replay.json", lastLine(document.output));
    CHECK(activities() == 0);

    std::string track = sampleTrack();  // its first point behind all others
    const auto first = track.find("<trkpt"), second = track.find("<trkpt", first + 1);
    const std::string point = track.substr(first, second - first);
    track.erase(first, point.size());
    track.insert(track.find("</trkseg>"), point);
    writeFile(folder / "jumbled.gpx", track);
    const auto sinceType = [](const Outcome& outcome) {
        return outcome.output.substr(outcome.output.rfind("\"activityType\""));
    };
    CHECK(sinceType(run({"record", "hike", "--replay", "jumbled.gpx", "--json"})) == sinceType(document));

    std::filesystem::create_directory(folder / "data" / "replay");
    writeFile(folder / "data" / "replay" / "defaults.sqlite", "not a database");
    const std::string saved = run({"record", "hike", "--replay", "walk.gpx", "--save"}).output;
    CHECK(saved == screen.output);
    const Outcome again = run({"record", "hike", "--replay", "walk.gpx", "--save"});
    CHECK(again.output == saved);
    CHECK(again.errors == "pedvar: This recording is in the history already.\n");
    CHECK(activities() == 1);
    CHECK(!std::filesystem::exists(folder / "data" / "replay"));

    run({"activity", "last", "--delete", "--yes"});
    run({"import", "walk.gpx", "--as", "walk"});
    CHECK(run({"record", "hike", "--replay", "walk.gpx", "--save"}).errors == again.errors);
    CHECK(activities() == 1);
}

TEST_CASE_FIXTURE(Recording, "a replay that was killed goes on where its last checkpoint is") {
    for (const int number : {SIGKILL, SIGHUP}) {
        RunningPedvar replay(folder.path(), {"record", "walk", "--replay", "walk.gpx", "--speed", "10", "--json",
                                             "--data", "data"});
        REQUIRE(replay.says(std::regex(R"("duration":([6-9]|[1-9][0-9]))")));
        replay.signal(number);
        CHECK(replay.finish().exitCode == (number == SIGKILL ? -SIGKILL : 1));
    }
    const Outcome rest = run({"record", "walk", "--replay", "walk.gpx", "--json"});
    CHECK(rest.exitCode == 0);
    CHECK(rest.errors.starts_with("pedvar: Going on with the replay of this file after 0:"));
    CHECK(!rest.output.contains("\"duration\":5,"));
    CHECK(lastLine(rest.output).contains("\"duration\":3240,"));
}

TEST_CASE_FIXTURE(Recording, "a recording survives signals and kills, alone in its folder, until it is finished") {
    {
        RunningPedvar first = recording("walk");
        REQUIRE(first.says("\"state\":\"recording\""));
        CHECK(first.says("No gpsd answers at localhost:1"));
        const Outcome second = run({"record", "walk"});
        CHECK(second.exitCode == 1);
        CHECK(
            second.errors.starts_with("pedvar: Process " + std::to_string(first.process()) + " records already"));
        first.signal(SIGTERM);
        const Outcome left = first.finish();
        CHECK(left.exitCode == 0);
        CHECK(lastLine(left.output).starts_with("{\"state\":\"left\""));
    }
    CHECK(run({"record", "run"}).errors.contains("(Walking) is not finished"));
    RunningPedvar second = recording("walk");
    REQUIRE(second.says("\"state\":\"recording\""));
    CHECK(second.says("Going on with the recording of "));
    second.signal(SIGKILL);
    CHECK(second.finish().exitCode == -SIGKILL);
    CHECK(activities() == 0);

    CHECK(run({"record", "--finish", "--json"}).output.contains("\"activityType\":\"walk\""));
    CHECK(activities() == 1);
    CHECK(run({"record", "--finish"}).errors == "pedvar: There is no recording that was left.\n");
}

TEST_CASE_FIXTURE(Recording, "what makes no sense is refused with what would") {
    writeFile(folder / "timeless.gpx",
              R"(<gpx><trk><trkseg><trkpt lat="1" lon="1"/><trkpt lat="1.001" lon="1"/></trkseg></trk></gpx>)");
    const struct {
        std::vector<std::string> arguments;
        int exitCode;
        std::string message;
    } cases[] = {
        {{"record"}, 2, "What is recorded? One of walk, run, hike, cycle."},
        {{"record", "swim"}, 2, "\"swim\" is no kind of activity; valid: walk, run, hike, cycle."},
        {{"record", "walk", "--gpsd", "host:99999"}, 2, "is no HOST:PORT"},
        {{"record", "walk", "--gpsd", "::1"}, 2, "is no HOST:PORT"},
        {{"record", "walk", "--save"}, 2, "--save needs --replay"},
        {{"record", "walk", "--replay", "walk.gpx", "--speed", "2"}, 2, "valid: 1, 10, max"},
        {{"record", "walk", "--replay", "none.gpx"}, 1, "\"none.gpx\""},
        {{"record", "walk", "--replay", "timeless.gpx"}, 1, "points have a usable time"},
        {{"record", "walk", "--finish"}, 2, "--finish needs no kind of activity."},
        {{"record", "--finish", "--gpsd", "host"}, 2, "--finish and --gpsd do not go together"},
    };
    for (const auto& [arguments, exitCode, message] : cases) {
        CAPTURE(arguments.back());
        const Outcome outcome = run(arguments);
        CHECK(outcome.exitCode == exitCode);
        CHECK(outcome.errors.contains(message));
    }
}

}  // namespace
}  // namespace pedvar
