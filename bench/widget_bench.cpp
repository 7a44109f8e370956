/// How long a status bar waits: from a finished write to the new line of a follower, against a byte's round trip
/// between two processes.
///
/// widget_bench PEDVAR
#include "bench.h"
#include "companion/app_group_manager.h"
#include "linux/system/clocks.h"
#include "linux/system/sqlite_defaults.h"
#include "linux/system/widget_reloads.h"
#include "support/fake_log.h"
#include "support/temporary_folder.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <functional>

using namespace pedvar;
using namespace pedvar::bench;

namespace {

using Pipe = std::array<int, 2>;

Pipe makePipe() {
    Pipe ends{};
    check(::pipe2(ends.data(), O_CLOEXEC) == 0, "there is no pipe");
    return ends;
}

/// A process that runs `body` and ends with it.
pid_t inProcess(const std::function<void()>& body) {
    const pid_t process = ::fork();
    check(process >= 0, "there is no process");
    if (process > 0) return process;
    body();
    ::_exit(1);
}

/// Reads up to the end of a line.
void readLine(int descriptor) {
    char character = 0;
    std::array<char, 4096> buffer{};
    while (character != '\n') {
        const ssize_t size = ::read(descriptor, buffer.data(), buffer.size());
        check(size > 0, "the other process has ended");
        character = buffer[static_cast<std::size_t>(size) - 1];
    }
}

}  // namespace

int main(int count, char** words) {
    if (count != 2) {
        std::fprintf(stderr, "usage: widget_bench PEDVAR\n");
        return 2;
    }
    const TemporaryFolder folder;
    const std::string data = folder.path().string();
    SqliteDefaults defaults(folder.path(), SqliteDefaults::Access::readWrite);
    SystemClock clock;
    FakeLog log;
    AppGroupManager group(defaults, clock, log);
    FollowedWidgets widgets(folder.path());
    group.saveTodayData(0, 0, 0);

    const Pipe there = makePipe(), back = makePipe(), lines = makePipe();
    const pid_t echo = inProcess([&] {
        for (char byte = 0; ::read(there[0], &byte, 1) == 1;) {
            if (::write(back[1], &byte, 1) != 1) return;
        }
    });
    const pid_t follower = inProcess([&] {
        ::dup2(lines[1], STDOUT_FILENO);
        ::execl(words[1], words[1], "--data", data.c_str(), "widget", "--follow", nullptr);
    });
    readLine(lines[0]);
    std::vector<double> echoes, reloads;
    for (int round = 1; round <= 1001; ++round) {
        group.saveTodayData(round, 0, 0);
        echoes.push_back(secondsOf([&] {
            char byte = '\n';
            check(::write(there[1], &byte, 1) == 1, "the other process has ended");
            readLine(back[0]);
        }));
        reloads.push_back(secondsOf([&] {
            widgets.reloadAllTimelines();
            readLine(lines[0]);
        }));
    }
    ::kill(echo, SIGTERM);
    ::kill(follower, SIGTERM);
    while (::wait(nullptr) > 0) {
    }
    const double ratio = median(reloads) / median(echoes);
    row("from a finished write to the new line of `widget --follow`, against a byte's round trip", ratio, 10,
        milliseconds(median(reloads)) + " to " + milliseconds(median(echoes)));
}
