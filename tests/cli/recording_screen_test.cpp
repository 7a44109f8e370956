#include "apps/cli/live_input.h"
#include "apps/cli/live_screen.h"
#include "apps/cli/receiver_news.h"
#include "apps/cli/recording_views.h"
#include "linux/system/event_loop.h"
#include "platform/text_catalogue.h"
#include "recording/recorder_fixture.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>
#include <fcntl.h>
#include <fmt/ranges.h>
#include <poll.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace pedvar {
namespace {

using namespace std::chrono_literals;

struct Shown : Recording {
    std::string lines(std::size_t width, std::size_t rows = 24) {
        const Texts text(catalogue);
        const Screen screen{.text = text, .figures = Figures(locale, settings.preferences(), text)};
        return fmt::format("{}\n",
                           fmt::join(fitting(statusLines(*recorder, time.now(), screen, width), rows), "\n"));
    }

    EnglishTexts catalogue;
};

TEST_CASE_FIXTURE(Shown, "the screen connects first, and then shows the values as they are") {
    walk.start(ActivityType::hike);
    CHECK(lines(80).ends_with("\n\nConnecting to GPS satellites. This usually takes just a few moments.\n"));
    walk.at(2).lasting(90s);
    walk.fixAtHeight(47);
    launch->pedometer.count(1'234);
    CHECK(lines(60) == R"(
Hiking     recording
Time       1:31
Distance   0,18 km
Pace       8:20 /km
Speed      7,2 km/h
Steps      1.234
Energy     10 kcal
Elevation  47 m, 17 m up
GPS        Excellent

Your GPS has locked onto satellites with excellent
precision. Route tracking is at its best!
)");
    time.advance(11s);
    CHECK(lines(80).contains("Pace       –\nSpeed      –\n"));
    CHECK(lines(80).contains("GPS        Poor\n\nConnecting to GPS satellites."));
    recorder->pauseRecording();
    CHECK(lines(60).starts_with("\nHiking     paused\n"));
}

TEST_CASE_FIXTURE(Shown, "a small screen keeps what matters most: time, distance, and that nothing is stored") {
    walk.start(ActivityType::walk);
    recorder->storageProblem = "The disk is full.";
    CHECK(lines(20, 5) == R"(Walking    recording
Time       0:00
Distance   0 km
The recording goes
on, but cannot be
)");
    CHECK(lines(60, 12).starts_with("Walking    recording\n"));
    CHECK(
        lines(60, 12).ends_with("GPS        Poor\nConnecting to GPS satellites. This usually takes just a few\n"
                                "The recording goes on, but cannot be stored now. The disk is\nfull.\n"));
}

TEST_CASE("lines are broken between words, and within those that are wider than a line") {
    CHECK(wrapped("one two three", 7) == std::vector<std::string>{"one two", "three"});
    CHECK(wrapped("a überbreit – b", 4) == std::vector<std::string>{"a", "über", "brei", "t –", "b"});
}

TEST_CASE("what keeps fixes from coming is told once, and that they come again") {
    using State = ReceiverCondition::State;
    VirtualTime time;
    GpsdLocationManager receiver(time, time, {}, {});
    const EnglishTexts catalogue;
    const Texts text(catalogue);
    std::vector<std::string> told;
    const ReceiverNews news(receiver, {}, text, [&](const std::string& message) {
        told.push_back(message.substr(0, message.find_first_of(".)")));
    });
    for (const State state : {State::noDaemon, State::noReceiver, State::noFix, State::fix, State::silent,
                              State::fix, State::noReceiver, State::noFix, State::noDaemon, State::fix}) {
        if (state == State::noDaemon) receiver.condition = {state, "unknown"};
        receiver.condition = {state, state == State::noDaemon ? "refused" : ""};
    }
    receiver.clockDifference = 3'600s;
    receiver.clockDifference = std::nullopt;
    receiver.clockDifference = -3'600s;
    CHECK(told == std::vector<std::string>{
                      "No gpsd answers at localhost:2947 (unknown",
                      "No gpsd answers at localhost:2947 (refused",
                      "gpsd at localhost:2947 has no receiver",
                      "The receiver has no fix yet",
                      "The receiver has a fix",
                      "The receiver says nothing",
                      "The receiver has a fix again",
                      "The receiver was unplugged",
                      "The receiver has lost its fix",
                      "gpsd at localhost:2947 has gone (unknown",
                      "The receiver has a fix again",
                      "This machine's clock is 3600 s behind the receiver's, so its fixes cannot be used",
                      "This machine's clock is 3600 s ahead of the receiver's, so its fixes cannot be used",
                  });
}

/// Standard input is a terminal while it lives.
struct Terminal {
    Terminal() {
        check(grantpt(person) == 0 && unlockpt(person) == 0, "there are no terminals");
        const int program = open(ptsname(person), O_RDWR | O_NOCTTY);
        check(program >= 0 && dup2(program, STDIN_FILENO) == STDIN_FILENO, "the terminal cannot be used");
        close(program);
    }
    ~Terminal() {
        dup2(before, STDIN_FILENO);
        close(before);
        close(person);
    }
    /// Whether what is typed is shown.
    static bool showsKeys() {
        termios settings{};
        tcgetattr(STDIN_FILENO, &settings);
        return (settings.c_lflag & ECHO) != 0;
    }

    int before = dup(STDIN_FILENO);
    int person = posix_openpt(O_RDWR | O_NOCTTY);
};

Task<> heard(Completion<bool>& all) {
    co_await all;
}

TEST_CASE("keys and signals are heard one by one, and the terminal is as before afterwards") {
    const Terminal terminal;
    std::signal(SIGHUP, SIG_DFL);  // which whoever runs the tests may ignore
    EventLoop loop;
    std::string keys;
    int ends = 0;
    Completion<bool> all(loop);
    const auto resolve = all.resolver();
    const auto look = [&] {
        if (keys == "ps" && ends == 2) resolve(true);
    };
    {
        const LiveInput input(loop, LiveInput::Keys::heard,
                              {[&](char key) {
                                   keys += key;
                                   look();
                               },
                               [&] {
                                   ++ends;
                                   look();
                               }});
        CHECK(!Terminal::showsKeys());
        REQUIRE(write(terminal.person, "ps", 2) == 2);
        raise(SIGHUP);
        raise(SIGINT);
        loop.run(heard(all));
    }
    CHECK(Terminal::showsKeys());
}

/// A person's shell, in a terminal of its own.
class Shell {
public:
    explicit Shell(const std::filesystem::path& folder) {
        check(grantpt(person_) == 0 && unlockpt(person_) == 0, "there are no terminals");
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addchdir_np(&files, folder.c_str());
        posix_spawn_file_actions_addopen(&files, STDIN_FILENO, ptsname(person_), O_RDWR, 0);
        posix_spawn_file_actions_adddup2(&files, STDIN_FILENO, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&files, STDIN_FILENO, STDERR_FILENO);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
        // This one lets a job that runs in the background know nothing of coming to the foreground.
        std::string words[] = {"bash", "--norc", "--noediting", "-i"};
        std::string settings[] = {"TERM=xterm", "LC_ALL=C.UTF-8", "HOME=/nonexistent"};
        char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
        char* const variables[] = {settings[0].data(), settings[1].data(), settings[2].data(), nullptr};
        const int failure = posix_spawn(&process_, "/bin/bash", &files, &attributes, arguments, variables);
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&files);
        check(failure == 0, "there is no shell");
    }
    ~Shell() {
        close(person_);
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }

    void type(const std::string& keys) const {
        CHECK(write(person_, keys.data(), keys.size()) == static_cast<ssize_t>(keys.size()));
    }
    /// Whether `text` comes, after what was waited for before.
    bool shows(std::string_view text) {
        constexpr int patience = 60'000;  // milliseconds
        std::array<char, 4'096> bytes{};
        while (!shown_.contains(text)) {
            pollfd waiting{.fd = person_, .events = POLLIN, .revents = 0};
            const auto count = poll(&waiting, 1, patience) == 1 ? read(person_, bytes.data(), bytes.size()) : 0;
            if (count <= 0) return false;
            shown_.append(bytes.data(), static_cast<std::size_t>(count));
        }
        shown_.erase(0, shown_.find(text) + text.size());
        return true;
    }

private:
    int person_ = posix_openpt(O_RDWR | O_NOCTTY);
    pid_t process_ = 0;
    std::string shown_;
};

TEST_CASE("a recording draws and hears keys in the foreground only, and leaves the terminal to whoever has it") {
    const TemporaryFolder folder;
    Shell shell(folder.path());
    shell.type(PEDVAR_PROGRAM
               " record walk --gpsd localhost:1 --data data & until test -e data/defaults.sqlite; do :; done; "
               "echo begun\n");
    REQUIRE(shell.shows("begun\r\n"));
    shell.type("fg\n");
    REQUIRE(shell.shows("p pause   s stop"));
    shell.type("p");
    REQUIRE(shell.shows("r resume   s stop"));
    shell.type("\x1A");  // Ctrl-Z
    REQUIRE(shell.shows("\x1b[?1049l"));
    REQUIRE(shell.shows("Stopped"));
    shell.type("stty -a\n");
    REQUIRE(shell.shows(" icanon "));
    REQUIRE(shell.shows(" echo "));
    shell.type("bg; read -r line; echo \"read $line\"\nps\n");
    REQUIRE(shell.shows("read ps"));
    shell.type("jobs\n");
    REQUIRE(shell.shows("Running"));
    shell.type("fg\n");
    REQUIRE(shell.shows("r resume   s stop"));
    shell.type("s");
    CHECK(shell.shows("Recorded by"));
}

}  // namespace
}  // namespace pedvar
