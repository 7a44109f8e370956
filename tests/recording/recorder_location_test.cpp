/// What becomes of the receiver's fixes.
#include "recording/recorder_fixture.h"

#include <cmath>
#include <limits>

using namespace pedvar;
using namespace std::chrono_literals;
using doctest::Approx;

TEST_CASE_FIXTURE(Recording, "a fix counts when it is fresh, precise enough and on the Earth") {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double accuracy;
        Seconds age;
        double latitude, longitude;
        bool isSeen;
    } cases[] = {
        {0, 0s, 0, 0, true},      {65, 0s, 0, 0, true},    {65.1, 0s, 0, 0, false}, {-1, 0s, 0, 0, false},
        {nan, 0s, 0, 0, false},   {4, 5s, 0, 0, true},     {4, 5.01s, 0, 0, false}, {4, -5s, 0, 0, true},
        {4, -5.01s, 0, 0, false}, {4, 0s, 90, -180, true}, {4, 0s, 90.5, 0, false}, {4, 0s, 0, -180.5, false},
        {4, 0s, nan, 0, false},
    };
    walk.start();
    for (const auto& [accuracy, age, latitude, longitude, isSeen] : cases) {
        CAPTURE(accuracy);
        CAPTURE(age.count());
        CAPTURE(latitude);
        const CLLocation fix{.latitude = latitude,
                             .longitude = longitude,
                             .horizontalAccuracy = accuracy,
                             .timestamp = time.now() - age};
        launch->receiver.send(fix);
        CHECK((recorder->currentLocation.value() == fix) == isSeen);
    }
    CHECK(lines("⚠️ GPS: Invalid") == std::vector<std::string>{"⚠️ GPS: Invalid coordinates (90.5, 0)",
                                                              "⚠️ GPS: Invalid coordinates (0, -180.5)",
                                                              "⚠️ GPS: Invalid coordinates (nan, 0)"});
}

TEST_CASE_FIXTURE(Recording,
                  "the first point waits for 50 metres, and the signal is watched on both sides of it") {
    walk.start().fixWithin(50.1);
    CHECK(route().isEmpty());
    CHECK(recorder->gpsAccuracy == 50.1);
    walk.fixWithin(50);
    CHECK(route().size() == 1);
    for (const double accuracy : {49.0, 50.0, 51.0, 49.0, 51.0}) walk.fixWithin(accuracy);
    CHECK(lines("⚠️") == std::vector<std::string>{"⚠️ GPS: Waiting for better accuracy (50m)"});
    CHECK(lines("📍") == std::vector<std::string>{"📍 GPS: First point recorded with 50.0m accuracy"});
    // From 50 to 49 and from 50 to 51 nothing is lost or found.
    CHECK(lines("📡") == std::vector<std::string>{"📡 GPS: Signal reacquired, resetting smoothing",
                                                  "📡 GPS: Signal loss detected, resetting smoothing"});
}

TEST_CASE_FIXTURE(Recording, "distance is that of the fixes, the route is smoothed") {
    walk.start().fix().at(10).lasting(2s);
    CHECK(recorder->totalDistance == Approx(20));
    CHECK(recorder->currentDistance == recorder->totalDistance);
    CHECK(recorder->currentSpeed == Approx(10));
    CHECK(recorder->currentPace == Approx(1000.0 / 10 / 60));
    REQUIRE(route().size() == 3);
    CHECK(route()[1].latitude * metresPerDegree == Approx(7));
    CHECK(route()[2].latitude * metresPerDegree == Approx(0.3 * 7 + 0.7 * 20));
    CHECK(recorder->routeCoordinates->size() == 3);
    CHECK((*recorder->routeCoordinates)[2] == Coordinate{route()[2].latitude, 0});
}

TEST_CASE("smoothing does not lead round the Earth") {
    RouteSmoothing smoothing;
    const Coordinate first{52.763775, 179.999};
    CHECK(smoothing.smooth(first) == first);
    CHECK(smoothing.smooth({10, -179.999}).longitude == Approx(-179.9996).epsilon(1e-9));
    CHECK(smoothing.smooth({10, 179.9999}).longitude == Approx(-179.99995).epsilon(1e-9));
    CHECK(smoothing.smooth({10, 179.9999}).longitude == Approx(179.999945).epsilon(1e-9));
}

