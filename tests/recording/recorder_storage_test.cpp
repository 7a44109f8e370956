/// What outlives the program.
#include "core/record_reader.h"
#include "linux/health/sqlite_workout_store.h"
#include "linux/stored_workouts.h"
#include "linux/system/event_loop.h"
#include "linux/system/sqlite_document_parts.h"
#include "linux/system/system_random.h"
#include "recording/recorder_fixture.h"
#include "routes/read_gpx.h"
#include "support/temporary_folder.h"

using namespace pedvar;
using namespace std::chrono_literals;
using doctest::Approx;

TEST_CASE_FIXTURE(Recording, "a killed recording goes on where its checkpoint was") {
    walk.start(ActivityType::hike).fixAtHeight(100).fixAtHeight(110).at(10).lasting(13s);
    launch->pedometer.count(50);
    const auto checkpoint = readJson<InProgressState>(documents.document(inProgressKey)).value();
    CHECK(checkpoint.checkpointDate >= time.now() - 5s);
    CHECK(!recorder->didRestoreInProgressSession);
    time.advance(600s);  // while it runs on without fixes
    launch.reset();
    time.advance(1h);
    killAndStart();

    CHECK(recorder->didRestoreInProgressSession);
    CHECK(recorder->isRecording);
    CHECK(recorder->activityType.value() == ActivityType::hike);
    CHECK(recorder->totalDistance == Approx(1.4 + 130));
    CHECK(recorder->elevationGain == 10);
    CHECK(recorder->routeCoordinates->size() == 15);
    CHECK(recorder->currentSteps == 50);
    CHECK(launch->receiver.updatesLocation);
    CHECK(launch->receiver.settings);
    CHECK(launch->pedometer.start == checkpoint.sessionStartDate);
    CHECK(launch->pedometer.known == 50);
    time.advance(1s);
    CHECK(recorder->currentDuration == 15 + 600 + 3600 + 1);

    // The way to the first fix is unknown, and its height is compared with the last one.
    walk.leap(150).fixAtHeight(300).lasting(1s);
    CHECK(recorder->totalDistance == Approx(1.4 + 130 + 10));
    CHECK(recorder->currentElevation.value() == 110);
    CHECK(recorder->elevationGain == 10);
    REQUIRE(recorder->stopRecording());
    time.settle();
    REQUIRE(workoutStore.saved.size() == 1);
    CHECK(workoutStore.saved[0].route.size() == 17);
}

TEST_CASE_FIXTURE(Recording, "a paused recording is paused after a kill too, and counts steps") {
    walk.start().fix().lasting(10s);
    recorder->pauseRecording();
    time.advance(50s);
    killAndStart();
    CHECK(recorder->isPaused);
    CHECK(!recorder->isRecording);
    CHECK(!launch->receiver.updatesLocation);
    CHECK(launch->pedometer.start);
    launch->pedometer.count(9);
    time.advance(50s);
    CHECK(recorder->currentDuration == 10);
    recorder->resumeRecording();
    time.advance(1s);
    CHECK(recorder->currentDuration == 11);
    CHECK(recorder->currentSteps == 9);
}

TEST_CASE_FIXTURE(Recording, "what a guided program keeps in a checkpoint passes through unharmed") {
    walk.start();
    auto state = readJson<InProgressState>(documents.document(inProgressKey)).value();
    state.japaneseProgramRawValue = "interval";
    state.japanesePhaseSecondsRemaining = 42;
    launch.reset();
    documents.state.frames.erase(inProgressKey);
    documents.state.values.emplace(inProgressKey, Data{encodeJson(state).value()});
    killAndStart();
    time.advance(6s);
    const auto after = readJson<InProgressState>(documents.document(inProgressKey)).value();
    CHECK(after.japaneseProgramRawValue == "interval");
    CHECK(after.japanesePhaseSecondsRemaining == 42);
}

TEST_CASE_FIXTURE(Recording, "workouts that a kill or a failure has left are written at the next start, once") {
    walk.start().fix().lasting(10s);
    std::vector<std::string> told{"❌ HealthKit: Failed to save workout - no space"};
    std::size_t points = 11;
    SUBCASE("the program is killed before") {
        REQUIRE(recorder->stopRecording());
        launch.reset();  // the answers and the workout are still to come
        told.clear();
    }
    SUBCASE("the workout cannot be saved") {
        workoutStore.writeError = HKError{"SQLite", 13, "no space"};
        REQUIRE(recorder->stopRecording());
    }
    SUBCASE("the route cannot be inserted") {
        workoutStore.insertError = HKError{"SQLite", 13, "no space"};
        REQUIRE(recorder->stopRecording());
        told = {"❌ Failed to save workout route: no space"};
    }
    SUBCASE("the route cannot be finished") {
        workoutStore.finishError = HKError{"SQLite", 13, "no space"};
        REQUIRE(recorder->stopRecording());
        told = {};
    }
    SUBCASE("an old checkpoint was closed") {
        launch.reset();
        time.advance(12h + 6s);
        told.clear();
        points = 10;  // the last checkpoint came just before the last fix
    }
    time.settle();
    CHECK(lines("❌") == told);
    CHECK(lines("Failed to finalize route").size() == (workoutStore.finishError ? 1 : 0));
    workoutStore.writeError = workoutStore.insertError = workoutStore.finishError = std::nullopt;
    workoutStore.saves = 0;
    killAndStart();
    CHECK(workoutStore.saves == 1);
    REQUIRE(workoutStore.saved.size() == 1);
    CHECK(workoutStore.saved[0].route.size() == points);
    CHECK(!recorder->isRunning());
    killAndStart();
    CHECK(workoutStore.saves == 1);
    CHECK(recorder->savedSessions().savedSessions().size() == 1);
}

