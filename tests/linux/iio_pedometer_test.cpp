#include "linux/steps/iio_pedometer.h"

#include "support/fake_defaults.h"
#include "support/temporary_folder.h"
#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <optional>
#include <string>
#include <vector>

using namespace pedvar;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

/// A kernel of files, and the processes that record on it one after another.
class Walk {
public:
    Walk() {
        boot("first");
        fs::create_directories(device);
        count(1'000);
        writeFile(device / "in_steps_en", "0\n");
    }

    void boot(const std::string& identity) { writeFile(root / "boot_id", identity + "\n"); }
    void count(std::int64_t steps) { writeFile(device / "in_steps_input", std::to_string(steps) + "\n"); }

    void record(Date start = Date{}, std::int64_t known = 0) {
        pedometer.emplace(time, time, defaults, KernelFiles{root / "devices", root / "boot_id"});
        pedometer->startUpdates(start, known, [this](const auto& update) {
            if (update) {
                told.push_back(update->numberOfSteps);
            } else {
                problems.push_back(update.error().localizedDescription.inEnglish());
            }
        });
        time.advance(1s);
    }
    /// The end of a process that saves nothing any more.
    void kill() {
        defaults.failure = DefaultsError{"killed"};
        pedometer.reset();
        defaults.failure.reset();
    }
    std::int64_t after(Seconds duration) {
        time.advance(duration);
        return told.empty() ? 0 : told.back();
    }

    TemporaryFolder root;
    fs::path device = root / "devices" / "iio:device3";
    std::vector<std::string> trace;
    FakeDefaults defaults{trace};
    VirtualTime time;
    std::vector<std::int64_t> told;
    std::vector<std::string> problems;
    std::optional<IIOPedometer> pedometer;
};

}  // namespace

TEST_CASE_FIXTURE(Walk, "the counter is switched on and its steps since the start are told once each") {
    record();
    CHECK(readFile(device / "in_steps_en") == "1\n");
    CHECK(told.empty());
    count(1'004);
    time.advance(3s);
    count(1'010);
    time.advance(1s);
    CHECK(told == std::vector<std::int64_t>{4, 10});
}

TEST_CASE_FIXTURE(Walk, "steps taken between a kill and the next start count, and a saved count is not needed") {
    record();
    count(1'007);
    time.advance(2s);
    kill();
    count(1'050);
    record();
    CHECK(told.back() == 50);
    kill();
    count(1'060);
    record();
    CHECK(told.back() == 60);
}

TEST_CASE_FIXTURE(Walk, "after a reboot the new counter's steps are added to those that were saved") {
    record();
    count(1'100);
    time.advance(IIOPedometer::savingInterval);
    count(1'103);  // lost with the power
    time.advance(1s);
    kill();
    boot("second");
    SUBCASE("lower than before") {
        count(20);
        record();
        CHECK(told.back() == 120);
    }
    SUBCASE("higher than before") {
        count(2'000);
        record();
        CHECK(told.back() == 2'100);
    }
    SUBCASE("and the recording knows of more than was saved") {
        count(20);
        record({}, 103);
        CHECK(told == std::vector<std::int64_t>{100, 103, 123});
        count(25);
        CHECK(after(1s) == 128);
        kill();
        count(4);  // began anew without a reboot
        record({}, 127);
        CHECK(told.back() == 131);
    }
    SUBCASE("as another device") {
        fs::rename(device, device.parent_path() / "iio:device0");
        device = device.parent_path() / "iio:device0";
        count(2'000);
        record();
        CHECK(told.back() == 2'100);
    }
}

TEST_CASE_FIXTURE(Walk, "a process that ends in order keeps all, and the end of the recording forgets it") {
    record();
    count(1'005);
    time.advance(1s);
    pedometer.reset();
    boot("second");
    count(1);
    record();
    CHECK(told.back() == 6);
    pedometer->stopUpdates();
    CHECK(defaults.standardDomain.values.empty());
    count(500);
    CHECK(after(60s) == 6);
}

TEST_CASE_FIXTURE(Walk, "another recording begins at 0, whatever an earlier one has left") {
    record();
    count(1'050);
    time.advance(1s);
    kill();
    told.clear();
    record(Date{5s});
    CHECK(told.empty());
    count(1'051);
    CHECK(after(1s) == 1);
}

TEST_CASE_FIXTURE(Walk, "a counter that wraps or is reset goes on from what it shows then") {
    count(65'530);
    record();
    count(65'535);
    time.advance(1s);
    count(3);
    CHECK(after(1s) == 8);
}

TEST_CASE_FIXTURE(Walk, "nonsense and unreadable counters are told once, and counting goes on") {
    record();
    for (const char* nonsense : {"", "-4\n", "12 steps\n", "99999999999999999999\n"}) {
        problems.clear();
        writeFile(device / "in_steps_input", nonsense);
        time.advance(5s);
        REQUIRE(problems.size() == 1);
        CHECK(problems.front().contains("is no count"));
        count(1'001);
        CHECK(after(1s) == 1);
    }
    fs::remove(device / "in_steps_input");
    time.advance(5s);
    CHECK(problems.back().contains("in_steps_input: No such file or directory"));
    count(1'002);
    CHECK(after(1s) == 2);
}

TEST_CASE_FIXTURE(Walk, "a counter that another program switches off is switched on again") {
    record();
    writeFile(device / "in_steps_en", "0\n");
    time.advance(1s);
    CHECK(readFile(device / "in_steps_en") == "1\n");
}

TEST_CASE_FIXTURE(Walk, "a detached handler hears nothing, and the count goes on for the next one") {
    record();
    pedometer->detach();
    count(1'009);
    CHECK(after(60s) == 0);
    record();
    CHECK(told.back() == 9);
}

TEST_CASE("without a counter there is no step counting, and a damaged count of earlier does no harm") {
    Walk walk;
    const KernelFiles nowhere{walk.root / "none", walk.root / "boot_id"};
    const IIOPedometer none(walk.time, walk.time, walk.defaults, nowhere);
    CHECK(!none.isStepCountingAvailable());
    walk.defaults.setDocument(stepCountKey, R"({"startDate":0,"steps":"many"})");
    walk.record();
    walk.count(1'001);
    CHECK(walk.after(1s) == 1);
}
