#include "cli/run_pedvar.h"
#include "cli/sample_data.h"
#include "linux/system/nlohmann_json_parser.h"
#include "linux/system/sqlite_document_parts.h"
#include "recording/session_history.h"
#include "support/sample_sessions.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace pedvar {
namespace {

struct BadInput {
    BadInput() {
        writeSampleStore(folder / "data");
        writeFile(folder / "notes.txt", "Nothing to see here.\n");
    }

    /// Runs twice: standard output has the document that names the kind, or nothing while standard error has
    /// `words`.
    void refused(std::vector<std::string> arguments, int exitCode, const std::string& kind,
                 const std::string& words) {
        CAPTURE(arguments.front());
        CAPTURE(words);
        arguments.insert(arguments.end(), {"--data", data});
        const Outcome screen = runPedvar(folder.path(), arguments);
        CHECK(screen.exitCode == exitCode);
        CHECK(screen.output == "");
        CHECK_MESSAGE(screen.errors.contains(words), screen.errors);
        CHECK(std::ranges::count(screen.errors, '\n') == 1);

        arguments.emplace_back("--json");
        const Outcome document = runPedvar(folder.path(), arguments);
        CHECK(document.exitCode == exitCode);
        CHECK(document.errors == "");
        const auto parsed = NlohmannJsonParser().parse(document.output);
        REQUIRE(parsed.has_value());
        const JsonValue* error = parsed->member("error");
        REQUIRE(error);
        CHECK(error->member("kind")->value == JsonValue{kind}.value);
        CHECK(error->member("message")->as<std::string>()->contains(words));
    }

    /// All files below the folder and what is in them.
    std::map<std::string, std::string> everything() const {
        std::map<std::string, std::string> result;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
            result[entry.path().string()] = entry.is_regular_file() ? readFile(entry.path()) : "";
        }
        return result;
    }

    TemporaryFolder folder;
    std::string data = "data";
};

TEST_CASE_FIXTURE(BadInput, "wrong usage ends with 2, names what would be right, and changes nothing") {
    const auto before = everything();
    refused({"walk"}, 2, "usage", "walk");
    CHECK(runPedvar(folder.path(), {"today", "--json=1"}).exitCode == 2);
    refused({"settings", "colour"}, 2, "usage", "no setting \"colour\"");
    refused({"settings", "colour", "red"}, 2, "usage", "no setting \"colour\"");
    refused({"settings", "theme", "purple"}, 2, "usage", "light, dark, system");
    refused({"settings", "colorOutput", "sometimes"}, 2, "usage", "automatic, always, never");
    refused({"settings", "hapticFeedbackEnabled", "yes"}, 2, "usage", "true, false");
    for (const char* share : {"1.01", "-0.1", "nan", "0x1", "", "0,5,5", "0,", "1,000"}) {
        refused({"settings", "customStepColorRed", share}, 2, "usage", "from 0 to 1");
    }
    for (const char* goal : {"0", "-5", "1000001", "8k", "1e4", "99999999999999999999"}) {
        refused({"goal", goal}, 2, "usage", "from 1 to 1,000,000");
    }
    for (const char* amount : {"0", "5001", "0.5", "nan", "", "ml", "170floz", "1,000", "1.000", "1,000.5"}) {
        refused({"water", amount}, 2, "usage", "no amount to drink");
    }
    refused({"water", "-250"}, 2, "usage", "-250");
    refused({"water", "2", "cups"}, 2, "usage", "valid: ml, floz");
    refused({"water", "--drink", "beer"}, 2, "usage", "water, sparklingWater, tea");
    refused({"water", "--container", "vase"}, 2, "usage", "no container \"vase\"");
    refused({"water", "250", "--undo"}, 2, "usage", "one at a time");
    refused({"water", "--undo"}, 1, "failed", "no drink to take back");
    refused({"containers", "vase", "--default"}, 2, "usage", "no container \"vase\"");
    refused({"containers", "Glass", "0"}, 2, "usage", "no amount to drink");
    refused({"containers", "Glass", "--rename", "cup"}, 2, "usage", "a container \"cup\" already");
    refused({"containers", "Glass"}, 2, "usage", "--remove");
    refused({"settings", "waterGoalMilliliters", "0"}, 2, "usage", "from 500 to 10000");
    refused({"awards", "--category", "colors"}, 2, "usage", "steps, distance, streaks, special");
    refused({"day", "2024-02-30"}, 2, "usage", "2024-05-01");
    refused({"week", "tomorrow"}, 2, "usage", "2024-05-01");
    refused({"month", "2024-13"}, 2, "usage", "2024-05");
    for (const char* age : {"-1", "131", "old"}) {
        refused({"rank", "--age", age}, 2, "usage", "from 0 to 130");
        refused({"profile", "age", age}, 2, "usage", "from 0 to 130");
    }
    refused({"rank", "--steps", "-1"}, 2, "usage", "from 0 to");
    refused({"compare", "sleep"}, 2, "usage", "steps, distance, calories, activeMinutes, flights");
    refused({"compare", "--date", "9999-01-01"}, 2, "usage", "in the future");
    refused({"calendar", "2024-00"}, 2, "usage", "2024-05");
    refused({"calendar", "9999-01", "steps"}, 2, "usage", "in the future");
    refused({"calendar", "steps", "flights"}, 2, "usage", "one too many");
    refused({"recap", "2024-13"}, 2, "usage", "2024-05");
    refused({"recap", "9999-12"}, 2, "usage", "in the future");
    refused({"weight", "70,500"}, 2, "usage", "no number like 72.5; valid: 1 to 1,000 kg");
    for (const char* weight : {"0", "-3", "1001", "nan", "heavy"}) {
        refused({"weight", weight}, 2, "usage", "valid: 1 to 1,000 kg");
        refused({"profile", "targetWeight", weight}, 2, "usage", "above 0, up to 1000");
    }
    refused({"weight", "70", "cm"}, 2, "usage", "kg, lb");
    refused({"height", "119", "in"}, 2, "usage", "valid: 12 to 118 in");
    refused({"height", "1,80"}, 2, "usage", "valid: 30 to 300 cm");
    refused({"profile", "gender", "no"}, 2, "usage", "male, female, other, none");
    refused({"profile", "dailyStepGoal", "0"}, 2, "usage", "from 1 to 1,000,000");
    refused({"profile", "ageSource", "manual"}, 2, "usage", "cannot be set");
    refused({"profile", "name", "Ada"}, 2, "usage", "no \"name\"");
    refused({"weight", "70", "--now", "2024-05-01"}, 2, "usage", "--now");
    refused({"today", "--now", "noon"}, 2, "usage", "2024-05-01T18:30");
    refused({"sources", "--order", "Nobody"}, 2, "usage", "Nobody");
    for (const char* writing : {"import", "goal"}) {
        refused({writing, "9000", "--now", "2024-05-01"}, 2, "usage", "--now");
    }
    CHECK(everything() == before);
}

