#include "linux/backup/backup_file.h"
#include "linux/backup/data_copy.h"
#include "linux/health/health_administration.h"
#include "linux/health/health_database.h"
#include "linux/health/sample_writer.h"
#include "linux/system/sqlite_defaults.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <atomic>
#include <thread>
#include <utility>

namespace pedvar {
namespace {

namespace fs = std::filesystem;

struct Keeping {
    Keeping() { REQUIRE(setGoal(1)); }

    DefaultsResult setGoal(std::int64_t goal) {
        return defaults.write({{&defaults.standard(), "goal", goal}, {defaults.shared(), "goal", goal}});
    }
    void addSamples(Milliseconds from, Milliseconds count) {
        SampleWriter writer(database);
        const auto series = writer.series("HKQuantityTypeIdentifierStepCount", "count");
        const auto source = writer.source({SourceKind::phone, "Phone", "Phone1,1"});
        REQUIRE((series && source));
        std::vector<SampleRow> rows;
        for (Milliseconds i = from; i < from + count; ++i)
            rows.push_back({*series, *source, i * 60'000, 60'000, 7});
        REQUIRE(writer.write(rows));
    }
    fs::path target(const std::string& name) const {
        fs::create_directory(folder / name);
        return folder / name;
    }

    TemporaryFolder folder{memoryFolder()};
    fs::path data = folder / "data";
    fs::path backup = folder / "backup.zip";
    SqliteDefaults defaults{data, SqliteDefaults::Access::readWrite};
    HealthDatabase database{data / "health.sqlite"};
};

const GoesOn always = [] { return true; };

std::optional<std::int64_t> goalIn(const fs::path& file) {
    return SqliteDefaultsFile(file, std::chrono::seconds(1)).integer("goal");
}

TEST_CASE_FIXTURE(Keeping, "a backup while others write is of one moment, and holds all that was there") {
    addSamples(0, 10'000);
    std::atomic<bool> isOver = false;
    std::jthread writer([&] {
        for (std::int64_t goal = 2; !isOver; ++goal) {
            SqliteDefaults other(data, SqliteDefaults::Access::readWrite);
            (void)other.write({{&other.standard(), "goal", goal}, {other.shared(), "goal", goal}});
            addSamples(goal * 100'000, 500);
        }
    });
    std::optional<std::int64_t> last;
    for (int round = 0; round < 10; ++round) {
        REQUIRE(writeBackup(data, backup, always));
        const fs::path copy = target("copy" + std::to_string(round));
        const auto read = readBackup(backup, copy, always);
        REQUIRE_MESSAGE(read, read.error().message.inEnglish());
        const auto goal = goalIn(copy / dataFiles[0]);
        CHECK(goal >= last);
        CHECK(goal == goalIn(copy / dataFiles[1]));
        HealthDatabase copied(copy / dataFiles[2]);
        const auto sources = HealthAdministration(copied).sources("HKQuantityTypeIdentifierStepCount");
        REQUIRE(sources);
        CHECK(sources->front().sampleCount >= 10'000);
        CHECK(sources->front().sampleCount % 500 == 0);
        last = goal;
    }
    isOver = true;
}

TEST_CASE_FIXTURE(Keeping, "who stops a backup or its restoring gets none of it, and no copies stay") {
    addSamples(0, 300);
    int askedFor = 0;
    const auto stopsAfter = [&](int count) { return [&askedFor, count] { return ++askedFor <= count; }; };
    REQUIRE(writeBackup(data, backup, stopsAfter(99)));
    const int questions = std::exchange(askedFor, 0);
    REQUIRE(questions > 9);
    for (int i = 0; i < questions; ++i) {
        CHECK(!writeBackup(data, folder / "stopped.zip", stopsAfter(i)));
        CHECK(!fs::exists(folder / "stopped.zip.copy"));
        askedFor = 0;
    }
    CHECK(!readBackup(backup, target("first"), stopsAfter(0)));
    CHECK(!readBackup(backup, target("second"), stopsAfter(1)));
}

TEST_CASE_FIXTURE(Keeping, "a backup that is cut or edited is refused, wherever") {
    addSamples(0, 300);
    REQUIRE(writeBackup(data, backup, always));
    const std::string whole = readFile(backup);
    REQUIRE(readBackup(backup, target("whole"), always));
    int number = 0;
    const auto restored = [&](std::string_view bytes) -> std::optional<std::string> {
        writeFile(backup, bytes);
        const fs::path copy = target("copy" + std::to_string(number++));
        if (!readBackup(backup, copy, always)) return std::nullopt;
        std::string content;
        for (const std::string_view name : dataFiles) content += readFile(copy / name);
        return content;
    };
    const auto original = restored(whole);
    REQUIRE(original);
    for (std::size_t i = 0; i < 40; ++i) CHECK(!restored(whole.substr(0, whole.size() * i / 40)));
    for (std::size_t i = 1; i < 30; ++i) CHECK(!restored(whole.substr(0, whole.size() - i)));
    CHECK(!restored(whole + "more"));
    int refusedCount = 0;
    constexpr int editCount = 300;
    for (std::size_t i = 0; i < editCount; ++i) {
        std::string edited = whole;
        edited[whole.size() * i / editCount] ^= 0x10;
        const auto content = restored(edited);
        CHECK((!content || content == original));  // an archive has bytes that say nothing, such as its dates
        refusedCount += content ? 0 : 1;
    }
    CHECK(refusedCount > editCount * 8 / 10);
    CHECK(!restored("PK"));
    CHECK(!restored(readFile(data / "health.sqlite")));
}

}  // namespace
}  // namespace pedvar