TEST_CASE_FIXTURE(Recording, "the average speed leaves out standing and flying, and forgets") {
    const struct {
        double speed;
        bool isAveraged;
    } cases[] = {{0.29, false}, {0.31, true}, {19.99, true}, {20.01, false}};
    walk.start().fix().at(5).lasting(1s);
    for (const auto& [speed, isAveraged] : cases) {
        CAPTURE(speed);
        const double average = recorder->averageSpeed, distance = recorder->totalDistance;
        walk.at(speed).lasting(1s);
        CHECK((recorder->averageSpeed != average) == isAveraged);
        CHECK(recorder->totalDistance == Approx(distance + speed));
    }
    walk.at(2).lasting(99s);
    CHECK(recorder->averageSpeed > 2.1);
    walk.lasting(1s);
    CHECK(recorder->averageSpeed == Approx(2));
}

TEST_CASE_FIXTURE(Recording, "a jump of 200 metres is rejected, one short of it is a way") {
    walk.start().fix().at(199.9).lasting(1s);
    CHECK(recorder->totalDistance == Approx(199.9));
    int refreshes = 0;
    const auto subscription = recorder->currentSession.observe([&](const auto&) { ++refreshes; });
    walk.leap(200.1).fix();
    CHECK(refreshes == 0);
    CHECK(lines("⚠️") == std::vector<std::string>{"⚠️ GPS: Rejecting jump of 200m"});
    walk.leap(-190).fix();  // no time has passed: nothing counts, but the way goes on from here
    CHECK(refreshes == 0);
    walk.at(5).lasting(1s);
    CHECK(recorder->totalDistance == Approx(204.9));
    CHECK(route().size() == 3);
    CHECK(route().back().latitude * metresPerDegree == Approx(215));  // smoothing began anew
}

TEST_CASE_FIXTURE(Recording, "ten jumps to one place are where the walker is") {
    walk.start().at(1).fix().lasting(10s);
    walk.next.altitude = 500;
    SUBCASE("after ten the next one begins anew, and nothing counts for the gap") {
        walk.leap(5000).at(20).lasting(10s);
        CHECK(lines("⚠️").size() == 10);
        CHECK(recorder->totalDistance == Approx(10));
        walk.next.horizontalAccuracy = 51;
        walk.lasting(1s);
        CHECK(route().size() == 11);
        walk.next.horizontalAccuracy = 50;
        walk.lasting(3s);
        CHECK(recorder->totalDistance == Approx(10 + 40));
        CHECK(route().size() == 14);
        CHECK(recorder->elevationGain == 0);
        CHECK(recorder->currentElevation.value() == 500);
        CHECK(lines("📍 GPS: Ten").size() == 1);
    }
    SUBCASE("not when they are farther apart") {
        walk.leap(5000).at(23).lasting(30s);
        CHECK(lines("📍 GPS: Ten").empty());
        CHECK(route().size() == 11);
    }
    SUBCASE("not when one in between was no jump") {
        walk.at(0).leap(5000).lasting(9s).leap(-5000).lasting(1s).leap(5000).lasting(9s);
        CHECK(lines("⚠️").size() == 18);
        walk.leap(-5000).at(1).lasting(1s);
        CHECK(recorder->totalDistance == Approx(11));
    }
}

