#include "support/manager_fixture.h"

#include <doctest/doctest.h>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

struct Body : ManagerFixture {
    BodyMetrics& body = manager.body();

    void weigh(double kilograms, Date moment, Seconds length = {}) {
        store.add(HKQuantityTypeIdentifierBodyMass, HKUnit::kilogram(), kilograms, moment, {}, length);
    }
};

}  // namespace

TEST_CASE_FIXTURE(Body, "the sample that ends last, up to now, is the current one") {
    weigh(80, time.now() - 48h);
    weigh(79, time.now() - 60h, 24h);
    weigh(60, time.now() + 1h);
    store.add(HKQuantityTypeIdentifierHeight, HKUnit::meter(), 1.75, time.now() - 9000h);
    time.run(body.loadBodyMetrics());
    CHECK(body.currentWeight.value() == 79);
    CHECK(body.currentHeight.value() == 175);
    CHECK(time.run(body.saveBodyMassToHealthKit(78.5)));
    CHECK(time.run(body.saveHeightToHealthKit(176)));
    time.run(body.loadBodyMetrics());
    CHECK(body.currentWeight.value() == 78.5);
    CHECK(body.currentHeight.value() == 176);
}

TEST_CASE_FIXTURE(Body, "a save during a load wins over both values that the load has read") {
    weigh(80, time.now() - 48h);
    store.isHolding = true;
    TaskScope tasks(time);
    tasks.spawn(body.loadBodyMetrics());
    time.settle();
    CHECK(time.run(body.saveHeightToHealthKit(176)));
    CHECK(!body.didLoadBodyMetrics);
    while (store.running() > 0) {
        store.answer();
        time.settle();
    }
    CHECK(body.didLoadBodyMetrics);
    CHECK(body.currentHeight.value() == 176);
    CHECK(!body.currentWeight.value());
}

TEST_CASE_FIXTURE(Body, "a failed save changes nothing and lets a running load publish") {
    weigh(80, time.now() - 48h);
    store.isHolding = true;
    store.writeError = HKError{"SQLite", 13, "The disk is full"};
    TaskScope tasks(time);
    tasks.spawn(body.loadBodyMetrics());
    time.settle();
    CHECK(!time.run(body.saveBodyMassToHealthKit(70)));
    CHECK(!body.currentWeight.value());
    store.isHolding = false;
    store.answer();
    time.settle();
    CHECK(body.currentWeight.value() == 80);
}

TEST_CASE_FIXTURE(Body, "weight readings come oldest first, those that reach into the interval with them") {
    weigh(81, time.now() - 1h);
    weigh(80, time.now() - 5h, 2h);
    weigh(82, time.now() - 9h);
    const auto readings = time.run(body.fetchWeightReadings(time.now() - 4h, time.now()));
    REQUIRE(readings.size() == 2);
    CHECK(readings[0].quantity.doubleValue(HKUnit::kilogram()) == 80);
    CHECK(readings[1].quantity.doubleValue(HKUnit::kilogram()) == 81);
    CHECK(time.run(body.fetchWeightReadings(time.now(), time.now() + 1h)).empty());
}

TEST_CASE_FIXTURE(Body, "a target weight that the watch keeps follows the person's, and the other way round") {
    REQUIRE(defaults.write({{defaults.shared(), "targetWeight", 75.0}}));
    time.run(manager.refreshToday());
    CHECK(body.personalMetrics->targetWeight == 75);
    REQUIRE(body.changePersonalMetrics([](PersonalMetrics& metrics) { metrics.targetWeight = 72; }));
    time.run(manager.refreshToday());
    CHECK(body.personalMetrics->targetWeight == 72);
    REQUIRE(body.changePersonalMetrics([](PersonalMetrics& metrics) { metrics.targetWeight.reset(); }));
    time.run(manager.refreshToday());
    CHECK(!body.personalMetrics->targetWeight);
}
