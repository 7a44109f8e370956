#include "linux/location/gpsd_location_manager.h"
#include "linux/system/clocks.h"
#include "linux/system/event_loop.h"
#include "support/gpsd_rig.h"
#include "support/temporary_folder.h"

#include <doctest/doctest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace pedvar;
using namespace std::chrono_literals;
using State = ReceiverCondition::State;

namespace {

constexpr GpsdPatience patient{.reconnecting = 50ms, .silence = 1min, .dead = 2min};
constexpr GpsdPatience impatient{.reconnecting = 50ms, .silence = 2s, .dead = 5s};

/// The machine's clock with an error.
class WrongClock : public SystemClock {
public:
    Seconds error{};
    Date now() const override { return SystemClock::now() + error; }
};

/// A person on the way, and the one who listens.
class Listening : public CLLocationManagerDelegate {
public:
    /// Starts to listen to what answers at `port`.
    void listen(const std::string& port, const GpsdPatience& patience = patient) {
        manager.emplace(loop, clock, GpsdAddress{"127.0.0.1", port}, AccuracyFactors(), patience);
        watching = manager->condition.observe([this](const ReceiverCondition& now) {
            if (states.empty() || states.back() != now.state) states.push_back(now.state);
        });
        manager->setDelegate(this);
        manager->startUpdatingLocation();
    }

    /// Whether it comes true within a minute, while the receiver goes on to speak.
    bool comesTrue(const std::function<bool()>& isTrue) { return loop.run(waiting(isTrue)); }
    void passes(Seconds duration) { loop.run(sleeping(duration)); }
    bool becomes(State state) {
        return comesTrue([this, state] { return manager->condition->state == state; });
    }
    bool hearsFixes(std::size_t count) {
        fixes.clear();
        return comesTrue([this, count] { return fixes.size() >= count; });
    }

    void didUpdateLocations(std::span<const CLLocation> locations) override {
        fixes.insert(fixes.end(), locations.begin(), locations.end());
    }
    void didChangeAuthorization(CLAuthorizationStatus) override {}

    EventLoop loop;
    WrongClock clock;
    std::function<void()> speak;  // the receiver's part, ten times a second
    std::vector<CLLocation> fixes;
    std::vector<State> states;
    std::optional<GpsdLocationManager> manager;
    Subscription watching;

private:
    static Task<> sleeping(Seconds duration) { co_await sleepFor(duration); }
    Task<bool> waiting(const std::function<bool()>& isTrue) {
        for (int i = 0; i < 600; ++i) {
            if (isTrue()) co_return true;
            if (speak) speak();
            co_await sleepFor(100ms);
        }
        co_return false;
    }
};

/// With a real gpsd and a receiver that walks north.
class RealGpsd : public Listening {
public:
    RealGpsd() {
        speak = [this] { walk(); };
    }

    void walk() {
        if (!receiver) return;
        const double now = unixSeconds(SystemClock().now());
        latitude += 1.5e-6;
        receiver->say(hasFix ? nmeaFix(now, latitude, -11.25, 520) : nmeaWithoutFix(now));
    }
    void plugIn() { receiver = std::make_unique<NmeaReceiver>(); }
    void startDaemon() {
        gpsd = std::make_unique<Gpsd>(port, folder.path(),
                                      receiver ? std::vector{receiver->device()} : std::vector<std::string>{});
    }

    TemporaryFolder folder;
    std::string port = freePort();
    bool hasFix = true;
    double latitude = 48.1;
    std::unique_ptr<NmeaReceiver> receiver;
    std::unique_ptr<Gpsd> gpsd;
};

}  // namespace

TEST_CASE_FIXTURE(RealGpsd, "what a receiver says becomes fixes") {
    plugIn();
    startDaemon();
    listen(port);
    REQUIRE(hearsFixes(10));
    const CLLocation& fix = fixes.back();
    CHECK(fix.latitude == doctest::Approx(latitude).epsilon(1e-5));
    CHECK(fix.longitude == doctest::Approx(-11.25));
    CHECK(fix.altitude == doctest::Approx(520));
    CHECK(fix.horizontalAccuracy > 0);
    CHECK(fix.horizontalAccuracy < 50);
    CHECK(fix.verticalAccuracy > 0);
    CHECK(std::chrono::abs(fix.timestamp - clock.now()) < 5s);
    CHECK(manager->condition->state == State::fix);
    CHECK(!manager->clockDifference->has_value());
}

TEST_CASE_FIXTURE(RealGpsd, "a daemon that is killed is found again, and each change is told once") {
    plugIn();
    listen(port);
    REQUIRE(becomes(State::noDaemon));
    startDaemon();
    REQUIRE(hearsFixes(5));
    gpsd->kill();
    REQUIRE(becomes(State::noDaemon));
    passes(200ms);  // some attempts in vain
    startDaemon();
    REQUIRE(hearsFixes(5));
    std::erase(states, State::noFix);  // gpsd may report before it knows the date
    CHECK(states == std::vector{State::noDaemon, State::fix, State::noDaemon, State::fix});
}