TEST_CASE_FIXTURE(BadInput, "what is no export fails and leaves the store as it was") {
    const auto before = everything();
    refused({"import", "missing.zip"}, 1, "fileNotFound", "missing.zip");
    refused({"import", "notes.txt"}, 1, "notAnExport", "notes.txt");
    CHECK(everything() == before);
}

TEST_CASE_FIXTURE(BadInput, "routes that are none fail, say what they look like, and become no activity") {
    const std::string track = sampleTrack();
    std::string timeless = track;
    for (std::size_t at = 0; (at = timeless.find("<time>", at)) != std::string::npos;) timeless.erase(at, 37);
    writeFile(folder / "timeless.gpx", timeless);
    writeFile(folder / "half.gpx", track.substr(0, track.size() / 2));
    writeFile(folder / "page.gpx", "<!DOCTYPE html><html><body>Sign in</body></html>");
    writeFile(folder / "old_page.gpx", "<html><body>Sign in<br></body></html>");
    writeFile(folder / "packed.gpx", "\x1F\x8B\x08 something packed");
    writeFile(folder / "empty.gpx", "<gpx version=\"1.1\"><trk><name>Nowhere</name></trk></gpx>");
    const auto before = everything();
    for (const std::vector<std::string>& with :
         std::vector<std::vector<std::string>>{{"route"}, {"import", "--as", "walk"}}) {
        const auto refusedFile = [&](const char* file, const char* kind, const char* words) {
            std::vector<std::string> arguments = with;
            arguments.insert(arguments.begin() + 1, file);
            refused(arguments, 1, kind, words);
        };
        refusedFile("missing.gpx", "fileNotFound", "could not be found");
        refusedFile("half.gpx", "invalidFormat", "line ");
        refusedFile("page.gpx", "noTrackPoints", "a document of \"html\"");
        refusedFile("old_page.gpx", "invalidFormat", "a web page");
        refusedFile("packed.gpx", "invalidFormat", "a gzip archive");
        refusedFile("notes.txt", "invalidFormat", "notes.txt");
        refusedFile("empty.gpx", "noTrackPoints", "contains no track points");
    }
    refused({"route", "data"}, 1, "unreadable", "\"data\" is not a file");
    refused({"import", "timeless.gpx", "--as", "walk"}, 1, "noTimes", "points have a usable time");
    refused({"import", "timeless.gpx"}, 2, "usage", "add --as walk, run, hike or cycle");
    refused({"import", "timeless.gpx", "--as", "swim"}, 2, "usage", "walk, run, hike, cycle");
    CHECK(everything() == before);
}

