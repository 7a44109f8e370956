/// Beginning, pausing, going on and ending.
#include "core/record_reader.h"
#include "recording/recorder_fixture.h"

using namespace pedvar;
using namespace std::chrono_literals;
using doctest::Approx;

namespace {

std::vector<UUID> pending(World& world) {
    return PendingWorkouts(world.documents).sessions();
}

}  // namespace

TEST_CASE_FIXTURE(Recording, "a walk is recorded, joins the history, and is written as a workout") {
    const Date start = time.now();
    walk.start(ActivityType::cycle);
    CHECK(recorder->isRecording);
    CHECK(recorder->activityType.value() == ActivityType::cycle);
    CHECK(launch->receiver.settings ==
          CLLocationSettings{.allowsBackgroundLocationUpdates = true, .activityType = CLActivityType::fitness});
    CHECK(launch->receiver.updatesLocation);
    CHECK(launch->receiver.updatesHeading);
    CHECK(launch->pedometer.start == start);
    CHECK(trace == std::vector<std::string>{"live start", "haptic success"});
    CHECK(documents.document(inProgressKey).contains("\"isActive\":true"));

    walk.fix().at(10).lasting(200s);
    launch->pedometer.count(321);
    CHECK(recorder->currentCalories == 80);
    CHECK(recorder->currentDuration == 200);
    time.advance(0.5s);
    CHECK(recorder->startRecording(ActivityType::run));  // does nothing
    REQUIRE(recorder->stopRecording());
    time.settle();

    const ActivitySession finished = *recorder->currentSession.value();
    const auto stored = recorder->savedSessions().wholeSession(finished.id);
    CHECK(encodeJson(stored.value()) == encodeJson(finished));
    CHECK(finished.activityType == ActivityType::cycle);
    CHECK(finished.endTime == start + 200.5s);
    CHECK(finished.duration == 200);  // that of the last tick
    CHECK(finished.steps == 321);
    CHECK(finished.distance == Approx(2000));
    CHECK(finished.averagePace == Approx(200.0 / 60 / 2));
    CHECK(finished.route.size() == 201);
    CHECK(!finished.isActive);
    CHECK(documents.document(inProgressKey).empty());
    CHECK(!recorder->isRunning());
    CHECK(recorder->currentSteps == 0);
    CHECK(recorder->totalDistance == 0);
    CHECK(recorder->elapsedTime == 0);
    CHECK(!launch->receiver.updatesLocation);
    CHECK(launch->receiver.updatesHeading);
    CHECK(!launch->pedometer.start);
    CHECK(trace.back() == "live end");

    REQUIRE(workoutStore.saved.size() == 1);
    const auto& [workout, way] = workoutStore.saved.front();
    CHECK(workout.uuid == finished.id);
    CHECK(workout.workoutActivityType == HKWorkoutActivityType::cycling);
    CHECK(workout.totalEnergyBurned.doubleValue(HKUnit::kilocalorie()) == 80);
    CHECK(way.size() == 201);
    CHECK(way.back() == locationOf(finished.route.back()));
    CHECK(pending(*this).empty());
    std::vector<std::string> told;
    for (const std::string& line : log.lines) {
        if (!line.contains("📡") && !line.contains("📍")) told.push_back(line.substr(line.find(": ") + 2));
    }
    CHECK(told == std::vector<std::string>{"🚶 Starting pedometer updates from: 2024-05-21 16:00:00 +0000",
                                           "👣 Steps updated: 321", "🛑 Stopped pedometer updates",
                                           "✅ GPS: Successfully inserted route data",
                                           "🏁 GPS: Finalizing route...", "✅ GPS: Route finalized successfully"});
}

TEST_CASE("ascent and descent stand in the workout from a metre on") {
    const struct {
        std::optional<double> gain, loss;
        std::vector<std::string> keys;
    } cases[] = {{1.0, 0.99, {HKMetadataKeyElevationAscended}},
                 {{}, 1.5, {HKMetadataKeyElevationDescended}},
                 {0.0, 0.0, {}}};
    for (const auto& [gain, loss, keys] : cases) {
        std::vector<std::string> found;
        const HKWorkout workout = workoutOf({.elevationGain = gain, .elevationLoss = loss});
        for (const auto& entry : workout.metadata) found.push_back(entry.first);
        CHECK(found == keys);
    }
    CHECK(workoutOf({.startTime = Date{9s}, .endTime = Date{5s}}).endDate == Date{9s});
}

TEST_CASE_FIXTURE(Recording, "calories are those of the kind of activity, cut off") {
    walk.start().fix().at(100).lasting(19s).at(99.9).lasting(1s);
    CHECK(recorder->currentCalories == 99);
    walk.at(0.11).lasting(1s);
    CHECK(recorder->currentCalories == 100);
}

