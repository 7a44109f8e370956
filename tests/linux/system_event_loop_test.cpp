#include "linux/system/event_loop.h"

#include <doctest/doctest.h>

#include <string>
#include <thread>
#include <vector>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

Task<> wait(Seconds duration) {
    co_await sleepFor(duration);
}

}  // namespace

TEST_CASE("timers run in the order in which they are due and cancelled ones never") {
    EventLoop loop;
    std::string order;
    const Timer late = loop.after(4ms, [&] { order += "c"; });
    const Timer early = loop.after(1ms, [&] { order += "a"; });
    const Timer second = loop.after(1ms, [&] { order += "b"; });
    Timer cancelled = loop.after(2ms, [&] { order += "x"; });
    cancelled.cancel();
    loop.run(wait(6ms));
    CHECK(order == "abc");
}

TEST_CASE("a timer that is cancelled when it is due already does not run") {
    EventLoop loop;
    bool hasRun = false;
    Timer victim;
    const Timer first = loop.after(0s, [&] { victim.cancel(); });
    victim = loop.after(0s, [&] { hasRun = true; });
    loop.run(wait(1ms));
    CHECK(!hasRun);
}

TEST_CASE("delays beyond all clocks neither run nor keep others waiting") {
    EventLoop loop;
    bool hasRun = false;
    const Timer never = loop.after(Seconds{1e300}, [&] { hasRun = true; });
    loop.run(wait(Seconds{-1}));
    CHECK(!hasRun);
}

TEST_CASE("answers of many threads all arrive on the thread that runs the loop") {
    constexpr int threadCount = 4, answersEach = 500;
    EventLoop loop;
    int received = 0;
    Completion<int> done(loop);
    auto resolver = done.resolver();
    const auto receive = [&, runner = std::this_thread::get_id()] {
        if (std::this_thread::get_id() == runner) ++received;
        if (received == threadCount * answersEach) resolver(received);
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&] {
            for (int answer = 0; answer < answersEach; ++answer) loop.post(receive);
        });
    }
    const auto awaited = [](Completion<int>& completion) -> Task<int> { co_return co_await completion; };
    CHECK(loop.run(awaited(done)) == threadCount * answersEach);
}

TEST_CASE("what is still queued when a task ends runs with the next one") {
    EventLoop loop;
    bool hasRun = false;
    const auto posting = [](EventLoop& executor, bool& flag) -> Task<int> {
        executor.post([&flag] { flag = true; });
        co_return 7;
    };
    CHECK(loop.run(posting(loop, hasRun)) == 7);
    CHECK(!hasRun);
    loop.run(wait(0s));
    CHECK(hasRun);
}
