#include "platform/stored_workouts.h"
#include "linux/health_store_fixture.h"

namespace pedvar {
namespace {

struct Stored : HealthStoreFixture {
    std::vector<StoredWorkout> workouts(std::int64_t from, std::int64_t to) {
        const auto found =
            answerTo<std::vector<StoredWorkout>>([&](HKHandler<std::vector<StoredWorkout>> handler) {
                store.execute(HKWorkoutQuery{{at(from), at(to)}, std::move(handler)});
            });
        REQUIRE(found);
        return *found;
    }
    std::vector<StoredRoute> routes(std::int64_t workout) {
        const auto found = answerTo<std::vector<StoredRoute>>([&](HKHandler<std::vector<StoredRoute>> handler) {
            store.execute(HKWorkoutRouteQuery{workout, std::move(handler)});
        });
        REQUIRE(found);
        return *found;
    }
    void add(WorkoutRow workout) {
        workout.source = source(SourceKind::watch, "Watch");
        REQUIRE(writer.write({}, {&workout, 1}));
    }
};

TEST_CASE_FIXTURE(Stored,
                  "workouts come with what the export told, those that reach into the interval, by start") {
    CHECK(workouts(0, day).empty());
    const std::string gpx = "<gpx>" + std::string(10'000, ' ') + "</gpx>";
    add({.activityType = "HKWorkoutActivityTypeHiking", .start = 7'200'000, .end = 9'000'000, .duration = 1700});
    add({.activityType = "HKWorkoutActivityTypeWalking",
         .start = 3'600'000,
         .end = 7'200'000,
         .duration = 3500,
         .distance = 4321.5,
         .activeEnergy = 210,
         .statistics = {},
         .metadata = {{"HKElevationAscended", "1234 cm"}, {"HKElevationDescended", "12 kg"}},
         .routes = {{"b.gpx", gpx}, {"a.gpx", "<gpx/>"}}});
    const auto found = workouts(7199, 7201);
    REQUIRE(found.size() == 2);
    CHECK(found[0] == StoredWorkout{.id = 2,
                                    .activityType = "HKWorkoutActivityTypeWalking",
                                    .start = at(3600),
                                    .end = at(7200),
                                    .duration = 3500,
                                    .distance = 4321.5,
                                    .activeEnergy = 210,
                                    .elevationGain = 12.34,
                                    .elevationLoss = std::nullopt,
                                    .routeCount = 2,
                                    .source = {1, "Watch"}});
    CHECK(workouts(7200, 7201).size() == 1);
    CHECK(workouts(0, 3600).empty());
    CHECK(routes(2) == std::vector<StoredRoute>{{"a.gpx", "<gpx/>"}, {"b.gpx", gpx}});
    CHECK(routes(1).empty());
    database.connectForWriting()->run("UPDATE workout_routes SET deflated = x'00' WHERE name = 'a.gpx'");
    CHECK(routes(2).size() == 1);
}

}  // namespace
}  // namespace pedvar