TEST_CASE_FIXTURE(Recording, "a pause by hand stops everything but the steps") {
    walk.start().fix().lasting(10s);
    trace.clear();
    recorder->resumeRecording();  // nothing was paused
    CHECK(trace.empty());
    recorder->pauseRecording();
    recorder->pauseRecording();
    CHECK(trace == std::vector<std::string>{"haptic medium", "live update, paused"});
    CHECK(!recorder->isRecording);
    CHECK(recorder->isPaused);
    CHECK(!launch->receiver.updatesLocation);
    CHECK(!launch->receiver.updatesHeading);
    CHECK(readJson<InProgressState>(documents.document(inProgressKey))->isPaused);
    const double distance = recorder->totalDistance;
    walk.lasting(60s);
    launch->pedometer.count(77);
    CHECK(recorder->currentSteps == 77);
    CHECK(recorder->currentSession.value()->steps == 0);
    CHECK(recorder->currentDuration == 10);

    recorder->resumeRecording();
    CHECK(launch->receiver.updatesLocation);
    walk.lasting(1s);  // joins the fix before the pause
    CHECK(recorder->totalDistance == Approx(distance + 61 * 1.4));
    CHECK(recorder->currentDuration == 11);
    CHECK(recorder->currentSession.value()->steps == 77);
    recorder->pauseRecording();
    time.advance(5s);
    REQUIRE(recorder->stopRecording());
    CHECK(recorder->savedSessions().savedSessions().front().session.duration == 11);
    REQUIRE(recorder->stopRecording());
    CHECK(recorder->savedSessions().savedSessions().size() == 1);
}

TEST_CASE_FIXTURE(Recording, "a second recording has nothing of the first") {
    walk.autoPause(AutoPauseMode::on).start().fixAtHeight(10).at(20).fixAtHeight(40).at(0.1).lasting(5s);
    CHECK(recorder->isAutoPaused);
    REQUIRE(recorder->stopRecording());
    CHECK(!recorder->isAutoPaused);
    walk.start(ActivityType::run);
    CHECK(recorder->routeCoordinates->size() == 0);
    CHECK(!recorder->currentLocation.value());
    CHECK(recorder->gpsQuality().description.starts_with("Connecting"));
    walk.leap(500).fix().at(3).fixAtHeight(400);
    CHECK(recorder->totalDistance == Approx(3));
    CHECK(recorder->averageSpeed == Approx(3));
    CHECK(recorder->elevationGain == 0);
    CHECK(recorder->totalAutoPausedTime() == 0s);
}

TEST_CASE_FIXTURE(Recording, "permissions and a missing step counter are told, and the walk is recorded without") {
    SUBCASE("no permission for steps") {
        launch->pedometer.status = CMAuthorizationStatus::denied;
        walk.start();
        CHECK(recorder->motionAccessDenied);
        CHECK(lines("⚠️").front() == "⚠️ Motion & Fitness access denied - steps will not be counted");
        CHECK(!launch->pedometer.start);
        recorder->pauseRecording();
        launch->pedometer.status = CMAuthorizationStatus::authorized;
        recorder->resumeRecording();
        CHECK(launch->pedometer.start == time.now());
    }
    SUBCASE("no step counter") {
        launch->pedometer.isAvailable = false;
        walk.start();
        CHECK(!recorder->motionAccessDenied);
        CHECK(lines("⚠️").front() == "⚠️ Step counting not available on this device");
    }
    SUBCASE("a step counter that fails") {
        walk.start();
        launch->pedometer.fail("it is gone");
        CHECK(lines("❌").front() == "❌ Pedometer error: it is gone");
        CHECK(recorder->stepProblem.value()->inEnglish() == "it is gone");
        launch->pedometer.count(7);
        CHECK(!recorder->stepProblem.value());
    }
    SUBCASE("no permission for places until it is given") {
        launch->receiver.status = CLAuthorizationStatus::notDetermined;
        walk.start();
        CHECK(launch->receiver.authorizationRequests == 1);
        CHECK(!launch->receiver.updatesLocation);
        launch->receiver.answer(CLAuthorizationStatus::denied);
        CHECK(!launch->receiver.updatesLocation);
        launch->receiver.answer(CLAuthorizationStatus::authorizedWhenInUse);
        CHECK(launch->receiver.updatesLocation);
    }
    walk.fix().lasting(10s);
    CHECK(recorder->totalDistance == Approx(14));
}

TEST_CASE_FIXTURE(Recording, "the live activity hears of a change at most once a second, and of the last one") {
    walk.start();
    trace.clear();
    walk.lasting(0s).fix();
    launch->pedometer.count(1);
    launch->pedometer.count(2);
    CHECK(trace.empty());
    time.advance(1s);
    CHECK(trace == std::vector<std::string>{"live update"});
    CHECK(launch->live.state.steps == 2);
    REQUIRE(recorder->stopRecording());
    time.advance(5s);
    CHECK(trace == std::vector<std::string>{"live update", "live end"});
}

TEST_CASE_FIXTURE(Recording, "a clock that is set back makes no negative time, and costs one segment") {
    walk.start().fix().lasting(10s);
    time.setClock(time.now() - 1h);
    walk.lasting(5s);
    CHECK(recorder->currentDuration == 0);
    time.setClock(time.now() + 2h);
    walk.lasting(5s);
    CHECK(recorder->totalDistance == Approx(19 * 1.4));
}

TEST_CASE_FIXTURE(Recording, "the heart rate is that of the recording, as far as others measure it") {
    const auto beat = [&](double rate) {
        healthStore.add(HKQuantityTypeIdentifierHeartRate, HKUnit::countPerMinute(), rate, time.now());
        healthStore.samplesAdded.notify();
        time.advance(1s);
    };
    beat(60);
    walk.start();
    time.settle();
    CHECK(recorder->currentHeartRate == 0);
    beat(100);
    beat(120);
    CHECK(recorder->currentHeartRate == 120);
    CHECK(recorder->averageHeartRate == 110);
    REQUIRE(recorder->stopRecording());
    beat(90);
    CHECK(recorder->currentHeartRate == 0);
}