TEST_CASE_FIXTURE(Recording, "altitudes that leap are replaced, and missing ones borrowed") {
    walk.start().fixAtHeight(100).fixAtHeight(150).fixAtHeight(210).fixAtHeight(155);
    const auto altitudes = [&] {
        std::vector<std::optional<double>> found;
        for (const LocationPoint& point : route()) found.push_back(point.altitude);
        return found;
    };
    CHECK(altitudes() == std::vector<std::optional<double>>{100, 150, 150, 155});
    CHECK(lines("⚠️") == std::vector<std::string>{"⚠️ GPS: Rejecting altitude spike of 60m"});
    CHECK(recorder->elevationGain == 55);
    walk.next.verticalAccuracy = -1;
    walk.fixAtHeight(0);
    CHECK(altitudes().back() == 155);
    CHECK(!route().back().verticalAccuracy);
    CHECK(recorder->currentElevation.value() == 155);
    // What a receiver should not say takes nothing else with it.
    walk.next = {.altitude = std::nan(""), .horizontalAccuracy = 4, .verticalAccuracy = 3, .speed = std::nan("")};
    walk.lasting(1s);
    CHECK(!route().back().speed);
    walk.next = {.altitude = 1e308, .horizontalAccuracy = 4, .verticalAccuracy = 3};
    walk.lasting(1s);
    CHECK(altitudes().size() == 7);
    CHECK(altitudes().back() == 155);
    CHECK(lines("⚠️").size() == 1);
}

TEST_CASE_FIXTURE(Recording, "three slow segments pause, the next fast one resumes and counts") {
    walk.autoPause(AutoPauseMode::on).start().fix().at(1.4).lasting(30s);
    const double distance = recorder->totalDistance;
    const std::size_t points = route().size();
    walk.at(0.49).lasting(2s);
    CHECK(!recorder->isAutoPaused);
    CHECK(recorder->currentSpeed == Approx(0.49));
    CHECK(recorder->totalDistance == distance);
    walk.lasting(1s);
    CHECK(recorder->isAutoPaused);
    CHECK(recorder->currentSpeed == 0);
    CHECK(recorder->currentPace == 0);
    walk.lasting(10s);
    CHECK(recorder->totalDistance == distance);
    CHECK(route().size() == points);
    SUBCASE("by going on") {
        walk.at(0.51).lasting(1s);
        CHECK(recorder->totalDistance == Approx(distance + 0.51));
    }
    SUBCASE("by the person's choice") {
        walk.autoPause(AutoPauseMode::off).lasting(11s);
        CHECK(recorder->totalDistance > distance);
    }
    CHECK(!recorder->isAutoPaused);
    CHECK(recorder->totalAutoPausedTime() >= 11s);
    CHECK(recorder->currentDuration >= 44);  // which the duration counts
}

TEST_CASE_FIXTURE(Recording, "a pause by hand leaves an automatic one and its count as they were") {
    walk.autoPause(AutoPauseMode::on).start().fix().at(0.2).lasting(2s);
    const auto pauseAndResume = [&] {
        recorder->pauseRecording();
        time.advance(60s);
        walk.fix();  // a late one is not taken
        recorder->resumeRecording();
    };
    pauseAndResume();
    walk.lasting(1s);
    CHECK(recorder->isAutoPaused);
    pauseAndResume();
    CHECK(recorder->isAutoPaused);
    CHECK(lines("📡").size() == 2);  // the signal is found anew after each pause; the next fix is still to come
}

TEST_CASE("the screen names the quality of the fixes") {
    const struct {
        std::optional<double> accuracy;
        const char* label;
        const char* beginning;
    } cases[] = {
        {{}, "Poor", "Connecting"},      {-1, "Poor", "Connecting"},          {0, "Excellent", "Your GPS has"},
        {4.99, "Excellent", "Your"},     {5, "Good", "GPS is working great"}, {10, "Fair", "GPS is working well"},
        {20, "Poor", "GPS is actively"}, {49.9, "Poor", "GPS is actively"},   {50, "Poor", "Connecting"}};
    for (const auto& [accuracy, label, beginning] : cases) {
        CAPTURE(accuracy.value_or(-2));
        CHECK(gpsQuality(accuracy).label == label);
        CHECK(gpsQuality(accuracy).description.starts_with(beginning));
    }
}

TEST_CASE_FIXTURE(Recording, "a fix costs the same at any length of the route") {
    walk.start().fix();
    const Route before = route();
    walk.lasting(1s);
    // Shared, not copied: the points of the earlier refresh are those of the later one.
    CHECK(&before[0] == &route()[0]);
    CHECK(before.size() == 1);
    CHECK(documents.bytesOfLastWrite < 2000);
}
