/// Distances on the Earth's ellipsoid (WGS84).
#pragma once

#include <optional>

namespace pedvar {

/// A place on the ellipsoid as seen from the centre of the Earth, which is what distances are quickly made of. It
/// has no seam at the antimeridian and no poles.
struct EarthPosition {
    double x = 0;  // metres, towards latitude 0, longitude 0
    double y = 0;  // metres, towards latitude 0, longitude 90
    double z = 0;  // metres, towards the north pole
    bool operator==(const EarthPosition&) const = default;
};

/// None when the coordinates, in degrees, are not finite or beyond 90 and 180.
std::optional<EarthPosition> earthPosition(double latitude, double longitude);

/// The length in metres of the shortest way on the ellipsoid: the chord, lifted to the arc that has the curvature
/// of the ellipsoid midway and in the way's direction.
///
/// Off by at most 15 nanometres, the resolution of coordinates in degrees, or where that is more by 1e-8 of the
/// length up to 100 km, 1e-7 up to 1,000 km and 2e-5 up to 5,000 km; by 0.5 % at most anywhere.
double distance(const EarthPosition& from, const EarthPosition& to);

/// How long a way is that is heard of point by point.
class WayLength {
public:
    /// Goes straight on to the point. One with unusable coordinates is left out: its neighbours are joined.
    void goTo(double latitude, double longitude);
    /// Lifts the pen: to the next point there is no way.
    void interrupt() { last_.reset(); }

    double metres() const { return metres_; }

private:
    std::optional<EarthPosition> last_;
    double metres_ = 0;
};

}  // namespace pedvar
