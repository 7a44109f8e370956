#include "cli/run_pedvar.h"
#include "support/gpsd_rig.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>
#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

constexpr double metresPerDegree = 111'200;  // of latitude

/// Somebody who runs north with a receiver and a step counter, a step and a fix five times a second.
class Runner {
public:
    static constexpr double stride = 1.2;  // metres

    explicit Runner(std::filesystem::path counter) : counter_(std::move(counter)) {
        std::filesystem::create_directories(counter_);
        writeFile(counter_ / "in_steps_en", "0");
        writeFile(counter_ / "in_steps_input", "1000\n");
        thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
    }

    const std::string& device() const { return receiver_.device(); }
    void runUntil(int steps) { goal_ = steps; }

private:
    void run(const std::stop_token& stop) {
        for (int steps = 0; !stop.stop_requested(); std::this_thread::sleep_for(200ms)) {
            if (steps < goal_) ++steps;
            const auto now = std::chrono::system_clock::now().time_since_epoch();
            receiver_.say(nmeaFix(std::chrono::duration<double>(now).count(),
                                  48.1 + steps * stride / metresPerDegree, 11.5, 520));
            // As the kernel does: a reader sees the one number or the other.
            writeFile(counter_ / "next", std::to_string(1'000 + steps) + "\n");
            std::filesystem::rename(counter_ / "next", counter_ / "in_steps_input");
        }
    }

    std::filesystem::path counter_;
    NmeaReceiver receiver_;
    std::atomic<int> goal_ = 0;
    std::jthread thread_;
};

int countOf(const std::filesystem::path& database, const char* table) {
    sqlite3* connection = nullptr;
    REQUIRE(sqlite3_open_v2(database.c_str(), &connection, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK);
    sqlite3_stmt* statement = nullptr;
    const std::string query = std::string("SELECT count(*) FROM ") + table;
    REQUIRE(sqlite3_prepare_v2(connection, query.c_str(), -1, &statement, nullptr) == SQLITE_OK);
    REQUIRE(sqlite3_step(statement) == SQLITE_ROW);
    const int count = sqlite3_column_int(statement, 0);
    sqlite3_finalize(statement);
    sqlite3_close(connection);
    return count;
}

/// The number behind `"name":`.
double numberOf(const std::string& document, const std::string& name) {
    const auto at = document.find("\"" + name + "\":");
    REQUIRE(at != std::string::npos);
    return std::stod(document.substr(at + name.size() + 3));
}

std::size_t occurrences(const std::string& text, std::string_view part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

}  // namespace

TEST_CASE("what receiver and step counter say goes through a kill to history, GPX file and health store") {
    const TemporaryFolder folder;
    Runner runner(folder / "devices" / "iio:device0");
    const std::string port = freePort();
    const std::vector<std::string> kernel{"PEDVAR_STEP_COUNTERS=" + (folder / "devices").string()};
    const std::vector<std::string> record{"record", "run", "--json", "--gpsd", "127.0.0.1:" + port,
                                          "--data", "data"};
    {
        RunningPedvar first(folder.path(), record, kernel);
        REQUIRE(first.says("No gpsd answers at 127.0.0.1:" + port));
        Gpsd gpsd(port, folder.path(), {});
        REQUIRE(first.says("gpsd at 127.0.0.1:" + port + " has no receiver"));
        gpsd.add(runner.device());
        REQUIRE(first.says("The receiver has a fix."));
        runner.runUntil(20);
        REQUIRE(first.says("\"steps\":20,"));
        gpsd.kill();
        REQUIRE(first.says("gpsd at 127.0.0.1:" + port + " has gone"));
        first.signal(SIGKILL);
        CHECK(occurrences(first.finish().errors, "No gpsd answers") == 1);
    }
    const Gpsd gpsd(port, folder.path(), {runner.device()});
    RunningPedvar second(folder.path(), record, kernel);
    REQUIRE(second.says("Going on with the recording of "));
    REQUIRE(second.says("\"gpsAccuracy\":1"));
    runner.runUntil(60);
    REQUIRE(second.says("\"steps\":60,"));
    second.signal(SIGINT);
    CHECK(second.finish().exitCode == 0);

    const auto run = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--data", "data"});
        return runPedvar(folder.path(), arguments);
    };
    const std::string activity = run({"record", "--finish", "--json"}).output;
    CHECK(activity.contains("\"activityType\":\"run\""));
    CHECK(numberOf(activity, "steps") == 60);
    CHECK(numberOf(activity, "points") >= 20);
    CHECK(numberOf(activity, "distance") > 30 * Runner::stride);
    CHECK(numberOf(activity, "distance") < 61 * Runner::stride);

    CHECK(run({"export", "last", "-o", "run.gpx"}).exitCode == 0);
    const std::string track = readFile(folder / "run.gpx");
    CHECK(static_cast<double>(occurrences(track, "<trkpt")) == numberOf(activity, "points"));
    CHECK(track.contains("<ele>520"));
    CHECK(countOf(folder / "data" / "health.sqlite", "workouts") == 1);
    CHECK(countOf(folder / "data" / "health.sqlite", "workout_routes") == 1);
    CHECK(occurrences(run({"activities", "--json"}).output, "\"id\"") == 1);
}