TEST_CASE_FIXTURE(Recording, "a full disk is told and loses nothing") {
    walk.start().fix().lasting(10s);
    documents.failure = DefaultsError{"The disk is full."};
    recorder->pauseRecording();
    recorder->resumeRecording();
    walk.lasting(1s);  // what was written a moment ago is not what failed
    CHECK(recorder->storageProblem.value() == "The disk is full.");
    walk.lasting(9s);
    CHECK(!recorder->stopRecording());
    CHECK(recorder->isRecording);
    CHECK(launch->receiver.updatesLocation);
    walk.lasting(1s);
    documents.failure.reset();
    walk.lasting(1s);
    CHECK(!recorder->storageProblem.value());
    REQUIRE(recorder->stopRecording());
    CHECK(recorder->savedSessions().savedSessions().front().session.distance == Approx(22 * 1.4));
}

TEST_CASE_FIXTURE(Recording, "no recording begins over an old one that cannot be put away") {
    walk.start().fix().lasting(10s);
    launch.reset();
    time.advance(13h);
    documents.failure = DefaultsError{"The disk is full."};
    killAndStart();
    CHECK(recorder->storageProblem.value() == "The disk is full.");
    CHECK(!recorder->startRecording(ActivityType::run));
    CHECK(!recorder->isRunning());
    documents.failure.reset();
    walk.start(ActivityType::run);
    CHECK(recorder->isRecording);
    CHECK(recorder->savedSessions().savedSessions().size() == 1);
    CHECK(workoutStore.saved.size() == 0);
    time.settle();
    CHECK(workoutStore.saved.size() == 1);
}

namespace {

/// The program on real stores. Time and receivers are still the test's.
struct RealLaunch {
    RealLaunch(World& world, const TemporaryFolder& folder)
        : defaults(folder.path(), SqliteDefaults::Access::readWrite),
          database(folder / "health.sqlite"),
          haptics(world.trace),
          live(world.trace),
          workouts(loop, workoutStore, history, documents, world.log),
          recorder(world.time, world.time, random, {receiver, pedometer, haptics, live},
                   {world.healthStore, checkpoints, history, workouts, world.settings}, world.log) {}

    EventLoop loop;
    SqliteDefaults defaults;
    SqliteDocumentParts documents{defaults};
    HealthDatabase database;
    SqliteWorkoutStore workoutStore{database};
    SystemRandom random;
    FakeLocationManager receiver;
    FakePedometer pedometer;
    FakeHaptics haptics;
    FakeLiveActivity live;
    SessionHistory history{documents};
    CheckpointStore checkpoints{documents, history};
    WorkoutWriter workouts;
    ActivityRecorderManager recorder;
};

}  // namespace

TEST_CASE("a walk with a kill in it is in the history and in the health store, whole and once") {
    World world;
    const TemporaryFolder folder;
    std::optional<RealLaunch> launch(std::in_place, world, folder);
    double metres = 0;
    const auto walkOn = [&](int seconds) {
        for (; seconds > 0; --seconds) {
            world.time.advance(1s);
            metres += 1.5;
            launch->receiver.send({.latitude = metres / metresPerDegree,
                                   .altitude = 50 + metres / 10,
                                   .horizontalAccuracy = 4,
                                   .verticalAccuracy = 3,
                                   .timestamp = world.time.now()});
        }
    };
    REQUIRE(launch->recorder.startRecording(ActivityType::walk));
    walkOn(303);
    launch.reset();
    launch.emplace(world, folder);
    CHECK(launch->recorder.didRestoreInProgressSession);
    walkOn(100);
    REQUIRE(launch->recorder.stopRecording());
    const ActivitySession finished = launch->recorder.currentSession.value().value();
    CHECK(finished.route.size() >= 398);  // at most five seconds are lost
    launch.reset();                       // before the workout is written
    launch.emplace(world, folder);
    launch->loop.run(launch->workouts.finished());
    launch.reset();
    launch.emplace(world, folder);
    launch->loop.run(launch->workouts.finished());

    REQUIRE(launch->history.savedSessions().size() == 1);
    CHECK(encodeJson(launch->history.wholeSession(finished.id).value()) == encodeJson(finished));
    const auto stored = storedWorkouts(launch->database);
    REQUIRE(stored.size() == 1);
    CHECK(stored[0].activityType == "HKWorkoutActivityTypeWalking");
    CHECK(stored[0].distance == finished.distance);
    CHECK(stored[0].duration == 403);
    REQUIRE(stored[0].routes.size() == 1);
    const auto gpx = readGPX(stored[0].routes[0].gpx);
    REQUIRE(gpx);
    REQUIRE(gpx->segments.size() == 1);
    REQUIRE(gpx->segments[0].points.size() == finished.route.size());
    CHECK(gpx->segments[0].points.back().latitude == finished.route.back().latitude);
    CHECK(gpx->segments[0].points.back().timestamp == finished.route.back().timestamp);
}
