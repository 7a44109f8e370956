#include "routes/way.h"

#include <doctest/doctest.h>

using namespace pedvar;

namespace {

/// Goes north along the prime meridian, where a metre is a metre to a thousandth.
struct Walk {
    Walk& goes(double metresPerSecond, int seconds, double interval = 1) {
        for (int i = 0; i < seconds; ++i) add(metresPerSecond * interval, interval);
        return *this;
    }
    void add(double metres, double seconds) {
        latitude += metres / 110'574.4;
        time += seconds;
        points.push_back(
            {.latitude = latitude, .altitude = altitude, .verticalAccuracy = 3, .timestamp = Date{Seconds{time}}});
    }
    double movingTime() const { return marksAlong(points).back().movingTime; }

    std::vector<CLLocation> points;
    double latitude = 0;
    double altitude = 0;
    double time = 0;
};

}  // namespace

TEST_CASE("standing still is no moving time, however the receiver wavers") {
    Walk walk;
    walk.goes(1.4, 101);
    for (int i = 0; i < 60; ++i) walk.add(i % 2 == 0 ? 2 : -2, 1);
    walk.goes(0.6, 100);
    CHECK(walk.movingTime() == doctest::Approx(200).epsilon(0.03));
    CHECK(Walk().goes(0.4, 300).movingTime() == 0);
}

TEST_CASE("a long silence among many points is a break; among points as rare it is none") {
    Walk walk;
    walk.goes(1, 101).add(500, 600);
    walk.goes(1, 100);
    const auto marks = marksAlong(walk.points);
    CHECK(marks[101].isAfterBreak);
    CHECK(marks.back().distance == doctest::Approx(200).epsilon(1e-4));
    CHECK(marks.back().movingTime == doctest::Approx(200));
    CHECK(Walk().goes(1, 11, 600).movingTime() == doctest::Approx(6000));
}

TEST_CASE("splits are cut at whole lengths and together are the way") {
    Walk walk;
    for (int i = 0; i < 250; ++i) {
        walk.altitude = i % 100;
        walk.add(10, i < 100 ? 4 : 8);
    }
    const auto marks = marksAlong(walk.points);
    const auto splits = splitsOf(marks, 1000);
    REQUIRE(splits.size() == 3);
    CHECK(splits[0].distance == doctest::Approx(1000));
    CHECK(splits[0].movingTime == doctest::Approx(404).epsilon(0.01));
    CHECK(splits[1].movingTime == doctest::Approx(800).epsilon(0.01));
    CHECK(splits[2].distance == doctest::Approx(490).epsilon(1e-3));
    double gain = 0;
    for (const Split& split : splits) gain += split.gain;
    CHECK(gain == doctest::Approx(marks.back().gain));
    CHECK(splitsOf(marks, 0.001).empty());
    CHECK(splitsOf(marksAlong({}), 1000).empty());
}

TEST_CASE("both ends vanish up to the radius, and what passes there midway stays") {
    Walk walk;
    walk.goes(1, 500);
    walk.goes(-1, 499);
    CHECK(withoutEnds(walk.points, 100.5).size() == 797);
    CHECK(withoutEnds(walk.points, 1000).empty());
    walk.points.front().latitude = 95;  // which is nowhere
    CHECK(withoutEnds(walk.points, 100.5).size() == 796);
}
