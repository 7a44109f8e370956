#include "core/geodesy.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace pedvar {

namespace {

constexpr double equatorialRadius = 6'378'137;  // metres
constexpr double flattening = 1 / 298.257223563;
constexpr double polarRadius = equatorialRadius * (1 - flattening);  // metres
constexpr double eccentricitySquared = flattening * (2 - flattening);
constexpr double meanRadius = 6'371'008.8;  // metres
constexpr double equatorialCurvature = 1 / (equatorialRadius * equatorialRadius);
constexpr double polarCurvature = 1 / (polarRadius * polarRadius);

/// The square of a vector's length in the metric in which the ellipsoid is the unit sphere.
double squaredOnUnitSphere(double x, double y, double z) {
    return (x * x + y * y) * equatorialCurvature + z * z * polarCurvature;
}

/// The angle between the ends of a chord of the unit sphere.
double angleOver(double chord) {
    const double sine = chord / 2;
    if (sine > 0.01) return 2 * std::asin(std::min(sine, 1.0));
    const double squared = sine * sine;
    return chord * (1 + squared * (1.0 / 6 + squared * (3.0 / 40)));
}

}  // namespace

std::optional<EarthPosition> earthPosition(double latitude, double longitude) {
    const bool isOnEarth = std::abs(latitude) <= 90 && std::abs(longitude) <= 180;
    if (!isOnEarth) return std::nullopt;
    constexpr double degree = std::numbers::pi / 180;
    const double sine = std::sin(latitude * degree);
    const double normal = equatorialRadius / std::sqrt(1 - eccentricitySquared * sine * sine);
    const double fromAxis = normal * std::cos(latitude * degree);
    return EarthPosition{fromAxis * std::cos(longitude * degree), fromAxis * std::sin(longitude * degree),
                         normal * (1 - eccentricitySquared) * sine};
}

double distance(const EarthPosition& from, const EarthPosition& to) {
    const double x = to.x - from.x;
    const double y = to.y - from.y;
    const double z = to.z - from.z;
    const double chordSquared = x * x + y * y + z * z;
    if (chordSquared == 0) return 0;
    const double onUnitSphere = squaredOnUnitSphere(x, y, z);
    if (onUnitSphere > 2) return meanRadius * angleOver(std::sqrt(onUnitSphere));  // a quarter of the globe

    // Euler's radius of curvature midway, where the surface stands on the vector (x / a^2, y / a^2, z / b^2).
    const double middleX = (from.x + to.x) / 2;
    const double middleY = (from.y + to.y) / 2;
    const double middleZ = (from.z + to.z) / 2;
    const double normalX = middleX * equatorialCurvature;
    const double normalY = middleY * equatorialCurvature;
    const double normalZ = middleZ * polarCurvature;
    const double normalSquared = normalX * normalX + normalY * normalY + normalZ * normalZ;
    const double depth = squaredOnUnitSphere(middleX, middleY, middleZ);
    const double radius = std::sqrt(normalSquared / depth) * chordSquared / onUnitSphere;
    return radius * angleOver(std::sqrt(chordSquared) / radius);
}

void WayLength::goTo(double latitude, double longitude) {
    const auto position = earthPosition(latitude, longitude);
    if (!position) return;
    if (last_) metres_ += distance(*last_, *position);
    last_ = position;
}

}  // namespace pedvar
