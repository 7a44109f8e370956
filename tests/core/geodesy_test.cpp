#include "core/geodesy.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace pedvar;

TEST_CASE("distances are those of geodesics, at the poles and across the antimeridian too") {
    struct Case {
        double fromLatitude, fromLongitude, toLatitude, toLongitude;
        double metres;     // of GeographicLib's GeodesicExact
        double tolerance;  // of the length
    };
    const Case cases[] = {
        {52.520008, 13.404954, 52.520017, 13.404954, 1.001494905, 1e-8},
        {0, 0, 0, 0.001, 111.319490793, 1e-8},
        {0, 0, 0.001, 0, 110.574275822, 1e-8},
        {89.9995, 0, 89.9995, 90, 78.979570363, 1e-8},
        {90, 0, 89.999, 37, 111.693979564, 1e-8},
        {-89.9999, -170, -89.9999, 10, 22.338795916, 1e-8},
        {12.5, 179.9995, 12.5005, -179.9998, 94.069070528, 1e-8},
        {46, 14, 46.5, 15, 95053.697814196, 1e-8},
        {40.6413, -73.7781, 51.4700, -0.4543, 5554908.790547497, 1e-3},
        {0, 0, 0, 179, 19926188.851995971, 5e-3},
    };
    for (const auto& row : cases) {
        CAPTURE(row.metres);
        const auto from = *earthPosition(row.fromLatitude, row.fromLongitude);
        const auto to = *earthPosition(row.toLatitude, row.toLongitude);
        const double allowed = std::max(row.metres * row.tolerance, 15e-9);
        CHECK(std::abs(distance(from, to) - row.metres) < allowed);
        CHECK(distance(to, from) == distance(from, to));
        CHECK(distance(from, from) == 0);
    }
    CHECK(distance(*earthPosition(5, 180), *earthPosition(5, -180)) < 15e-9);
    CHECK(distance(*earthPosition(0, 0), *earthPosition(0, 180)) == doctest::Approx(20'003'931).epsilon(0.005));
}

TEST_CASE("a way leaves out what is not on the Earth, and has no length across an interruption") {
    WayLength way;
    way.goTo(0, 0);
    for (const double nowhere : {std::nan(""), std::numeric_limits<double>::infinity(), 180.0000001, -1e10}) {
        way.goTo(0, nowhere);
        way.goTo(nowhere, 0);
    }
    way.goTo(90.0000001, 0);
    CHECK(way.metres() == 0);
    way.goTo(0, 0.001);
    CHECK(way.metres() == doctest::Approx(111.319490793).epsilon(1e-9));
    way.interrupt();
    way.goTo(10, 10);
    way.goTo(10, 10);
    CHECK(way.metres() == doctest::Approx(111.319490793).epsilon(1e-9));
}
