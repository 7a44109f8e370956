#include "core/async.h"

#include "core/published.h"
#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

Task<int> immediately(int value) {
    co_return value;
}

Task<int> later(int value) {
    co_await sleepFor(1s);
    co_return value;
}

Task<> append(std::vector<std::string>& trace, std::string name, Seconds pause) {
    const bool slept = co_await sleepFor(pause);
    trace.push_back(name + (slept ? "" : " cancelled"));
}

/// Says when it is destroyed.
struct Witness {
    std::vector<std::string>& trace;
    ~Witness() { trace.emplace_back("destroyed"); }
};

Task<> holdForever(std::vector<std::string>& trace) {
    const Witness witness{trace};
    co_await sleepFor(1h);
    trace.emplace_back("resumed");
}

Task<> awaiting(Task<> child) {
    co_await child;
}

Task<int> throwing() {
    co_await sleepFor(1s);
    throw std::runtime_error("fault");
}

Task<> catching(std::string& text) {
    try {
        co_await throwing();
    } catch (const std::runtime_error& error) {
        text = error.what();
    }
}

Task<> addAll(int& sum, int count) {
    for (int i = 0; i < count; ++i) sum += co_await immediately(1);
    sum += co_await later(1);
}

Task<> store(Completion<int>& answer, std::optional<int>& result) {
    result = co_await answer;
}

Task<> awaitEnd(CancellableTask task, std::vector<std::string>& trace) {
    co_await task.finished();
    trace.emplace_back("seen");
}

}  // namespace

TEST_CASE("sleeping tasks go on in the order of their times, none before its time") {
    VirtualTime time;
    TaskScope scope(time);
    std::vector<std::string> trace;
    scope.spawn(append(trace, "third", 3s));
    scope.spawn(append(trace, "first", 1s));
    scope.spawn(append(trace, "second", 1s));
    time.settle();
    CHECK(trace.empty());
    time.advance(999ms);
    CHECK(trace.empty());
    time.advance(1ms);
    CHECK(trace == std::vector<std::string>{"first", "second"});
    time.advance(2s);
    CHECK(trace.back() == "third");
}

TEST_CASE("a cancelled sleep ends at once and says so, also inside an awaited task") {
    VirtualTime time;
    TaskScope scope(time);
    std::vector<std::string> trace;
    auto task = scope.spawn(awaiting(append(trace, "inner", 1h)));
    time.settle();
    task.cancel();
    CHECK(trace.empty());  // nothing resumes inside cancel
    time.settle();
    CHECK(trace == std::vector<std::string>{"inner cancelled"});
    CHECK(task.isFinished());

    auto early = scope.spawn(append(trace, "early", 1h));
    early.cancel();
    time.settle();
    CHECK(trace.back() == "early cancelled");
}

TEST_CASE("destroying a scope destroys its tasks where they stand and drops their timers") {
    VirtualTime time;
    std::vector<std::string> trace;
    {
        TaskScope scope(time);
        scope.spawn(awaiting(holdForever(trace)));
        scope.spawn(append(trace, "never started", 0s));
        time.advance(1s);
        CHECK(trace == std::vector<std::string>{"never started"});
    }
    CHECK(trace.back() == "destroyed");
    time.advance(2h);
    CHECK(trace.back() == "destroyed");
}

TEST_CASE("exceptions travel from the awaited task to the awaiting one") {
    VirtualTime time;
    TaskScope scope(time);
    std::string text;
    scope.spawn(catching(text));
    time.advance(1s);
    CHECK(text == "fault");
}

TEST_CASE("a hundred thousand awaits in a row need no deep stack") {
    VirtualTime time;
    TaskScope scope(time);
    int sum = 0;
    scope.spawn(addAll(sum, 100'000));
    time.advance(1s);
    CHECK(sum == 100'001);
}

TEST_CASE("an answer from another thread arrives through the executor, a late one is dropped") {
    VirtualTime time;
    TaskScope scope(time);
    std::optional<int> result;
    Completion<int> answer(time);
    scope.spawn(store(answer, result));
    time.settle();
    std::jthread([resolve = answer.resolver()]() mutable { resolve(7); }).join();
    CHECK(!result);
    time.settle();
    CHECK(result == 7);

    auto late = Completion<int>(time).resolver();
    late(8);
    time.settle();
}

TEST_CASE("the end of a task is awaited before and after it came") {
    VirtualTime time;
    TaskScope scope(time);
    std::vector<std::string> trace;
    const auto task = scope.spawn(append(trace, "done", 1s));
    scope.spawn(awaitEnd(task, trace));
    time.advance(1s);
    scope.spawn(awaitEnd(task, trace));
    time.settle();
    CHECK(trace == std::vector<std::string>{"done", "seen", "seen"});
}

TEST_CASE("a published field tells changes only, in order, and not those who left") {
    Published<int> field(1);
    std::vector<std::string> trace;
    const auto first = field.observe([&](int value) { trace.push_back("first " + std::to_string(value)); });
    auto second = field.observe([&](int value) { trace.push_back("second " + std::to_string(value)); });
    field = 1;
    CHECK(trace.empty());
    field = 2;
    CHECK(trace == std::vector<std::string>{"first 2", "second 2"});
    second = {};
    field = 3;
    CHECK(trace.size() == 3);
}
