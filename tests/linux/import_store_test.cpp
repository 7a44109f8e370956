/// Whole imports into a store.
#include "linux/import/batch_queue.h"
#include "linux/import/health_importer.h"
#include "linux/import_support.h"
#include "support/temporary_folder.h"

#include "linux/health/health_administration.h"
#include "linux/health/health_database.h"

#include <chrono>
#include <stdexcept>
#include <thread>

using namespace pedvar;

namespace {

class Importing {
public:
    TemporaryFolder folder;
    HealthDatabase database{folder / "health.sqlite"};

    std::filesystem::path document(std::string_view name, std::string_view content,
                                   std::string_view tail = "</HealthData>") {
        writeFile(folder / name, fmt::format("<HealthData locale=\"en\">{}{}", content, tail));
        return folder / name;
    }

    ImportReport import(std::vector<std::filesystem::path> paths,
                        const std::function<void(const ImportProgress&)>& progress = {},
                        std::stop_token stop = {}) {
        SampleWriter writer(database);
        ImportReport report = HealthImporter(writer).run(paths, progress, std::move(stop));
        CHECK(report.counts.read ==
              report.counts.added + report.counts.alreadyThere + report.counts.skipped.total());
        return report;
    }
};

std::string minutes(int from, int to) {
    std::string content;
    for (int i = from; i < to; ++i) {
        const std::string date =
            fmt::format("2024-05-{:02} {:02}:{:02}:00 +0000", i / 1440 + 1, i / 60 % 24, i % 60);
        content +=
            record({{"startDate", date}, {"endDate", date}, {"sourceName", i % 2 == 0 ? "Watch" : "Phone"}});
    }
    return content;
}

std::string walk(std::string_view route) {
    return fmt::format(
        "<Workout workoutActivityType=\"HKWorkoutActivityTypeWalking\" sourceName=\"Watch\" "
        "startDate=\"2024-05-01 06:00:00 +0000\" endDate=\"2024-05-01 07:00:00 +0000\">"
        "<WorkoutRoute><FileReference path=\"/workout-routes/{}\"/></WorkoutRoute></Workout>",
        route);
}

/// Everything in the store but the numbers of its rows.
std::string contentOf(HealthDatabase& database) {
    auto connection = database.connectForReading();
    REQUIRE((connection && *connection));
    std::string content;
    for (const char* sql : {
             "SELECT kind || name || hardware FROM sources ORDER BY position",
             "SELECT identifier || start || ' ' || duration || name || value FROM samples "
             "JOIN series ON series.id = series JOIN sources ON sources.id = source ORDER BY 1",
             "SELECT identifier || day || ifnull(hex(sums), '-') FROM totals JOIN series ON series.id = series "
             "ORDER BY 1",
             "SELECT activity || start || name || count(DISTINCT key) || count(DISTINCT type) FROM workouts "
             "JOIN sources ON sources.id = source LEFT JOIN workout_metadata AS m ON m.workout = workouts.id "
             "LEFT JOIN workout_statistics AS s ON s.workout = workouts.id GROUP BY workouts.id ORDER BY 1",
             "SELECT start || name || hex(deflated) FROM workout_routes JOIN workouts ON id = workout ORDER BY 1",
         }) {
        Rows rows = (*connection)->query(sql);
        while (rows.next()) content.append(rows.text(0)).append("\n");
    }
    return content;
}

}  // namespace

