#include "linux/health/sqlite_workout_store.h"
#include "linux/health_store_fixture.h"
#include "linux/stored_workouts.h"

namespace pedvar {
namespace {

struct WorkoutFixture : HealthStoreFixture {
    SqliteWorkoutStore workouts{database};
    HKWorkout walk{.uuid = UUID({1, 2, 3}),
                   .startDate = at(1000),
                   .endDate = at(4600),
                   .duration = Seconds{3000},
                   .totalEnergyBurned = {HKUnit::kilocalorie(), 150},
                   .totalDistance = {HKUnit::meter(), 3000.5},
                   .metadata = {{HKMetadataKeyElevationAscended, {HKUnit::centimeter(), 1250}}}};
    CLLocation place{.latitude = 52.5,
                     .longitude = -13.25,
                     .altitude = 34.5,
                     .horizontalAccuracy = 5,
                     .verticalAccuracy = 3,
                     .speed = 1.5,
                     .timestamp = Date{Seconds{1000.25}}};

    HKResult<void> save(const HKWorkout& workout) {
        return answerTo<void>([&](HKHandler<void> handler) { workouts.save(workout, std::move(handler)); });
    }
    HKResult<void> insert(HKWorkoutRouteBuilder& builder, std::vector<CLLocation> locations) {
        return answerTo<void>(
            [&](HKHandler<void> handler) { builder.insertRouteData(std::move(locations), std::move(handler)); });
    }
    HKResult<void> finish(HKWorkoutRouteBuilder& builder) {
        return answerTo<void>([&](HKHandler<void> handler) { builder.finishRoute(walk, std::move(handler)); });
    }
};

TEST_CASE_FIXTURE(WorkoutFixture, "a recorded workout is stored once with its route, like an imported one") {
    for (int round = 0; round < 2; ++round) {
        REQUIRE(save(walk));
        const auto builder = workouts.routeBuilder();
        CLLocation next = place;
        next.timestamp = at(1001);
        next.verticalAccuracy = next.speed = -1;
        REQUIRE(insert(*builder, {place}));
        REQUIRE(insert(*builder, {next}));
        REQUIRE(finish(*builder));
        walk.workoutActivityType = HKWorkoutActivityType::running;  // it stays what it was when it was saved
    }
    const auto stored = storedWorkouts(database);
    REQUIRE(stored.size() == 1);
    CHECK(stored[0].activityType == "HKWorkoutActivityTypeWalking");
    CHECK(stored[0].start == 1'000'000);
    CHECK(stored[0].end == 4'600'000);
    CHECK(stored[0].duration == 3000);
    CHECK(stored[0].distance == 3000.5);
    CHECK(stored[0].activeEnergy == 150);
    CHECK(stored[0].metadata ==
          std::vector<std::pair<std::string, std::string>>{
              {"HKElevationAscended", "12.5 m"}, {"HKExternalUUID", "01020300-0000-0000-0000-000000000000"}});
    REQUIRE(stored[0].routes.size() == 1);
    CHECK(stored[0].routes[0].name == "route_2001-01-01_00.16.40Z.gpx");
    CHECK(stored[0].routes[0].gpx == R"(<?xml version="1.0" encoding="UTF-8"?>
<gpx version="1.1" creator="Pedvar" xmlns="http://www.topografix.com/GPX/1/1">
  <trk>
    <name>Route 2001-01-01 00:16:40Z</name>
    <trkseg>
      <trkpt lon="-13.25" lat="52.5"><ele>34.5</ele><time>2001-01-01T00:16:40.250Z</time><extensions><speed>1.5</speed><hAcc>5</hAcc><vAcc>3</vAcc></extensions></trkpt>
      <trkpt lon="-13.25" lat="52.5"><time>2001-01-01T00:16:41Z</time><extensions><hAcc>5</hAcc></extensions></trkpt>
    </trkseg>
  </trk>
</gpx>
)");
}

TEST_CASE_FIXTURE(WorkoutFixture, "what is no workout or no way is refused with a reason") {
    const auto builder = workouts.routeBuilder();
    CHECK(!finish(*builder));
    place.altitude = none;
    CHECK(!insert(*builder, {place}));
    std::swap(walk.startDate, walk.endDate);
    CHECK(!save(walk));
    CHECK(storedWorkouts(database).empty());
}

}  // namespace
}  // namespace pedvar
