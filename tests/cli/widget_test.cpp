#include "cli/run_pedvar.h"
#include "companion/preferences_sync.h"
#include "linux/sqlite/connection.h"
#include "linux/system/absent_services.h"
#include "linux/system/clocks.h"
#include "linux/system/glibc_locale.h"
#include "linux/system/nlohmann_json_parser.h"
#include "linux/system/process_zone.h"
#include "linux/system/sqlite_defaults.h"
#include "linux/system/widget_reloads.h"
#include "support/fake_log.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>

namespace pedvar {
namespace {

/// A process that follows the widgets of a folder.
class Follower {
public:
    explicit Follower(const std::filesystem::path& folder) {
        std::array<int, 2> ends{};
        REQUIRE(::pipe2(ends.data(), O_CLOEXEC) == 0);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
        std::string data = folder.string();
        const std::array<const char*, 6> words{PEDVAR_PROGRAM, "widget", "--follow",
                                               "--json",       "--data", data.c_str()};
        std::array<char*, 7> arguments{};
        for (std::size_t i = 0; i < words.size(); ++i) arguments[i] = const_cast<char*>(words[i]);
        REQUIRE(posix_spawn(&process_, PEDVAR_PROGRAM, &files, nullptr, arguments.data(), environ) == 0);
        posix_spawn_file_actions_destroy(&files);
        ::close(ends[1]);
        lines_ = ::fdopen(ends[0], "r");
    }
    Follower(const Follower&) = delete;
    Follower& operator=(const Follower&) = delete;
    ~Follower() {
        if (lines_) stopsWithReader();
    }

    JsonValue next() {
        std::string line;
        while (!std::feof(lines_) && !std::ferror(lines_)) {
            const int character = std::fgetc(lines_);
            if (character == EOF || character == '\n') break;
            line += static_cast<char>(character);
        }
        return NlohmannJsonParser().parse(line).value_or(JsonValue());
    }

    /// Whether it ends well once nobody reads what it writes: at once, or on writing as every program does.
    bool stopsWithReader() {
        std::fclose(std::exchange(lines_, nullptr));
        int status = 0;
        REQUIRE(::waitpid(process_, &status, 0) == process_);
        return WIFEXITED(status) ? WEXITSTATUS(status) == 0 : WTERMSIG(status) == SIGPIPE;
    }

private:
    pid_t process_ = 0;
    std::FILE* lines_ = nullptr;
};

/// Reaches the followers, and counts how often.
class CountedWidgets : public WidgetCenter {
public:
    explicit CountedWidgets(const std::filesystem::path& folder) : followed_(folder) {}

    int reloads = 0;