TEST_CASE_FIXTURE(Importing, "an import that is taken back leaves the store as it was, and can be done again") {
    std::filesystem::create_directory(folder / "workout-routes");
    writeFile(folder / "workout-routes/a.gpx", "<gpx>a</gpx>");
    writeFile(folder / "workout-routes/b.gpx", "<gpx>b</gpx>");
    const auto first = document("first.xml", minutes(0, 3000) + walk("a.gpx"));
    const std::string summary = record({{"sourceName", "Band"},
                                        {"startDate", "2024-05-01 00:00:00 +0000"},
                                        {"endDate", "2024-05-01 23:00:00 +0000"}});
    const auto second = document("second.xml", minutes(2900, 6000) + summary + walk("b.gpx"));
    HealthAdministration administration(database);
    CHECK(!administration.undoImport()->has_value());
    import({first});
    const std::string before = contentOf(database);
    import({second});
    const std::string after = contentOf(database);
    CHECK(import({second}).counts.added == 0);

    const auto undone = administration.undoImport();
    REQUIRE((undone && *undone));
    CHECK((*undone)->samples == 3001);
    CHECK((*undone)->workouts == 0);  // the walk had come with the first one
    CHECK((*undone)->routes == 1);
    CHECK((*undone)->sources == 1);
    CHECK(contentOf(database) == before);
    CHECK(administration.examine()->differences.empty());
    import({second});
    CHECK(contentOf(database) == after);
    REQUIRE(administration.undoImport());

    std::stop_source stop;
    const auto half = document("half.xml", minutes(0, 7'000));
    const auto rest = document("rest.xml", minutes(7'000, 9'000));
    CHECK(import({half, rest}, [&](const ImportProgress&) { stop.request_stop(); }, stop.get_token()).wasStopped);
    CHECK(contentOf(database) != before);
    REQUIRE(administration.undoImport());
    CHECK(contentOf(database) == before);
    CHECK((*administration.undoImport())->workouts == 1);
    CHECK(contentOf(database).empty());
}

TEST_CASE_FIXTURE(Importing, "an import that is taken back while it runs ends, and leaves nothing behind") {
    const std::vector inputs{document("half.xml", minutes(0, 200)), document("rest.xml", minutes(200, 400))};
    SampleWriter writer(database);
    bool isFirst = true;
    const auto takeBack = [&](const ImportProgress& progress) {
        if (progress.rows == 0 || !std::exchange(isFirst, false)) return;
        REQUIRE(HealthAdministration(database).undoImport());
    };
    const ImportReport report = HealthImporter(writer).run(inputs, takeBack);
    REQUIRE(report.failure);
    CHECK(contentOf(database).empty());
}

TEST_CASE_FIXTURE(Importing, "a store of the version before imports were remembered is read, and written on") {
    import({document("first.xml", minutes(0, 100))});
    const std::string before = contentOf(database);
    {
        Connection old((folder / "health.sqlite").string(), Connection::Access::write, std::chrono::seconds(1));
        for (const char* table : {"sources", "samples", "workouts", "workout_routes"}) {
            old.runScript(fmt::format("ALTER TABLE {} DROP COLUMN import", table).c_str());
        }
        old.runScript("DROP TABLE imports; PRAGMA user_version = 1");
    }
    CHECK(contentOf(database) == before);
    import({document("second.xml", minutes(0, 200))});
    CHECK((*HealthAdministration(database).undoImport())->samples == 100);
    CHECK(contentOf(database) == before);
    CHECK(!HealthAdministration(database).undoImport()->has_value());
}

TEST_CASE_FIXTURE(Importing, "importing again adds nothing, and a newer overlapping export only what is new") {
    std::filesystem::create_directory(folder / "workout-routes");
    writeFile(folder / "workout-routes/a.gpx", "<gpx>a</gpx>");
    const auto first = document("first.xml", minutes(0, 100) + record({{"value", "x"}}) + walk("a.gpx"));
    ImportReport report = import({first});
    CHECK(report.isComplete());
    CHECK(report.counts.read == 101);
    CHECK(report.counts.added == 100);
    CHECK(report.counts.skipped[SkipReason::badValue] == 1);
    CHECK(report.counts.workouts == 1);
    CHECK(report.counts.routes == 1);

    report = import({first});
    CHECK(report.counts.alreadyThere == 100);
    CHECK(report.counts.added + report.counts.workouts + report.counts.routes == 0);

    report = import({document("newer.xml", minutes(50, 150) + minutes(50, 60) + walk("a.gpx") + walk("b.gpx"))});
    CHECK(report.counts.added == 50);
    CHECK(report.counts.alreadyThere == 60);
    CHECK(report.counts.workoutsRead == 2);
    CHECK(report.counts.workouts == 0);
    CHECK(report.counts.routesMissing == 1);
}

TEST_CASE_FIXTURE(Importing,
                  "what cannot be read does not keep the other files, and each says what became of it") {
    const auto cut = document("cut.xml", minutes(0, 10) + "<Record type=\"HKQ", "");
    const auto rootless = folder / "rootless.xml";
    writeFile(rootless, "<!-- <HealthData is not here -->");
    const auto good = document("good.xml", "<Me HKCharacteristicTypeIdentifierDateOfBirth=\"1990-05-20\"/>" +
                                               minutes(10, 20) + std::string("\x0B\xFF"));
    const ImportReport report = import({folder / "absent", cut, rootless, good});
    CHECK(!report.isComplete());
    REQUIRE(report.files.size() == 4);
    CHECK(report.files[0].error->kind == ImportError::Kind::notFound);
    CHECK(report.files[1].endedEarly);
    CHECK(report.files[1].error->message.inEnglish().find(cut.string()) != std::string::npos);
    CHECK(report.files[1].counts.added == 10);
    CHECK(report.files[2].error->kind == ImportError::Kind::notAnExport);
    CHECK(report.files[2].error->message.inEnglish().find(rootless.string()) != std::string::npos);
    CHECK(!report.files[2].endedEarly);
    CHECK(!report.files[3].error);
    CHECK(report.files[3].counts.repairedBytes == 2);
    CHECK(report.counts.added == 20);
    CHECK(report.person.dateOfBirth == std::chrono::year(1990) / 5 / 20);
}

TEST_CASE_FIXTURE(Importing, "the person is that of the newest export") {
    const auto of = [&](std::string_view name, int year, std::string_view birth) {
        return document(name, fmt::format("<ExportDate value=\"{}-01-01 00:00:00 +0000\"/>"
                                          "<Me HKCharacteristicTypeIdentifierDateOfBirth=\"{}\"/>",
                                          year, birth));
    };
    const auto report =
        import({of("b.xml", 2024, "1990-05-21"), of("c.xml", 2025, ""), of("a.xml", 2023, "1990-05-20")});
    CHECK(report.person.dateOfBirth == std::chrono::year(1990) / 5 / 21);
}

TEST_CASE_FIXTURE(Importing, "a stopped import keeps whole batches and is completed by another one") {
    std::string gap;
    gap.assign(80'000'000, ' ');
    const auto path = document("many.xml", minutes(0, 3) + gap + minutes(3, 6));
    std::stop_source stop;
    std::uint64_t total = 0;
    ImportReport report = import(
        {path},
        [&](const ImportProgress& progress) {
            total = progress.bytesTotal;
            CHECK(progress.bytesDone < progress.bytesTotal);
            stop.request_stop();
        },
        stop.get_token());
    CHECK(report.wasStopped);
    CHECK(!report.isComplete());
    CHECK(report.counts.added == 3);
    CHECK(total == std::filesystem::file_size(path));

    ImportProgress last;
    report = import({path}, [&](const ImportProgress& progress) { last = progress; });
    CHECK(report.counts.added == 3);
    CHECK(report.counts.alreadyThere == 3);
    CHECK(last.bytesDone == total);
    CHECK(last.rows == 6);
    CHECK(last.totalsDone == 1);
}

TEST_CASE_FIXTURE(Importing, "a store that cannot be written ends the import with its reason") {
    writeFile(folder / "health.sqlite", "Dear diary, today I walked.");
    const ImportReport report = import({document("a.xml", minutes(0, 3)), document("b.xml", minutes(3, 6))});
    REQUIRE(report.failure);
    CHECK(report.failure->kind == StoreError::Kind::notAStore);
    CHECK(report.counts.added == 0);
    CHECK(readFile(folder / "health.sqlite").starts_with("Dear diary"));
}

TEST_CASE("a queue lets the reader wait for the writer, hands everything on, and ends on both sides") {
    BatchQueue queue;
    std::jthread reader([&] {
        for (std::uint64_t i = 1; i <= 50; ++i) queue.take({.bytesRead = i});
        queue.close();
    });
    for (std::uint64_t i = 1; i <= 50; ++i) CHECK(queue.next()->bytesRead == i);
    CHECK(!queue.next());
    CHECK(!queue.take({}));

    BatchQueue abandoned;
    std::jthread stuck([&] {
        while (abandoned.take({})) {
        }
    });
    CHECK(abandoned.next());
    abandoned.abandon();
    stuck.join();
    CHECK(!abandoned.next());

    BatchQueue failed;
    failed.take({});
    failed.fail(std::make_exception_ptr(std::runtime_error("fault")));
    CHECK(failed.next());
    CHECK_THROWS_AS(failed.next(), std::runtime_error);
}
