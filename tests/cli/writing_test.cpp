#include "apps/cli/interruption.h"
#include "cli/run_pedvar.h"
#include "cli/sample_data.h"
#include "core/calendar.h"
#include "insights/pace_days.h"
#include "linux/health/health_administration.h"
#include "linux/health/health_database.h"
#include "linux/health/sample_writer.h"
#include "linux/system/absl_zone.h"
#include "linux/system/clocks.h"
#include "linux/system/nlohmann_json_parser.h"
#include "linux/system/sqlite_defaults.h"
#include "linux/system/sqlite_document_parts.h"
#include "recording/session_history.h"
#include "support/sample_sessions.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <csignal>

namespace pedvar {
namespace {

using namespace std::chrono_literals;

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
    void storeRecapMonth(const char* month) const {
        SqliteDefaults defaults(folder / "data", SqliteDefaults::Access::readWrite);
        REQUIRE(defaults.write({{&defaults.standard(), "monthlyRecapLastShownMonth", month}}));
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

TEST_CASE_FIXTURE(Writing, "weight, height and profile are kept, in the units that were typed") {
    CHECK(run({"weight", "160", "lb", "--json"}).output.starts_with("{\"current\":72.57477"));
    CHECK(run({"weight", "72.5"}).output.starts_with("Weight   72.5 kg\n"));
    CHECK(run({"weight", "72,25", "--json"}).output.starts_with("{\"current\":72.25,"));
    CHECK(run({"water", "250,6 ml"}).output.starts_with("Added: 251 ml of Water."));
    CHECK(run({"settings", "gpsHorizontalFactor", "0,125", "--json"}).output.ends_with(":0.125}\n"));
    CHECK(run({"height", "70", "in", "--json"}).output.starts_with("{\"current\":177.8,\"unit\":\"cm\","));
    run({"profile", "age", "70"});
    run({"profile", "gender", "other"});
    run({"profile", "targetWeight", "70"});
    run({"profile", "dailyStepGoal", "9000"});
    CHECK(run({"profile", "targetWeight", "none", "--json"}).output == R"({"key":"targetWeight","value":null})"
                                                                       "\n");
    CHECK(run({"profile", "--json"}).output ==
          R"({"age":70,"gender":"other","targetWeight":null,"dailyStepGoal":9000,"weeklyStepGoal":63000,)"
          R"("ageSource":"manual","genderSource":"manual"})"
          "\n");
    CHECK(shared("dailyGoal") == 9000);
    CHECK(run({"rank", "--steps", "16000", "--json"})
              .output.contains(R"("tier":"topOne","tierName":"Top","nextTier":null)"));
}

TEST_CASE_FIXTURE(Writing, "a recap is due in the month after one with steps, and looking leaves it so") {
    writeSampleStore(folder / "data");
    const auto isDue = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"recap", "--json"});
        return run(arguments).output.contains(R"("due":true)");
    };
    CHECK(!isDue({"--now", sampleNow}));  // the first month of use
    storeRecapMonth("2024-04");
    CHECK(isDue({"--now", sampleNow}));
    CHECK(run({"recap", "--now", sampleNow}).output.starts_with("April\n"));
    CHECK(isDue({"--now", sampleNow}));
    CHECK(run({"today", "--now", sampleNow}).output.ends_with("\nWhat April was: pedvar recap\n"));
    CHECK(!isDue({"--now", "2024-04-20"}));
    CHECK(isDue({"--now", "2024-06-20"}));   // one day of May
    CHECK(!isDue({"--now", "2024-07-20"}));  // nobody walked in June
}

TEST_CASE_FIXTURE(Writing, "a recap is due until a person has seen it, and none in the first month of use") {
    using namespace std::chrono;
    const auto berlin = AbslZone::named("Europe/Berlin");
    const year_month current = month(Calendar(*berlin, 2).day(SystemClock().now()));
    const std::string walked = isoText(firstDay(current - months(1)) + days(9));
    std::string document = sampleExport();
    for (std::size_t at = 0; (at = document.find("2024-05-01", at)) != std::string::npos;) {
        document.replace(at, walked.size(), walked);
    }
    writeFile(folder / "export.xml", document);
    run({"import", "export.xml"});
    CHECK(run({"recap", "--json"}).output.starts_with(R"({"due":false)"));
    storeRecapMonth("2020-01");
    CHECK(run({"recap", "--json"}).output.starts_with(R"({"due":true)"));
    CHECK(run({"recap"}).output.contains("1,600 steps"));
    CHECK(run({"recap", "--json"}).output.starts_with(R"({"due":false)"));
}