    void reloadAllTimelines() override {
        ++reloads;
        followed_.reloadAllTimelines();
    }

private:
    FollowedWidgets followed_;
};

struct Following {
    TemporaryFolder folder{memoryFolder()};
    SqliteDefaults defaults{folder.path(), SqliteDefaults::Access::readWrite};
    SystemClock clock;
    FakeLog log;
    AppGroupManager group{defaults, clock, log};
    CountedWidgets widgets{folder.path()};
};

std::int64_t stepsOf(const JsonValue& line) {
    const JsonValue* const steps = line.member("todaySteps");
    return steps ? steps->integer().value_or(-1) : -1;
}

TEST_CASE_FIXTURE(Following,
                  "a follower sees the last of a thousand updates, none torn, a line a reload at most") {
    constexpr int updateCount = 1000, changeCount = 4;
    ProcessZone zone = processZone();
    const GlibcLocale locale(*zone.rules);
    const NlohmannJsonParser json;
    SettingsStore settings(defaults, json, locale);
    NoCloudSettings cloud;
    PreferencesSync preferences(settings, group, cloud, widgets);
    preferences.sync();
    Follower follower(folder.path());
    CHECK(stepsOf(follower.next()) == 0);
    widgets.reloads = 0;
    for (int number = 1; number <= updateCount; ++number) {
        group.saveTodayData(number, number, number);
        preferences.sync();  // nothing has changed, so that it reloads nothing
        if (number % (updateCount / changeCount) == 0) {
            REQUIRE(preferences.changePreferences(
                [](UserPreferences& changed) { changed.hapticFeedbackEnabled = !changed.hapticFeedbackEnabled; }));
        }
        widgets.reloadAllTimelines();
    }
    CHECK(widgets.reloads == updateCount + changeCount);
    int lineCount = 0;
    std::int64_t seen = 0;
    while (seen < updateCount) {
        const JsonValue line = follower.next();
        const std::int64_t steps = stepsOf(line);
        REQUIRE(steps >= seen);
        REQUIRE(line.member("todayDistance")->number() == static_cast<double>(steps));
        REQUIRE(line.member("todayCalories")->number() == static_cast<double>(steps));
        seen = steps;
        ++lineCount;
    }
    CHECK(lineCount <= widgets.reloads);
    CHECK(follower.stopsWithReader());
    CHECK(log.lines.empty());
}

TEST_CASE_FIXTURE(Following, "a follower stays when the folder is made, replaced or emptied") {
    const std::filesystem::path data = folder / "data";
    Follower follower(data);
    CHECK(stepsOf(follower.next()) == 0);
    const auto walk = [&](const std::filesystem::path& where, int steps) {
        SqliteDefaults stored(where, SqliteDefaults::Access::readWrite);
        AppGroupManager(stored, clock, log).saveTodayData(steps, 0, 0);
        FollowedWidgets(where).reloadAllTimelines();
    };
    walk(data, 1);
    CHECK(stepsOf(follower.next()) == 1);
    walk(folder / "other", 2);
    std::filesystem::rename(data, folder / "aside");
    std::filesystem::rename(folder / "other", data);
    FollowedWidgets(folder / "aside").reloadAllTimelines();
    CHECK(stepsOf(follower.next()) == 2);
    walk(data, 3);
    CHECK(stepsOf(follower.next()) == 3);
    std::filesystem::remove(data / "widgets.reload");
    CHECK(stepsOf(follower.next()) == 3);
    walk(data, 4);
    std::int64_t last = 3;
    while (last == 3) last = stepsOf(follower.next());  // the file that has gone may be told of twice
    CHECK(last == 4);

    Connection writer(SqliteDefaults::sharedPath(data).string(), Connection::Access::write,
                      std::chrono::seconds(1));
    writer.runScript("BEGIN EXCLUSIVE");
    FollowedWidgets(data).reloadAllTimelines();
    ::usleep(1'500'000);  // longer than a follower waits at a time
    writer.runScript("ROLLBACK");
    walk(data, 5);
    while (last == 4) last = stepsOf(follower.next());
    CHECK(last == 5);
}

TEST_CASE_FIXTURE(Following, "each status bar gets its line, from the suite alone") {
    group.saveTodayData(12'000, 8.4, 431);
    group.saveGoalAndUnit(9000, "km");
    group.saveStepColor(StepColor::blue);
    writeFile(folder / "health.sqlite", "no store");
    writeFile(folder / "defaults.sqlite", "no settings");
    const auto line = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--data", folder.path().string()});
        const Outcome outcome = runPedvar(folder.path(), arguments);
        CHECK(outcome.errors == "");
        return outcome.output;
    };
    CHECK(line({"widget"}) == "12,000 of 9,000 steps\n");
    CHECK(line({"widget", "--format", "waybar"}) ==
          R"({"text":"12,000","tooltip":"12,000 of 9,000 steps\n8.4 km, 431 kcal\nActive minutes: 0\n)"
          R"(Flights climbed: 0\nStreak: 0 days","class":"goal-met","percentage":100})"
          "\n");
    CHECK(line({"widget", "--format", "i3blocks"})
              .starts_with(R"({"full_text":"12,000 of 9,000 steps","short_text":"12,000","color":"#)"));
    CHECK(line({"widget", "--format", "json"}) == line({"widget", "--json"}));
    group.saveTodayData(INT64_MAX, 0, 0);
    group.saveGoalAndUnit(INT64_MAX, "km");
    CHECK(line({"widget", "--format", "waybar"}).ends_with("\"percentage\":100}\n"));
    for (const std::vector<std::string>& wrong : {std::vector<std::string>{"widget", "--format", "xml"},
                                                  {"widget", "--format", "waybar", "--json"},
                                                  {"widget", "--follow", "--now", "2024-05-01"}}) {
        CHECK(runPedvar(folder.path(), wrong).exitCode == 2);
    }
    CHECK(!std::filesystem::exists(folder / "widgets.reload"));
    const std::string command =
        "timeout 20 " PEDVAR_PROGRAM " widget --follow >/dev/full 2>/dev/null --data " + folder.path().string();
    CHECK(WEXITSTATUS(std::system(command.c_str())) == 1);
}

}  // namespace
}  // namespace pedvar
