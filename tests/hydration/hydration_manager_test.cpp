#include "hydration/hydration_manager.h"
#include "linux/system/system_random.h"
#include "support/manager_fixture.h"

#include <doctest/doctest.h>

namespace pedvar {
namespace {

using namespace std::chrono_literals;

struct Drinking : ManagerFixture {
    Drink drink(double milliliters, DrinkType type = DrinkType::water) {
        const auto drunk = time.run(water.drink(milliliters, type));
        REQUIRE(drunk);
        return *drunk;
    }
    void saveToHealth(bool isWished) {
        REQUIRE(time.run(water.changeSettings([&](HydrationSettings& edited) {
            edited.savesToHealth = isWished;
            return true;
        })));
    }
    double healthTotal() {
        return time.run(manager.reads().fetchWater(Date(), time.now() + 1h, QueryPriority::normal));
    }
    std::string ledger() { return defaults.document("hydrationDrinks.2024-05"); }

    FakeWidgetCenter widgets{trace};
    SystemRandom random;
    HydrationAppGroup group{defaults, time, widgets, log};
    HydrationManager water{time, time, store, manager.reads(), defaults, settings, random, group};
};

TEST_CASE_FIXTURE(Drinking, "the water of drinks counts once, wherever it is kept, and is taken back from there") {
    drink(250);
    saveToHealth(false);
    drink(200, DrinkType::coffee);
    store.add(HKQuantityTypeIdentifierDietaryWater, HKUnit::milliliter(), 100,
              time.now() - 1h);  // of another source
    time.run(water.refresh());
    CHECK(healthTotal() == 350);
    CHECK(water.todayMilliliters == doctest::Approx(250 + 198 + 100));
    CHECK(defaults.sharedDomain.real("hydrationTodayMilliliters") == doctest::Approx(548));
    CHECK(defaults.sharedDomain.real("hydrationLastAmountMilliliters") == 200);
    CHECK(water.todayDrinks->size() == 2);
    CHECK(time.run(water.fetchDays(today, today)).value()[0] == doctest::Approx(548));

    CHECK(time.run(water.undo())->drinkType == DrinkType::coffee);
    CHECK(time.run(water.undo())->milliliters == 250);
    CHECK(water.todayMilliliters == 100);
    CHECK(healthTotal() == 100);
    const auto nothing = time.run(water.undo());
    REQUIRE(!nothing);
    CHECK(std::get<DrinkRefusal>(nothing.error()) == DrinkRefusal::nothingToUndo);
}

TEST_CASE_FIXTURE(Drinking, "drinks of one moment stay two, and the last is the last of all processes") {
    HydrationManager other{time, time, store, manager.reads(), defaults, settings, random, group};
    drink(250);
    REQUIRE(time.run(other.drink(250, DrinkType::water)));
    drink(250);
    CHECK(water.todayDrinks->at(2).date > water.todayDrinks->at(1).date);
    CHECK(water.todayMilliliters == 750);
    REQUIRE(time.run(other.undo()));
    REQUIRE(time.run(water.undo()));
    CHECK(water.todayMilliliters == 250);
    CHECK(store.samples.size() == 1);
}

TEST_CASE_FIXTURE(Drinking, "a drink counts as long as it is listed, also when the health store did not follow") {
    drink(250);
    drink(300);
    store.samples.clear();  // the program ended before it wrote them, or between the two steps of an undo
    time.run(water.refresh());
    CHECK(water.todayMilliliters == 550);
    CHECK(!water.todayDrinks->at(0).isInHealth);
    CHECK(time.run(water.fetchDays(today, today)).value()[0] == 550);
    CHECK(time.run(water.undo())->milliliters == 300);
    CHECK(water.todayMilliliters == 250);
}

TEST_CASE_FIXTURE(Drinking,
                  "a drink that another process takes back before it is in the health store leaves nothing") {
    struct SlowStore : FakeHealthStore {
        SlowStore(const ZoneRules& zone, FakeDefaults& undone) : FakeHealthStore(zone), defaults(undone) {}
        void save(std::vector<HKQuantitySample> saved, HKHandler<void> completion) override {
            defaults.setDocument("hydrationDrinks.2024-05", "[]");
            FakeHealthStore::save(std::move(saved), std::move(completion));
        }
        FakeDefaults& defaults;
    };
    SlowStore slow(zone, defaults);
    HydrationManager racing{time, time, slow, manager.reads(), defaults, settings, random, group};
    REQUIRE(time.run(racing.drink(250, DrinkType::water)));
    CHECK(slow.samples.empty());
}

TEST_CASE_FIXTURE(Drinking,
                  "undo finds what was drunk where the next month had begun, and a look back sees less") {
    drink(250);
    time.advance(28 * 24h);
    const Drink east{random.uuid(), time.now() - 1h, 300, DrinkType::tea, 297, false};
    defaults.setDocument("hydrationDrinks.2024-06", encodeJson(std::vector{east}).value());
    time.run(water.read());
    CHECK(water.todayMilliliters == 297);
    HydrationManager earlier{time,     time,   store, manager.reads(), defaults,
                             settings, random, group, time.now() - 2h};
    time.run(earlier.read());
    CHECK(earlier.todayMilliliters == 0);
    CHECK(time.run(water.undo())->drinkType == DrinkType::tea);
    CHECK(defaults.document("hydrationDrinks.2024-06") == "[]");
}

TEST_CASE_FIXTURE(Drinking, "an impossible amount, or a store that refuses, leaves everything as it was") {
    drink(300);
    const std::string before = ledger();
    for (const double amount : {0.0, -250.0, 5000.5, std::numeric_limits<double>::quiet_NaN()}) {
        const auto refused = time.run(water.drink(amount, DrinkType::water));
        REQUIRE(!refused);
        CHECK(std::get<DrinkRefusal>(refused.error()) == DrinkRefusal::impossibleAmount);
    }
    store.writeError = HKError{"com.example.health", 6, "The store is locked"};
    CHECK(std::get<HKError>(time.run(water.drink(250, DrinkType::water)).error()) == *store.writeError);
    CHECK(std::get<HKError>(time.run(water.undo()).error()) == *store.writeError);
    CHECK(ledger() == before);
    CHECK(group.lastAmountMilliliters() == 300);
    store.writeError.reset();
    defaults.failure = DefaultsError{"The disk is full.", DefaultsError::Kind::full};
    CHECK(std::get<DefaultsError>(time.run(water.drink(250, DrinkType::water)).error()).message ==
          "The disk is full.");
    CHECK(healthTotal() == 300);
}

TEST_CASE_FIXTURE(Drinking, "the goal follows the newest weight where the person wants it and one is known") {
    CHECK(goalByWeight(70) == 2300);
    CHECK(goalByWeight(1) == lowestWaterGoal);
    REQUIRE(time.run(water.changeSettings([](HydrationSettings& edited) {
        edited.goalMilliliters = 1800;
        return edited.isGoalByWeight = true;
    })));
    CHECK(water.goalMilliliters == 1800);
    store.add(HKQuantityTypeIdentifierBodyMass, HKUnit::kilogram(), 90, time.now() - 48h);
    store.add(HKQuantityTypeIdentifierBodyMass, HKUnit::kilogram(), 80, time.now() - 24h);
    time.run(water.refresh());
    CHECK(water.goalMilliliters == 2650);
    CHECK(defaults.sharedDomain.real("hydrationGoalMilliliters") == 2650);
}

TEST_CASE_FIXTURE(Drinking, "documents that do not decode count as absent and are kept aside") {
    for (const char* damaged : {"{\"containers\":[{\"label\":\"Mug\"}]}", "[]", "{"}) {
        defaults.standardDomain.values.clear();
        defaults.setDocument("hydrationSettings", damaged);
        CHECK(water.settings().containers == defaultHydrationSettings().containers);
        saveToHealth(false);
        CHECK(defaults.document("hydrationSettings.unreadable") == damaged);
        CHECK(!water.settings().savesToHealth);
    }
    const Drink sound{random.uuid(), time.now(), 250, DrinkType::water, 250, false};
    Drink distant = sound, negative = sound;
    distant.date = Date(Seconds(1e300));
    negative.waterMilliliters = -1;
    for (const std::string& damaged : {std::string("[{}]"), encodeJson(std::vector{distant, distant}).value(),
                                       encodeJson(std::vector{negative}).value()}) {
        defaults.standardDomain.values.clear();
        defaults.setDocument("hydrationDrinks.2024-05", damaged);
        CHECK(water.unreadableKeys() == std::vector<std::string>{"hydrationDrinks.2024-05"});
        drink(250);
        CHECK(water.todayDrinks->size() == 1);
        CHECK(water.unreadableKeys().empty());
        CHECK(defaults.document("hydrationDrinks.2024-05.unreadable") == damaged);
    }
}

TEST_CASE_FIXTURE(Drinking, "the volume unit is that of the preferences") {
    REQUIRE(settings.changePreferences(
        [](UserPreferences& preferences) { preferences.volumeUnit = VolumeUnit::fluidOunces; }));
    CHECK(water.settings().volumeUnit == VolumeUnit::fluidOunces);
    time.run(water.refresh());
    CHECK(defaults.sharedDomain.text("hydrationVolumeUnit") == "floz");
}

}  // namespace
}  // namespace pedvar
