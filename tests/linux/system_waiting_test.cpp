#include "linux/system/child_process.h"
#include "linux/system/clocks.h"
#include "linux/system/event_loop.h"
#include "linux/system/folder_watch.h"
#include "linux/system/readiness.h"
#include "linux/system/wall_clock_alarm.h"
#include "linux/system/widget_reloads.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <set>
#include <utility>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

bool clockWasSet = false;

}  // namespace

/// In place of the C library's: like the kernel, it sets the timer and says once that the clock was set meanwhile.
extern "C" int timerfd_settime(int timer, int flags, const itimerspec* time, itimerspec* before) noexcept {
    const auto result = static_cast<int>(syscall(SYS_timerfd_settime, timer, flags, time, before));
    if (!std::exchange(clockWasSet, false)) return result;
    errno = ECANCELED;
    return -1;
}

namespace {

struct Waiting {
    EventLoop loop;
    Readiness readiness{loop};

    static Task<> untilReached(std::function<bool()> isReached) {
        for (int i = 0; i < 2'000 && !isReached(); ++i) co_await sleepFor(5ms);
    }
    bool reaches(const std::function<bool()>& isReached) {
        loop.run(untilReached(isReached));
        return isReached();
    }
};

}  // namespace

TEST_CASE_FIXTURE(Waiting, "each readable descriptor is told of until nobody listens, also from within the news") {
    const int first = eventfd(0, EFD_NONBLOCK), second = eventfd(0, EFD_NONBLOCK);
    int firstCount = 0, secondCount = 0;
    std::optional<Subscription> once;
    eventfd_t value = 0;
    const Subscription always =
        readiness.onReadable(first, [&] { firstCount += eventfd_read(first, &value) == 0; });
    once = readiness.onReadable(second, [&] {
        ++secondCount;
        once.reset();
    });
    for (int i = 1; i <= 3; ++i) {
        eventfd_write(first, 1);
        eventfd_write(second, 1);
        CHECK(reaches([&] { return firstCount == i && secondCount == 1; }));
    }
    const Subscription anew =
        readiness.onReadable(second, [&] { secondCount += 10 * (eventfd_read(second, &value) == 0); });
    CHECK(reaches([&] { return secondCount == 11; }));
    CHECK(firstCount == 3);
    close(first);
    close(second);
}

TEST_CASE_FIXTURE(Waiting, "what others write in a folder is told by name, finished files once they are closed") {
    const TemporaryFolder folder;
    std::set<std::string> written, finished;
    const auto taking = [](std::set<std::string>& into) {
        return [&into](const std::vector<std::string>& names) { into.insert(names.begin(), names.end()); };
    };
    const auto all = FolderWatch::open(readiness, folder.path(), FolderWatch::Change::anyWrite, taking(written));
    const auto whole =
        FolderWatch::open(readiness, folder.path(), FolderWatch::Change::finishedFile, taking(finished));
    REQUIRE(all);
    REQUIRE(whole);
    std::ofstream half(folder / "half");
    half << "half" << std::flush;
    writeFile(folder / "closed", "whole");
    std::filesystem::rename(folder / "closed", folder / "moved");
    CHECK(reaches([&] { return finished == std::set<std::string>{"closed", "moved"}; }));
    CHECK(written == std::set<std::string>{"closed", "half", "moved"});
    half.close();
    CHECK(reaches([&] { return finished.contains("half"); }));
    CHECK(!FolderWatch::open(readiness, folder / "absent", FolderWatch::Change::anyWrite, [](const auto&) {}));

    std::filesystem::create_directory(folder / "inner");
    int news = 0;
    const auto inner =
        FolderWatch::open(readiness, folder / "inner", FolderWatch::Change::newEntry, [&](const auto& names) {
            CHECK(names.empty());
            ++news;
        });
    REQUIRE(inner);
    CHECK(!(*inner)->hasEnded());
    std::filesystem::rename(folder / "inner", folder / "elsewhere");
    CHECK(reaches([&] { return news == 1; }));
    CHECK((*inner)->hasEnded());
}

TEST_CASE_FIXTURE(Waiting, "an alarm rings when its moment is over, at once for a moment of the past, and once") {
    const SystemClock clock;
    int rings = 0;
    WallClockAlarm alarm(readiness, [&] { ++rings; });
    alarm.set(clock.now() - 1h);
    CHECK(reaches([&] { return rings == 1; }));
    const Date due = clock.now() + 10ms;
    alarm.set(due);
    CHECK(reaches([&] { return rings == 2; }));
    CHECK(clock.now() >= due);
    alarm.set(clock.now() + 1h);
    alarm.set(dateFromUnix(-5));
    CHECK(reaches([&] { return rings == 3; }));
}

TEST_CASE_FIXTURE(Waiting,
                  "a clock that was set since it was looked at rings the alarm and ends a follower's wait") {
    const Date later = SystemClock().now() + 1h;
    int rings = 0;
    WallClockAlarm alarm(readiness, [&] { ++rings; });
    clockWasSet = true;
    alarm.set(later);
    CHECK(reaches([&] { return rings == 1; }));
    const TemporaryFolder folder;
    auto reloads = WidgetReloads::of(folder.path());
    REQUIRE(reloads);
    clockWasSet = true;
    CHECK(reloads->wait(later, STDOUT_FILENO) == WidgetReloads::Wake::time);
    FollowedWidgets(folder.path()).reloadAllTimelines();
    CHECK(reloads->wait(later, STDOUT_FILENO) == WidgetReloads::Wake::reload);
}

TEST_CASE_FIXTURE(Waiting, "a program's end is told with its code, and who loses interest ends it") {
    std::optional<int> code;
    auto child = ChildProcess::start(readiness, {"sh", "-c", "exit 7"}, [&](int exitCode) { code = exitCode; });
    REQUIRE(child);
    CHECK(reaches([&] { return code == 7; }));
    code.reset();
    child = ChildProcess::start(readiness, {"sleep", "600"}, [&](int exitCode) { code = exitCode; });
    REQUIRE(child);
    child->reset();
    CHECK(!code);
    CHECK(!ChildProcess::start(readiness, {"/nonexistent/program"}, [](int) {}));
}
