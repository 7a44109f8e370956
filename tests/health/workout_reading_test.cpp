#include "support/manager_fixture.h"

#include <doctest/doctest.h>

using namespace pedvar;
using namespace std::chrono_literals;

namespace {

struct Walks : ManagerFixture {
    WorkoutReading& workouts = manager.workouts();
    Date midnight = settings.calendar().start(today);

    void walk(Seconds from, Seconds to, const char* activity = "HKWorkoutActivityTypeWalking") {
        store.workouts.push_back({.activityType = activity, .start = midnight + from, .end = midnight + to});
    }
    void beat(double rate, Seconds at) {
        store.add(HKQuantityTypeIdentifierHeartRate, HKUnit::countPerMinute(), rate, midnight + at);
    }
    std::optional<HeartRateSummary> heartOf(Day day) {
        workouts.loadWalkingHeartRate(day);
        time.settle();
        return workouts.walkingHeartRateSummary;
    }
};

}  // namespace

TEST_CASE_FIXTURE(Walks, "readings during walks of the day count, each once and no others") {
    walk(8h, 9h);
    walk(8h + 30min, 9h + 30min);  // another device's copy
    walk(-1h, 10min);              // over midnight
    walk(6h, 7h, "HKWorkoutActivityTypeRunning");
    for (const auto& [rate, at] : {std::pair<double, Seconds>{60, -30min},
                                   {90, 5min},
                                   {160, 6h + 30min},
                                   {70, 7h + 30min},
                                   {100, 8h + 45min},
                                   {110, 9h + 15min},
                                   {80, 9h + 30min}}) {
        beat(rate, at);
    }
    CHECK(heartOf(today) == HeartRateSummary{100, 90, 110});
    CHECK(heartOf(today - std::chrono::days(1)) == HeartRateSummary{60, 60, 60});
    CHECK(!heartOf(today - std::chrono::days(2)));
    CHECK(!workouts.isLoadingWalkingHR);
}

TEST_CASE_FIXTURE(Walks, "a newer day replaces the running load, and a past day is read once but for failures") {
    walk(-20h, -19h);
    beat(90, -19h - 30min);
    store.failures.emplace(HKQuantityTypeIdentifierHeartRate, HKError{"com.example.health", 6, "Locked"});
    CHECK(!heartOf(today - std::chrono::days(1)));
    store.failures.clear();
    store.isHolding = true;
    workouts.loadWalkingHeartRate(today);
    workouts.loadWalkingHeartRate(today - std::chrono::days(1));
    for (time.settle(); store.running() > 0; time.settle()) store.answer(store.running() - 1);
    CHECK(workouts.walkingHeartRateSummary.value() == HeartRateSummary{90, 90, 90});
    const std::size_t asked = store.asked.size();
    CHECK(heartOf(today - std::chrono::days(1)) == HeartRateSummary{90, 90, 90});
    CHECK(store.asked.size() == asked);
}

TEST_CASE_FIXTURE(Walks, "workouts of a time are published") {
    walk(8h, 9h);
    walk(10h, 11h);
    workouts.loadWorkouts({midnight, midnight + 9h});
    time.settle();
    CHECK(workouts.workoutData->size() == 1);
}
