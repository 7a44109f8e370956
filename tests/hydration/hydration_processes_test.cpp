#include "hydration/hydration_manager.h"
#include "linux/system/sqlite_defaults.h"
#include "linux/system/system_random.h"
#include "support/manager_fixture.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

namespace pedvar {
namespace {

constexpr int drinkCount = 1000;

/// Where no disk slows thousands of writes down, if there is such a place.
std::filesystem::path fastFolder(const TemporaryFolder& folder) {
    const std::filesystem::path memory = "/dev/shm" / folder.path().filename();
    std::error_code failed;
    std::filesystem::create_directory(memory, failed);
    return failed ? folder.path() : memory;
}

struct ManyDrinks : ManagerFixture {
    ~ManyDrinks() { std::filesystem::remove_all(path); }

    /// Labels are short or long, of one letter each, so that a mixture of two shows.
    void label(std::size_t length) {
        REQUIRE(time.run(water.changeSettings([length](HydrationSettings& edited) {
            edited.containers.at(0).label = std::string(length, length > 9 ? 'L' : 's');
            return true;
        })));
    }

    TemporaryFolder folder;
    std::filesystem::path path = fastFolder(folder);
    SqliteDefaults stored{path, SqliteDefaults::Access::readWrite};
    FakeWidgetCenter widgets{trace};
    SystemRandom random;
    HydrationAppGroup group{stored, time, widgets, log};
    HydrationManager water{time, time, store, manager.reads(), stored, settings, random, group};
};

/// 0 when all values of the snapshot were whole, 1 when one was not, 2 when too few were seen to tell.
int watch(const std::filesystem::path& folder) {
    const SqliteDefaults seen(folder, SqliteDefaults::Access::readOnly);
    const UserDefaults& suite = *seen.shared();
    const std::string large = "\"" + std::string(3000, 'L') + "\"";
    std::set<double> totals;
    while (!suite.integer("isOver")) {
        const double today = suite.real("hydrationTodayMilliliters").value_or(-1);
        const std::string containers = suite.data("hydrationContainers").value_or(Data{}).bytes;
        const bool hasLabel = containers.contains("\"sss\"") != containers.contains(large);
        const bool isTotal = today == 0 || today == 1 || today == 1000;
        if (!isTotal || !hasLabel || !containers.ends_with("}]")) return 1;
        totals.insert(today);
    }
    return totals.size() == 3 ? 0 : 2;
}

TEST_CASE_FIXTURE(ManyDrinks, "another process never reads a torn value while drinks come and go") {
    label(3);
    const pid_t reader = fork();
    if (reader == 0) _exit(watch(path));
    for (int number = 0; number < drinkCount; ++number) {
        if (number % 10 == 0) label(number % 20 == 0 ? 3000 : 3);
        REQUIRE(time.run(water.drink(number % 2 == 0 ? 1 : 1000, DrinkType::water)));
        REQUIRE(time.run(water.undo()));
    }
    REQUIRE(stored.write({{stored.shared(), "isOver", std::int64_t{1}}}));
    int status = 0;
    REQUIRE(waitpid(reader, &status, 0) == reader);
    CHECK(WEXITSTATUS(status) == 0);
    CHECK(water.todayMilliliters == 0);
    CHECK(log.lines.empty());
}

}  // namespace
}  // namespace pedvar