TEST_CASE_FIXTURE(Writing, "writing stores the days of the pace, looking leaves them as they are") {
    writeFile(folder / "export.xml", sampleExport());
    run({"import", "export.xml"});
    const auto stored = [&] {
        const SqliteDefaults defaults(folder / "data", SqliteDefaults::Access::readOnly);
        return defaults.standard().data("stepPaceBaselineDays").value_or(Data{}).bytes;
    };
    const std::string days = stored();
    CHECK(std::ranges::count(days, 'd') == 28);  // of "date"
    {
        SqliteDefaults defaults(folder / "data", SqliteDefaults::Access::readWrite);
        REQUIRE(defaults.write({{&defaults.standard(), "stepPaceBaselineDays", Data{"[{}"}}}));
    }
    CHECK(run({"pace", "--json"}).output.contains(R"("status":3)"));
    CHECK(stored() == "[{}");
    run({"goal", "8000"});
    CHECK(stored() == days);
    const SqliteDefaults defaults(folder / "data", SqliteDefaults::Access::readOnly);
    CHECK(defaults.standard().data("stepPaceBaselineDays.unreadable") == Data{"[{}"});
}

TEST_CASE_FIXTURE(Writing, "the order of sources decides who counts") {
    writeSampleStore(folder / "data");
    const Outcome before = run({"day", "2024-04-30", "--json"});
    const Outcome ordered = run({"sources", "--order", "Ada’s Phone"});
    CHECK(ordered.output.find("Phone") < ordered.output.find("Watch"));
    CHECK(run({"day", "2024-04-30", "--json"}).output != before.output);
}

TEST_CASE_FIXTURE(Writing, "a track is one activity however often and as whatever copy it is imported") {
    writeFile(folder / "walk.gpx", sampleTrack());
    CHECK(run({"import", "walk.gpx", "--as", "walk"}).output.starts_with("Added: Walking, 30 April 2024 06:30"));
    CHECK(run({"import", "walk.gpx", "--as", "run"}).output.starts_with("Already there: Walking"));
    SqliteDefaults defaults(folder / "data", SqliteDefaults::Access::readWrite);
    SqliteDocumentParts documents(defaults);
    REQUIRE(SessionHistory(documents).add(sampleSession(1, 30)));
    CHECK(run({"export", "00000001", "-o", "copy.gpx"}).output == "30 points are in copy.gpx.\n");
    CHECK(run({"import", "copy.gpx", "--as", "hike"}).output.starts_with("Already there: Hiking"));
    CHECK(SessionHistory(documents).savedSessions().size() == 2);
}

TEST_CASE_FIXTURE(Writing, "of many files each is told, and that one is none fails the command at its end") {
    writeFile(folder / "walk.gpx", sampleTrack());
    writeFile(folder / "note.gpx", "Nothing");
    const Outcome document = run({"route", "note.gpx", "walk.gpx", "missing.gpx", "--json", "--points"});
    CHECK(document.exitCode == 1);
    const auto parsed = NlohmannJsonParser().parse(document.output);
    REQUIRE(parsed.has_value());
    const JsonArray& files = *parsed->member("files")->as<JsonArray>();
    REQUIRE(files.size() == 3);
    CHECK(files[0].member("error")->member("kind")->value == JsonValue{"invalidFormat"}.value);
    CHECK(files[1].member("route")->as<JsonArray>()->front().as<JsonArray>()->size() == 361);
    CHECK(parsed->member("error")->member("message")->value == JsonValue{"2 of 3 files could not be read."}.value);
}

TEST_CASE_FIXTURE(Writing, "an activity is named anew, written over an old file, and deleted") {
    writeFile(folder / "walk.gpx", sampleTrack());
    run({"import", "walk.gpx", "--as", "walk"});
    CHECK(run({"activity", "last", "--type", "cycle"}).output.starts_with("Now: Cycling, 30 April 2024"));
    CHECK(run({"activity", "last"}).output.contains(" km/h"));
    writeFile(folder / "old.gpx", "old");
    CHECK(run({"export", "last", "-o", "old.gpx", "--force"}).exitCode == 0);
    CHECK(readFile(folder / "old.gpx") == run({"export", "last"}).output);
    CHECK(run({"route", "old.gpx", "walk.gpx", "--json", "--points"}).exitCode == 0);
    CHECK(run({"activity", "last", "--delete", "--yes", "--json"}).output.ends_with("\"deleted\":true}\n"));
    CHECK(run({"activities", "--json"}).output == "{\"activities\":[]}\n");
    CHECK(std::ranges::distance(std::filesystem::directory_iterator(folder.path())) == 3);  // nothing unfinished
}

