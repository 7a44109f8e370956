#include "recording/elevation_calculator.h"

#include <doctest/doctest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>
#include <vector>

using namespace pedvar;
using ElevationCalculator::calculate;
using ElevationCalculator::StreamingTracker;

namespace {

/// Altitudes with their accuracies.
using Samples = std::initializer_list<std::pair<double, double>>;

StreamingTracker tracked(Samples samples) {
    StreamingTracker tracker;
    for (const auto& [altitude, accuracy] : samples) tracker.update(altitude, accuracy);
    return tracker;
}

std::vector<CLLocation> way(const std::vector<double>& altitudes, double accuracy = 1) {
    std::vector<CLLocation> locations;
    for (const double altitude : altitudes) {
        locations.push_back({.altitude = altitude, .verticalAccuracy = accuracy});
    }
    return locations;
}

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST_CASE("the tracker counts a change once it has left the dead band") {
    struct Case {
        Samples samples;
        StreamingTracker expected;
    };
    const Case cases[] = {
        {{{100, 5}}, {0, 0, 100}},
        {{{100, 2}, {102.9, 2}}, {0, 0, 100}},
        {{{0, 2}, {2.9, 2}, {3.1, 2}}, {3.1, 0, 3.1}},
        {{{100, 2}, {103, 2}, {100, 2}}, {3, 3, 100}},
        {{{0, 10}, {9, 10}}, {0, 0, 0}},
        {{{0, 10}, {9, 10}, {10, 10}}, {10, 0, 10}},
        {{{0, 10}, {9, 4}}, {9, 0, 9}},  // the accuracy of the newer sample counts
        {{{0, 3}, {50, 30}, {0, 30.01}, {0, -1}, {0, notANumber}}, {50, 0, 50}},
        {{{notANumber, 3}, {10, 3}, {notANumber, 3}, {20, 3}, {1e300, 3}}, {10, 0, 20}},
    };
    for (const auto& [samples, expected] : cases) CHECK(tracked(samples) == expected);
}

TEST_CASE("a way that never leaves the dead band has no elevation change") {
    CHECK(!calculate({}));
    CHECK(!calculate(way({100})));
    CHECK(!calculate(way({100, 102})));
    CHECK(!calculate(way({100, 200}, 31)));
    CHECK(!calculate(way({100, 200}, -1)));
    CHECK(!calculate(way({100, 129}, 30)));
    CHECK(calculate(way({100, 130}, 30)) == ElevationChange{30, 0, 100, 130});
}

TEST_CASE("more than five altitudes are smoothed by the median of their windows") {
    CHECK(calculate(way({0, 0, 50, 0, 0})) == ElevationChange{50, 50, 0, 50});
    CHECK(!calculate(way({0, 0, 50, 0, 0, 0})));
    // Cut short at both ends, the windows leave 7, 8, 7, 6, 3, 6, 3.
    CHECK(calculate(way({9, 7, 1, 8, 6, 3, 3})) == ElevationChange{3, 7, 3, 7});

    std::vector<double> climb;
    for (int metre = 0; metre < 20; ++metre) climb.push_back(metre);
    // From 1 to 18: what the windows leave of 0 to 19, in steps of 3 metres.
    CHECK(calculate(way(climb)) == ElevationChange{15, 0, 1, 16});
}

TEST_CASE("the dead band of a way is the upper median of its usable accuracies, and bad altitudes are left out") {
    auto locations = way({0, 9, 0, 9});
    locations[2].verticalAccuracy = locations[3].verticalAccuracy = 9;
    CHECK(calculate(locations) == ElevationChange{18, 9, 0, 9});
    locations[1].verticalAccuracy = 9.5;
    CHECK(calculate(locations) == ElevationChange{18, 9, 0, 9});
    locations[2].verticalAccuracy = 9.5;
    CHECK(!calculate(locations));

    CHECK(calculate(way({0, notANumber, 10, 1.7e308, std::numeric_limits<double>::infinity()})) ==
          ElevationChange{10, 0, 0, 10});
}
