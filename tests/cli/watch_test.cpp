#include "cli/run_pedvar.h"
#include "linux/system/clocks.h"
#include "linux/system/sqlite_defaults.h"
#include "support/environment.h"
#include "support/program.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>
#include <fmt/chrono.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <thread>

namespace pedvar {
namespace {

using namespace std::chrono_literals;

/// A session bus with a notification server on it, and the data of a person for whom it is half past twelve.
struct Watching {
    TemporaryFolder folder;
    std::optional<Program> desktop{std::in_place,
                                   std::vector<std::string>{"dbus-run-session", "--", "/usr/bin/python3",
                                                            PEDVAR_NOTIFICATION_SERVER, "actions"}};
    std::vector<std::string> environment{"DBUS_SESSION_BUS_ADDRESS=" + desktop->line(), zone(),
                                         "PEDVAR_STEP_COUNTERS=" + (folder / "counters").string()};

    /// One whose clocks show half past twelve: nothing is told for more than an hour then but what the data give
    /// cause for.
    static std::string zone() {
        const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
        const std::chrono::seconds west = now - std::chrono::floor<std::chrono::days>(now) - 12h - 30min;
        return fmt::format("TZ=TEST{}{:%T}", west < 0s ? '-' : '+', std::chrono::abs(west));
    }
    Outcome run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--data", "data"});
        return runPedvar(folder.path(), arguments, environment);
    }
    std::unique_ptr<Program> watch() const {
        auto program = std::make_unique<Program>(
            std::vector<std::string>{PEDVAR_PROGRAM, "watch", "--data", (folder / "data").string()}, environment);
        return program;
    }
    /// The time between two moments before now as an export has it.
    static std::string exportOf(std::chrono::seconds from, std::chrono::seconds to, int steps) {
        const auto text = [now = std::chrono::system_clock::now()](std::chrono::seconds ago) {
            return fmt::format("{:%Y-%m-%d %H:%M:%S +0000}",
                               fmt::gmtime(std::chrono::system_clock::to_time_t(now - ago)));
        };
        return fmt::format(
            R"(<?xml version="1.0"?><HealthData locale="en_GB"><Record type="HKQuantityTypeIdentifierStepCount" )"
            R"(sourceName="Phone" unit="count" startDate="{}" endDate="{}" value="{}"/></HealthData>)",
            text(from), text(to), steps);
    }
    std::optional<DefaultsValue> stored(bool isShared, const char* key) const {
        const SqliteDefaults defaults(folder / "data", SqliteDefaults::Access::readOnly);
        return (isShared ? *defaults.shared() : defaults.standard()).value(key);
    }
    bool hasTodaySteps(std::int64_t steps) const { return stored(true, "todaySteps") == DefaultsValue(steps); }
    static bool reaches(const std::function<bool()>& isReached) {
        for (int i = 0; i < 3'000 && !isReached(); ++i) std::this_thread::sleep_for(10ms);
        return isReached();
    }
};

TEST_CASE_FIXTURE(Watching, "what another process imports reaches widgets and the person, once over restarts") {
    REQUIRE(run({"goal", "1000"}).exitCode == 0);
    auto watcher = watch();
    REQUIRE(reaches([&] { return stored(false, "toldBadges").has_value(); }));
    const Outcome second = run({"watch"});
    CHECK(second.exitCode == 1);
    CHECK(second.errors.find("Another process watches this folder already") != std::string::npos);

    writeFile(folder / "export.xml", exportOf(600s, 1s, 1'200));
    REQUIRE(run({"import", "export.xml"}).exitCode == 0);
    // The badge comes first when the watcher looks again while the import commits.
    const auto withoutNumber = [](const std::string& line) { return line.substr(line.find(',') + 1); };
    const std::set<std::string> told{withoutNumber(desktop->line()), withoutNumber(desktop->line())};
    CHECK(told == std::set<std::string>{R"( "Goal achieved", "Steps today: 1,200. Your goal was 1,000.", -1])",
                                        R"( "New badge", "First Steps", -1])"});
    CHECK(reaches([&] { return hasTodaySteps(1'200); }));
    CHECK(watcher->end(SIGTERM) == 0);

    desktop->write("leave");
    REQUIRE(desktop->line() == R"("left")");
    REQUIRE(run({"water", "250"}).exitCode == 0);
    REQUIRE(run({"settings", "reviewPage", "https://example.org"}).exitCode == 0);
    watcher = watch();
    REQUIRE(reaches([&] { return stored(false, "opensUntilNextPrompt") == DefaultsValue(std::int64_t{2}); }));
    REQUIRE(run({"settings", "appLanguage", "german"}).exitCode == 0);
    desktop->write("return actions");  // which lets it tell what it could not when it was opened
    CHECK(desktop->line() == R"([1, "Zeit zu trinken", "Wasser heute bisher: 250 ml von 2.000 ml.", -1])");
    writeFile(folder / "more.xml", exportOf(1'800s, 900s, 300));
    REQUIRE(run({"import", "more.xml"}).exitCode == 0);
    CHECK(reaches([&] { return hasTodaySteps(1'500); }));
    CHECK(watcher->end(SIGINT) == 0);
    desktop->endInput();
    CHECK(desktop->line() == "");
}

TEST_CASE_FIXTURE(Watching, "what appears in the drop folder is imported when it is whole, without a bus too") {
    environment[0] = "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus";
    const auto drop = folder / "outer/drop";
    writeFile(folder / "file", "");
    CHECK(run({"settings", "dropFolder", (folder / "file").string()}).exitCode == 2);
    REQUIRE(run({"settings", "dropFolder", drop.string()}).exitCode == 0);
    auto watcher = watch();
    REQUIRE(reaches([&] { return stored(true, "todaySteps").has_value(); }));
    std::filesystem::create_directories(drop);

    const std::string document = exportOf(600s, 1s, 777);
    std::ofstream half(drop / "export.xml");
    half << document.substr(0, 60) << std::flush;
    writeFile(drop / "cut.xml", exportOf(600s, 1s, 888).substr(0, 100));  // closed, but not whole
    writeFile(drop / "letter.txt", "Dear Ada");
    CHECK(reaches([&] { return std::filesystem::exists(drop / "failed/letter.txt"); }));
    CHECK(hasTodaySteps(0));
    half << document.substr(60);
    half.close();
    CHECK(reaches([&] { return hasTodaySteps(777); }));
    CHECK(reaches([&] { return std::filesystem::exists(drop / "imported/export.xml"); }));
    CHECK(std::filesystem::exists(drop / "cut.xml"));
    std::filesystem::remove_all(drop);
    std::filesystem::create_directory(drop);
    writeFile(drop / "letter.txt", "Dear Bob");
    CHECK(reaches([&] { return std::filesystem::exists(drop / "failed/letter.txt"); }));
    std::filesystem::rename(drop, folder / "old");
    std::filesystem::create_directory(drop);
    writeFile(drop / "letter.txt", "Dear Eve");
    CHECK(reaches([&] { return std::filesystem::exists(drop / "failed/letter.txt"); }));
    std::filesystem::rename(folder / "outer", folder / "before");  // the next refresh sees it
    std::filesystem::create_directories(drop);
    writeFile(drop / "letter.txt", "Dear Kim");
    CHECK(run({"water", "200"}).exitCode == 0);
    CHECK(reaches([&] { return std::filesystem::exists(drop / "failed/letter.txt"); }));
    CHECK(watcher->end(SIGTERM) == 0);
}

TEST_CASE_FIXTURE(Watching, "steps of the kernel's counter become Pedvar's, also those of between two watchers") {
    const auto device = folder / "counters" / "iio:device0";
    std::filesystem::create_directories(device);
    const auto count = [&](int steps) { writeFile(device / "in_steps_input", std::to_string(steps) + "\n"); };
    writeFile(device / "in_steps_en", "1\n");
    count(5'000);
    auto watcher = watch();
    REQUIRE(reaches([&] { return stored(false, "stepIngestion").has_value(); }));
    CHECK(watcher->end(SIGTERM) == 0);
    count(5'030);
    watcher = watch();
    CHECK(reaches([&] { return hasTodaySteps(30); }));
    CHECK(watcher->end(SIGTERM) == 0);
    CHECK(run({"sources"}).output.find("Pedvar") != std::string::npos);
}

TEST_CASE_FIXTURE(Watching, "what is chosen in a notification opens its page in the desktop's browser") {
    const auto opener = folder / "bin/xdg-open", opened = folder / "opened";
    std::filesystem::create_directory(folder / "bin");
    writeFile(opener, "#!/bin/sh\necho \"$# $1\" >>'" + opened.string() + "'\n");
    std::filesystem::permissions(opener, std::filesystem::perms::owner_all);
    const EnvironmentVariable path("PATH", (folder / "bin").string() + ":" + std::getenv("PATH"));
    const Program server{{"python3", PEDVAR_WEB_SERVER}};
    const auto setting = [&](const char* name, const std::string& value) {
        REQUIRE(run({"settings", name, value}).exitCode == 0);
    };
    setting("updateAddress", "http://127.0.0.1:" + server.line() + "/good");
    setting("reviewPage", "https://example.org/it's?app=7#stars");
    const std::string update =
        R"("Pedvar 99.1 is there", "Walks further.", "view", "View", "dismiss", "Dismiss", 0])";
    setting("notificationsEnabled", "false");

    auto watcher = watch();
    REQUIRE(reaches([&] { return stored(false, "publishedVersion").has_value(); }));
    setting("updatePage", "https://example.org/get?quiet&app=");  // what is shown now offers to view it
    setting("notificationsEnabled", "true");
    CHECK(desktop->line() == "[1, " + update);
    desktop->write("choose 1 view");
    const std::string page = "1 https://example.org/get?quiet&app=1\n";
    CHECK(reaches([&] { return readFile(opened) == page; }));
    CHECK(watcher->end(SIGTERM) == 0);
    watcher = watch();
    CHECK(desktop->line() == "[2, " + update);
    desktop->write("choose 2 dismiss");
    CHECK(reaches([&] { return stored(false, "dismissed_update_99.1").has_value(); }));
    CHECK(watcher->end(SIGTERM) == 0);
    watcher = watch();  // the third time that Pedvar is opened
    CHECK(desktop->line() == R"([3, "Do you like Pedvar?", "A rating helps others to find it.", )"
                             R"("rate", "Rate", "later", "Later", 0])");
    desktop->write("choose 3 rate");
    const std::string review = "1 https://example.org/it's?app=7&action=write-review#stars\n";
    CHECK(reaches([&] { return readFile(opened) == page + review; }));
    CHECK(stored(false, "hasRatedApp") == DefaultsValue(true));
    CHECK(watcher->end(SIGTERM) == 0);
}

TEST_CASE_FIXTURE(Watching, "the day follows the machine to another zone, however that is set") {
    const auto file = folder / "localtime";
    const auto zoneIn = [&](int hourOfDay) {
        const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
        const auto hour = static_cast<int>((now - std::chrono::floor<std::chrono::days>(now)) / 1h);
        const int offset = (hourOfDay - hour + 36) % 24 - 12;
        return fmt::format("/usr/share/zoneinfo/Etc/GMT{:+}", -offset);
    };
    const std::string afternoon = zoneIn(13), night = zoneIn(1);
    std::filesystem::create_symlink(afternoon, file);
    environment[1] = "TZ=:" + file.string();
    writeFile(folder / "export.xml", exportOf(3h, 2h + 1min, 1'200));
    REQUIRE(run({"import", "export.xml"}).exitCode == 0);
    auto watcher = watch();
    REQUIRE(reaches([&] { return hasTodaySteps(1'200); }));
    std::filesystem::remove(file);
    std::filesystem::create_symlink(night, file);
    CHECK(reaches([&] { return hasTodaySteps(0); }));
    std::filesystem::remove(file);
    std::filesystem::copy_file(afternoon, file);
    CHECK(reaches([&] { return hasTodaySteps(1'200); }));
    std::filesystem::copy_file(night, file, std::filesystem::copy_options::overwrite_existing);
    CHECK(reaches([&] { return hasTodaySteps(0); }));
    CHECK(watcher->end(SIGTERM) == 0);
}

}  // namespace
}  // namespace pedvar