TEST_CASE_FIXTURE(RealGpsd, "a receiver comes, loses its fix, falls silent, is unplugged and comes back") {
    startDaemon();
    listen(port, impatient);
    REQUIRE(becomes(State::noReceiver));
    plugIn();
    gpsd->add(receiver->device());
    REQUIRE(becomes(State::fix));
    hasFix = false;
    REQUIRE(becomes(State::noFix));
    hasFix = true;
    REQUIRE(becomes(State::fix));
    const std::string device = receiver->device();
    receiver.reset();
    REQUIRE(becomes(State::silent));
    gpsd->remove(device);
    REQUIRE(becomes(State::noReceiver));
    plugIn();
    gpsd->add(receiver->device());
    REQUIRE(becomes(State::fix));
    CHECK(hearsFixes(3));
}

TEST_CASE_FIXTURE(RealGpsd, "a clock that differs for long is named once, and not at all when it is right again") {
    plugIn();
    startDaemon();
    clock.error = 1h;
    listen(port);
    int named = 0;
    const auto counting = manager->clockDifference.observe([&](const auto& difference) {
        if (difference) ++named;
    });
    REQUIRE(comesTrue([&] { return named > 0; }));
    CHECK(manager->clockDifference->value().count() == doctest::Approx(-3'600).epsilon(0.01));
    REQUIRE(hearsFixes(10));
    CHECK(named == 1);
    clock.error = 0s;
    REQUIRE(comesTrue([&] { return !manager->clockDifference->has_value(); }));
    clock.error = -1h;  // set back, which no fix of before may excuse
    REQUIRE(comesTrue([&] { return named == 2; }));
    CHECK(manager->clockDifference->value().count() == doctest::Approx(3'600).epsilon(0.01));
}

TEST_CASE_FIXTURE(RealGpsd, "nothing is heard once updates have been stopped, nor is anything after the manager") {
    plugIn();
    startDaemon();
    listen(port);
    REQUIRE(hearsFixes(1));
    manager->stopUpdatingLocation();
    fixes.clear();
    for (int i = 0; i < 5; ++i) {
        walk();
        passes(100ms);
    }
    CHECK(fixes.empty());
    manager->startUpdatingLocation();
    REQUIRE(hearsFixes(1));
    walk();
    manager.reset();
    passes(300ms);
}

TEST_CASE_FIXTURE(Listening,
                  "a daemon that speaks nonsense is survived, and listened to as soon as it makes sense") {
    const std::string sense = R"({"class":"TPV","device":"d","mode":3,"lat":48.5,"lon":11.5,"eph":5})"
                              "\r\n";
    FalseDaemon daemon;
    listen(daemon.port(), impatient);
    const auto nextConnection = [&] {
        daemon.accept();
        fixes.clear();
    };
    SUBCASE("wrong types, broken lines and zeros") {
        nextConnection();
        daemon.say("{\"class\":\"TPV\",\"mode\":\"x\",\"class\":\"TPV\"}\n\n\n{{{{\n]\n" +
                   std::string(1'000, '\0') + "\n");
        daemon.say(sense);
    }
    SUBCASE("a report in pieces") {
        nextConnection();
        daemon.say(sense.substr(0, 30));
        passes(300ms);
        CHECK(fixes.empty());
        daemon.say(sense.substr(30));
    }
    SUBCASE("a line without end") {
        nextConnection();
        const std::string endless(1'000'000, '{');
        bool isHeard = true;
        while (isHeard) isHeard = daemon.say(endless);
        REQUIRE(becomes(State::noDaemon));
        nextConnection();
        daemon.say(sense);
    }
    SUBCASE("an end within a report") {
        nextConnection();
        daemon.say(sense.substr(0, 50));
        daemon.hangUp();
        REQUIRE(becomes(State::noDaemon));
        nextConnection();
        daemon.say(sense);
    }
    SUBCASE("nobody speaks for long") {
        nextConnection();
        REQUIRE(becomes(State::silent));
        nextConnection();
        daemon.say(sense);
    }
    SUBCASE("more than anybody can hear") {
        nextConnection();
        std::string flood;
        for (int i = 0; i < 10'000; ++i) flood += sense;
        CHECK(daemon.say(flood));
        REQUIRE(comesTrue([&] { return !fixes.empty(); }));
        passes(300ms);
    }
    REQUIRE(comesTrue([&] { return !fixes.empty(); }));
    CHECK(fixes.back().latitude == 48.5);
}
