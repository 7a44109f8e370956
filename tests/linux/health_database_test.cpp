#include "linux/health_store_fixture.h"
#include "linux/stored_workouts.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>

namespace pedvar {
namespace {

using namespace std::chrono_literals;
using Kind = StoreError::Kind;

unsigned modeOf(const std::filesystem::path& path) {
    struct stat status = {};
    REQUIRE(::stat(path.c_str(), &status) == 0);
    return status.st_mode & 0777;
}

void runIn(const std::filesystem::path& path, const char* sql) {
    sqlite3* database = nullptr;
    REQUIRE(sqlite3_open(path.c_str(), &database) == SQLITE_OK);
    CHECK(sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK);
    sqlite3_close(database);
}

/// Takes the rights of the superuser away, who may write everywhere.
class Unprivileged {
public:
    Unprivileged() : before_(geteuid()) {
        if (before_ == 0) REQUIRE(seteuid(65534) == 0);
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;
    ~Unprivileged() { check(seteuid(before_) == 0, "the rights do not come back"); }

private:
    uid_t before_;
};

TEST_CASE("files that are no store, or a newer one, are refused by readers and writers and stay as they are") {
    const TemporaryFolder folder;
    const auto path = folder / "health.sqlite";
    struct Case {
        Kind kind;
        std::function<void()> make;
    };
    const std::vector<Case> cases{
        {Kind::notAStore, [&] { writeFile(path, "Dear diary,\ntoday I walked. " + std::string(5000, '.')); }},
        {Kind::notAStore, [&] { runIn(path, "CREATE TABLE diary (text)"); }},
        {Kind::notAStore, [&] { runIn(path, "PRAGMA application_id = 7"); }},
        {Kind::newerVersion, [&] { runIn(path, "PRAGMA application_id = 0x50647672; PRAGMA user_version = 3"); }},
    };
    for (const Case& each : cases) {
        std::filesystem::remove(path);
        each.make();
        const std::string before = readFile(path);
        HealthDatabase database(path);
        REQUIRE(!database.verify());
        CHECK(database.verify().error().kind == each.kind);
        CHECK(database.verify().error().message.inEnglish().find(path.string()) != std::string::npos);
        SampleWriter writer(database);
        CHECK(writer.source({.name = "Phone"}).error().kind == each.kind);
        CHECK(writer.write({}).error().kind == each.kind);
        CHECK(readFile(path) == before);
    }
    HealthDatabase below(path / "below");
    CHECK(SampleWriter(below).write({}).error().kind == Kind::unwritable);
}

TEST_CASE("an empty file is an empty store, for readers and for writers") {
    const TemporaryFolder folder;
    writeFile(folder / "health.sqlite", "");
    HealthDatabase database(folder / "health.sqlite");
    CHECK(!*database.verify());
    CHECK(SampleWriter(database).write({}));
    CHECK(*database.verify());
}

TEST_CASE("a damaged store is said to be damaged") {
    HealthStoreFixture fixture;
    const std::int32_t phone = fixture.source(SourceKind::phone, "Phone");
    std::vector<TestSample> samples;
    for (std::int64_t i = 0; i < 3000; ++i) samples.push_back({phone, i * 60, 60, 1});
    fixture.add(samples);
    const TemporaryFolder copies;
    runIn(fixture.database.path(), "PRAGMA wal_checkpoint(TRUNCATE)");
    std::string bytes = readFile(fixture.database.path());
    std::fill(bytes.begin() + 3 * 4096, bytes.end(), '\x55');
    writeFile(copies / "health.sqlite", bytes);
    HealthDatabase damaged(copies / "health.sqlite");
    const auto sources = HealthAdministration(damaged).sources(HKQuantityTypeIdentifierStepCount);
    REQUIRE(!sources);
    CHECK(sources.error().kind == Kind::damaged);
    const auto examination = HealthAdministration(damaged).examine();
    CHECK((!examination || !examination->damages.empty()));
}

TEST_CASE("the store and its folders are made for the person only, and looser rights are found") {
    const TemporaryFolder folder;
    HealthDatabase database(folder / "share" / "pedvar" / "health.sqlite");
    SampleWriter writer(database);
    REQUIRE(writer.write({}));
    CHECK(modeOf(folder / "share") == 0700);
    CHECK(modeOf(database.path().parent_path()) == 0700);
    CHECK(modeOf(database.path()) == 0600);
    CHECK(modeOf(database.path().string() + "-wal") == 0600);
    CHECK(HealthAdministration(database).examine()->permissions.empty());
    ::chmod(database.path().c_str(), 0644);
    const auto loose = HealthAdministration(database).examine()->permissions;
    REQUIRE(loose.size() == 1);
    CHECK(loose[0].mode == 0644);
}

TEST_CASE("a store in a read-only folder can be read and not written") {
    auto fixture = std::make_unique<HealthStoreFixture>();
    fixture->add({{fixture->source(SourceKind::phone, "Phone"), 0, 60, 10}});
    const TemporaryFolder readable, unfinished;
    for (const char* suffix : {"", "-wal"}) {  // a log that was not finished, and nobody who could finish it
        const auto file = unfinished / (std::string("health.sqlite") + suffix);
        std::filesystem::copy_file(fixture->database.path().string() + suffix, file);
        ::chmod(file.c_str(), 0444);
    }
    runIn(fixture->database.path(), "PRAGMA wal_checkpoint(TRUNCATE)");
    std::filesystem::copy_file(fixture->database.path(), readable / "health.sqlite");
    ::chmod((readable / "health.sqlite").c_str(), 0444);
    for (const auto& folder : {readable.path(), unfinished.path()}) ::chmod(folder.c_str(), 0555);

    HealthDatabase database(readable / "health.sqlite");
    HealthDatabase unfinishedDatabase(unfinished / "health.sqlite");
    StoreResult<bool> verified, unfinishedVerified;
    StoreResult<std::int32_t> written;
    StoreResult<std::optional<Date>> newest;
    {
        const Unprivileged someone;
        verified = database.verify();
        newest = HealthAdministration(database).newestSample(HKQuantityTypeIdentifierStepCount);
        written = SampleWriter(database).source({.name = "New"});
        unfinishedVerified = unfinishedDatabase.verify();
    }
    for (const auto& folder : {readable.path(), unfinished.path()}) ::chmod(folder.c_str(), 0755);
    CHECK(verified);
    CHECK(*newest == at(60));
    REQUIRE(!written);
    CHECK(written.error().kind == Kind::unwritable);
    REQUIRE(!unfinishedVerified);  // rather than what was true before the log
    CHECK(unfinishedVerified.error().kind == Kind::unwritable);
    CHECK(*HealthAdministration(unfinishedDatabase).newestSample(HKQuantityTypeIdentifierStepCount) == at(60));
}

TEST_CASE_FIXTURE(HealthStoreFixture,
                  "a writer waits for another one, but not for ever, and nothing is half written") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    HealthDatabase impatient(database.path(), 20ms);
    SampleWriter second(impatient);
    REQUIRE(second.series(HKQuantityTypeIdentifierStepCount, "count"));
    const std::vector<SampleRow> steps = rows({{phone, 0, 60, 10}});
    auto other = database.connectForWriting();
    {
        Transaction transaction(*other, Transaction::Kind::write);
        const auto written = second.write(steps);
        REQUIRE(!written);
        CHECK(written.error().kind == Kind::busy);
    }
    CHECK(!sum(0, day));
    CHECK(second.write(steps)->samplesAdded == 1);
    CHECK(sum(0, day) == 10);
}

TEST_CASE_FIXTURE(HealthStoreFixture, "a batch that fails leaves nothing behind, and can be written again") {
    const std::int32_t phone = source(SourceKind::phone, "Phone");
    REQUIRE(writer.write({}));
    runIn(database.path(), "CREATE TRIGGER full BEFORE INSERT ON workouts BEGIN SELECT raise(ABORT, 'no'); END");
    const WorkoutRow walk{.activityType = "HKWorkoutActivityTypeWalking", .source = phone, .end = 1000};
    const std::vector<SampleRow> steps = rows({{phone, 0, 30 * hour, 10}, {phone, 0, 60, 10}});
    CHECK(!writer.write(steps, {{walk}}));
    CHECK(!sum(0, day));
    CHECK(changedDays().empty());
    runIn(database.path(), "DROP TRIGGER full");
    CHECK(writer.write(steps, {{walk}})->samplesAdded == 2);
    CHECK(sum(0, day) == doctest::Approx(20).epsilon(0.001));
}

TEST_CASE_FIXTURE(HealthStoreFixture, "workouts are kept once, with routes that come later") {
    const std::int32_t watch = source(SourceKind::watch, "Watch");
    const std::string gpx(100'000, 'x');
    WorkoutRow walk{.activityType = "HKWorkoutActivityTypeWalking",
                    .source = watch,
                    .start = 0,
                    .end = 3'600'000,
                    .duration = 3500,
                    .distance = 5000,
                    .statistics = {{"HKQuantityTypeIdentifierHeartRate", "count/min", {}, 120, 80, 160}},
                    .metadata = {{"HKIndoorWorkout", "0"}, {"HKIndoorWorkout", "0"}},
                    .routes = {{"a.gpx", gpx}}};
    auto counts = writer.write({}, {{walk, walk}});
    CHECK(counts->workoutsAdded == 1);
    CHECK(counts->routesAdded == 1);
    walk.routes.push_back({"b.gpx", ""});
    counts = writer.write({}, {{walk}});
    CHECK(counts->workoutsAdded == 0);
    CHECK(counts->routesAdded == 1);

    auto connection = database.connectForReading();
    Rows row = (*connection)->query("SELECT size, deflated FROM workout_routes WHERE name = 'a.gpx'");
    REQUIRE(row.next());
    CHECK(row.blob(1).size() < 1000);
    CHECK(inflated(row, 0) == gpx);
    CHECK((*connection)->number("SELECT average FROM workout_statistics") == 120);
    CHECK((*connection)->number("SELECT count(*) FROM workout_metadata") == 1);
}

TEST_CASE_FIXTURE(HealthStoreFixture,
                  "sources show what they contribute, and are named so that they can be told apart") {
    const std::int32_t old = *writer.source({SourceKind::phone, "Ann’s phone", "iPhone10,1"});
    const std::int32_t current = *writer.source({SourceKind::phone, "Ann’s phone", "iPhone14,5"});
    const std::int32_t watch = source(SourceKind::watch, "Watch");
    add({{old, 0, 60, 5}, {old, day, 30 * hour, 9}, {current, 0, 600, 100}, {watch, 300, 300, 40}});
    const auto sources = *administration.sources(HKQuantityTypeIdentifierStepCount);
    REQUIRE(sources.size() == 3);
    CHECK(sources[0].label == "Watch");
    CHECK(sources[1].label == "Ann’s phone (iPhone10,1)");
    CHECK(sources[1].priority == 2);
    CHECK(sources[1].sampleCount == 2);
    CHECK(sources[1].rawSum == 14);
    CHECK(sources[2].rawSum == 100);
    CHECK(sources[2].countedSum == doctest::Approx(40));

    for (const std::string label : {"Ann’s phone", "Bob’s phone"}) {
        const auto refused = administration.setOrder(std::vector{label});
        REQUIRE(!refused);
        CHECK(refused.error().kind == Kind::unknownSource);
        CHECK(refused.error().message.inEnglish().find("\"Ann’s phone (iPhone14,5)\"") != std::string::npos);
    }
    REQUIRE(administration.setOrder(std::vector<std::string>{"Ann’s phone (iPhone14,5)"}));
    CHECK(administration.sources(HKQuantityTypeIdentifierStepCount)->front().id == current);
    CHECK(sum(0, day) == 100);
}

}  // namespace
}  // namespace pedvar
