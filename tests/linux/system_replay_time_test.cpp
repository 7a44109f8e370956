#include "linux/replay/replay_time.h"

#include <doctest/doctest.h>

#include <cmath>

#include <chrono>
#include <cmath>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace pedvar {
namespace {

using namespace std::chrono_literals;
using AtEnd = ReplayTime::AtEnd;

constexpr Date start{Seconds{756'000'000.123}};

struct Ticking {
    explicit Ticking(std::optional<double> speed = std::nullopt) : time(start, speed) { tick(); }

    void tick() {
        timer = time.after(1s, [this] {
            seen.push_back("tick " + std::to_string(std::lround((time.now() - start).count())));
            tick();
        });
    }

    ReplayTime time;
    std::vector<std::string> seen;
    Timer timer;
};

TEST_CASE("what comes at the moment of a tick comes before it, after ten hours of ticks too") {
    Ticking replay;
    replay.time.passTo(start + 2s, AtEnd::wait);
    replay.seen.emplace_back("fix");
    replay.time.passTo(start + 2s, AtEnd::run);
    CHECK(replay.seen == std::vector<std::string>{"tick 1", "fix", "tick 2"});

    replay.time.passTo(start + 10h, AtEnd::wait);
    CHECK(replay.seen.back() == "tick 35999");
    CHECK(replay.time.now() == start + 10h);
    replay.time.passTo(replay.time.now(), AtEnd::run);
    CHECK(replay.seen.back() == "tick 36000");
}

TEST_CASE("timers of one moment run in the order of their making, and a cancelled one does not") {
    ReplayTime time(start, std::nullopt);
    std::string order;
    const Timer one = time.after(1s, [&] { order += '1'; });
    Timer cancelled = time.after(1s, [&] { order += 'x'; });
    const Timer two = time.after(1s, [&] { time.post([&] { order += 'p'; }); });
    const Timer three = time.after(1s, [&] { order += '3'; });
    cancelled.cancel();
    time.passTo(start + 2s, AtEnd::wait);
    CHECK(order == "1p3");
}

TEST_CASE("at a thousand times its speed a replay takes its share of time, and can be interrupted meanwhile") {
    const auto began = std::chrono::steady_clock::now();
    Ticking replay(1000);
    replay.time.passTo(start + 20s, AtEnd::run);
    CHECK(std::chrono::steady_clock::now() - began >= 20ms);
    CHECK(replay.seen.size() == 20);

    std::jthread person([&] {
        replay.time.post([&] {
            replay.seen.emplace_back("key");
            replay.time.interrupt();
        });
    });
    replay.time.passTo(start + 240h, AtEnd::run);
    CHECK(replay.seen.back() == "key");
    CHECK(replay.time.now() < start + 240h);
    CHECK(replay.time.isInterrupted());
}

}  // namespace
}  // namespace pedvar