TEST_CASE_FIXTURE(Writing, "a workout of an export is an activity, and the copy of one that is there already") {
    writeFile(folder / "export.xml", R"(<HealthData locale="en_GB">
 <ExportDate value="2024-05-01 18:00:00 +0200"/>
 <Workout workoutActivityType="HKWorkoutActivityTypeWalking" duration="9" durationUnit="min" sourceName="Watch"
  startDate="2024-04-30 06:30:00 +0200" endDate="2024-04-30 07:20:00 +0200"><WorkoutRoute>
  <Location date="2024-04-30 06:31:00 +0200" latitude="52.5" longitude="13.4"/>
  <Location date="2024-04-30 06:41:00 +0200" latitude="52.51" longitude="13.4"/>
 </WorkoutRoute></Workout>
</HealthData>
)");
    run({"import", "export.xml"});
    const auto idOf = [&] {
        const auto document = NlohmannJsonParser().parse(run({"activity", "last", "--json"}).output);
        return *document->member("id")->as<std::string>();
    };
    const std::string workout = idOf();
    CHECK(run({"activities", "--json"}).output.contains("\"points\":null,\"source\":\"Watch\""));
    const std::string whole = run({"activity", workout.substr(0, 6), "--json"}).output;
    CHECK(whole.contains("\"points\":2,"));
    CHECK(whole.contains("\"movingTime\":540,"));  // the route takes ten minutes, the workout nine
    CHECK(run({"export", workout, "-o", "workout.gpx"}).output == "2 points are in workout.gpx.\n");
    for (const char* change : {"--type=run", "--delete"}) {
        const Outcome refused = runPedvar(folder.path(), {"activity", "last", change, "--data", "data"});
        CHECK(refused.exitCode == 1);
        CHECK(refused.errors.contains("a workout of the health store, by Watch"));
    }

    writeFile(folder / "walk.gpx", sampleTrack());
    run({"import", "walk.gpx", "--as", "walk"});
    CHECK(idOf() != workout);
    CHECK(run({"activity", workout}).output == run({"activity", "last"}).output);
    const std::string walk = idOf();
    run({"export", "last", "-o", "cut.gpx", "--hide-home", "200"});
    run({"import", "cut.gpx", "--as", "hike"});
    // Of the remaining two the hike still stands for the workout.
    CHECK(!run({"activity", walk, "--delete", "--yes"}).output.contains("is listed from now on"));
    CHECK(run({"activity", workout}).output == run({"activity", "last"}).output);
    CHECK(run({"activity", "last", "--delete", "--yes"}).output.contains("from Watch is listed from now on"));
    CHECK(idOf() == workout);
}

TEST_CASE_FIXTURE(Writing, "the pace is not taken from stored days that an import has changed since") {
    writeSampleStore(folder / "data");
    HealthDatabase database(folder / "data/health.sqlite");
    REQUIRE(HealthAdministration(database).settleChangedDays([](const ChangedDays&) { return true; }));
    const std::vector<std::string> pace{"pace", "--now", sampleNow, "--json"};
    const std::string right = run(pace).output;
    {
        SqliteDefaults defaults(folder / "data", SqliteDefaults::Access::readWrite);
        const auto berlin = AbslZone::named("Europe/Berlin");
        std::vector<PaceDay> days;
        for (int i = 1; i <= 28; ++i) {
            days.push_back(
                {Calendar(*berlin, 2).start(Day{2024y / 5 / 1} - std::chrono::days(i)), {100, 200, 300}});
        }
        REQUIRE(savePaceDays(defaults, NlohmannJsonParser(), days));
    }
    CHECK(run(pace).output.contains("\"dayCount\":28"));
    CHECK(run(pace).output != right);
    SampleWriter writer(database);
    const auto phone = writer.source({.kind = SourceKind::phone, .name = "Other", .hardware = ""});
    const auto series = writer.series(HKQuantityTypeIdentifierStepCount, "count");
    REQUIRE(series.has_value());
    std::vector<SampleRow> rows;
    const Milliseconds midnight = millisecondsOf(dateOf(std::chrono::sys_days(2024y / 4 / 2)));
    for (int i = 1; i <= 28; ++i) rows.push_back({*series, *phone, midnight + i * 86'400'000LL, 0, 0});
    REQUIRE(writer.write(rows));
    CHECK(run(pace).output == right);
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