TEST_CASE_FIXTURE(BadInput, "an activity that is not meant clearly is not touched, nor a file that is there") {
    refused({"activity", "last"}, 1, "unknownActivity", "no activities yet");
    SqliteDefaults defaults(folder / "data", SqliteDefaults::Access::readWrite);
    SqliteDocumentParts documents(defaults);
    SessionHistory history(documents);
    REQUIRE((history.add(sampleSession(0x1A)) && history.add(sampleSession(0x1B, 0))));
    const auto before = everything();
    refused({"activity", "7"}, 1, "unknownActivity", "pedvar activities");
    refused({"activity", "0000001", "--delete", "--yes"}, 1, "ambiguousActivity", "2 activities");
    refused({"activity", "0000001a", "--delete"}, 2, "usage", "--yes");
    refused({"activity", "0000001a", "--delete", "--type", "run"}, 2, "usage", "--type");
    refused({"activity", "0000001a", "--type", "swim"}, 2, "usage", "walk, run, hike, cycle");
    refused({"export", "0000001b"}, 1, "noRoute", "without a route");
    refused({"export", "0000001a", "--hide-home", "far"}, 2, "usage", "metres");
    refused({"export", "0000001a", "--hide-home", "1.000"}, 2, "usage", "metres");
    refused({"export", "0000001a", "--hide-home", "100"}, 1, "noRoute", "nothing is left");
    refused({"export", "0000001a", "-o", "notes.txt"}, 1, "fileExists", "--force");
    refused({"export", "0000001a", "-o", "data", "--force"}, 1, "unwritable", "\"data\" cannot be written");
    refused({"export", "0000001a", "-o", "nowhere/walk.gpx"}, 1, "unwritable", "nowhere/walk.gpx");
    CHECK(everything() == before);
}

TEST_CASE_FIXTURE(BadInput, "a truncated export is taken over as far as it goes") {
    writeFile(folder / "export.xml", sampleExport().substr(0, sampleExport().find("10:00:00")));
    const Outcome outcome = runPedvar(folder.path(), {"import", "export.xml", "--json", "--data", "new"});
    CHECK(outcome.exitCode == 1);
    const auto document = NlohmannJsonParser().parse(outcome.output);
    REQUIRE(document.has_value());
    CHECK(document->member("added")->integer() == 2);
    REQUIRE(document->member("error"));
    CHECK(document->member("error")->member("kind")->value == JsonValue{"truncated"}.value);
}

TEST_CASE_FIXTURE(BadInput, "a store that is something else is refused by all and kept") {
    data = "foreign";
    std::filesystem::create_directory(folder / "foreign");
    const std::string letter(5'000, 'x');
    writeFile(folder / "foreign/health.sqlite", letter);
    for (const char* command : {"today", "week", "streaks", "sources"}) {
        refused({command}, 1, "notAStore", "health.sqlite");
    }
    refused({"goal", "8000"}, 1, "notAStore", "health.sqlite");
    CHECK(readFile(folder / "foreign/health.sqlite") == letter);
    writeFile(folder / "data/defaults.sqlite", letter);
    data = "data";
    refused({"today"}, 1, "notAStore", "defaults.sqlite");
    CHECK(readFile(folder / "data/defaults.sqlite") == letter);
    const Outcome doctor = runPedvar(folder.path(), {"doctor", "--data", "foreign"});
    CHECK(doctor.exitCode == 1);
    CHECK(doctor.output.contains("health.sqlite"));
}

TEST_CASE_FIXTURE(BadInput, "a folder that cannot be made is one clear message") {
    data = "notes.txt/data";
    refused({"goal", "8000"}, 1, "unwritable", "notes.txt/data");
    CHECK(readFile(folder / "notes.txt") == "Nothing to see here.\n");
}

TEST_CASE_FIXTURE(BadInput, "looking creates nothing and changes nothing") {
    std::filesystem::permissions(folder / "data",
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    const auto before = everything();
    for (const char* place : {"data", "nowhere"}) {
        for (const std::vector<std::string>& command : std::vector<std::vector<std::string>>{{"today"},
                                                                                             {"day", "yesterday"},
                                                                                             {"week"},
                                                                                             {"month"},
                                                                                             {"streaks"},
                                                                                             {"pace"},
                                                                                             {"rank"},
                                                                                             {"compare"},
                                                                                             {"calendar"},
                                                                                             {"weight"},
                                                                                             {"profile"},
                                                                                             {"recap", "--json"},
                                                                                             {"goal"},
                                                                                             {"settings"},
                                                                                             {"sources"},
                                                                                             {"activities"}}) {
            std::vector<std::string> arguments{"--data", place};
            arguments.insert(arguments.end(), command.begin(), command.end());
            const Outcome outcome = runPedvar(folder.path(), arguments);
            CHECK(outcome.exitCode == 0);
            CHECK(outcome.errors == "");
        }
    }
    CHECK(everything() == before);
    std::filesystem::permissions(folder / "data", std::filesystem::perms::owner_all);
}

}  // namespace
}  // namespace pedvar
