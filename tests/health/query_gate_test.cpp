#include "health/query_gate.h"

#include "support/virtual_time.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

struct Gate {
    VirtualTime time;
    QueryGate gate;
    std::vector<std::string> started;
    std::int64_t running = 0;
    std::int64_t mostRunning = 0;

    /// Takes a slot for `work`.
    Task<> query(std::string name, QueryPriority priority, Seconds work) {
        const QueryGate::Slot slot = co_await gate.acquireQuerySlot(priority);
        const Holder holder(*this);
        started.push_back(name);
        co_await sleepFor(work);
    }

    struct Holder {
        explicit Holder(Gate& all) : gate(all) { gate.mostRunning = std::max(gate.mostRunning, ++gate.running); }
        Holder(const Holder&) = delete;
        ~Holder() { --gate.running; }
        Gate& gate;
    };
};

}  // namespace

TEST_CASE_FIXTURE(Gate, "the seventh query waits, and normal ones overtake queued background ones in order") {
    TaskScope scope(time);
    for (int i = 0; i < 6; ++i) scope.spawn(query("first", QueryPriority::normal, i == 0 ? 1s : 10s));
    scope.spawn(query("background 1", QueryPriority::background, 1s));
    scope.spawn(query("background 2", QueryPriority::background, 1s));
    scope.spawn(query("normal 1", QueryPriority::normal, 1s));
    scope.spawn(query("normal 2", QueryPriority::normal, 1s));
    time.settle();
    CHECK(started.size() == 6);
    time.advance(5s);
    const std::vector<std::string> later(started.begin() + 6, started.end());
    CHECK(later == std::vector<std::string>{"normal 1", "normal 2", "background 1", "background 2"});
    CHECK(mostRunning == 6);
    time.advance(10s);
    CHECK(gate.activeQueryCount() == 0);
}

TEST_CASE_FIXTURE(Gate, "a waiter that is destroyed with a slot on its way hands it on") {
    TaskScope scope(time);
    auto holders = std::make_unique<TaskScope>(time);
    auto waiter = std::make_unique<TaskScope>(time);
    for (int i = 0; i < 6; ++i) holders->spawn(query("holder", QueryPriority::normal, 1h));
    time.settle();
    waiter->spawn(query("destroyed", QueryPriority::normal, 1h));
    time.settle();
    scope.spawn(query("next", QueryPriority::background, 1h));
    time.settle();
    holders.reset();  // the first freed slot is on its way to the waiter, which is not resumed yet
    waiter.reset();
    time.settle();
    CHECK(started.back() == "next");
    CHECK(gate.activeQueryCount() == 1);
}

TEST_CASE_FIXTURE(Gate, "arrivals, cancellations and destructions at random never exceed six and lose nobody") {
    std::mt19937 random(20240501);
    const auto chance = [&](unsigned oneIn) { return random() % oneIn == 0; };
    std::list<TaskScope> scopes;
    std::vector<CancellableTask> survivors;
    for (int i = 0; i < 3000; ++i) {
        TaskScope& scope = scopes.emplace_back(time);
        const auto priority = chance(2) ? QueryPriority::background : QueryPriority::normal;
        auto task = scope.spawn(query("", priority, std::chrono::milliseconds(random() % 100)));
        if (chance(5)) task.cancel();
        if (chance(2)) time.settle();
        if (chance(8)) {
            scopes.pop_back();
        } else {
            survivors.push_back(task);
        }
        time.advance(std::chrono::milliseconds(random() % 12));
        REQUIRE(running <= gate.activeQueryCount());
        REQUIRE(gate.activeQueryCount() <= 6);
    }
    time.advance(1h);
    CHECK(mostRunning == 6);
    CHECK(std::ranges::all_of(survivors, &CancellableTask::isFinished));
    CHECK(gate.activeQueryCount() == 0);
}
