/// How a route was gone: what it came to point by point, and kilometre by kilometre.
#pragma once

#include "platform/location.h"

#include <cstddef>
#include <span>
#include <vector>

namespace pedvar {

/// What the way comes to up to one of its points.
struct WayMark {
    std::size_t point = 0;      // its index
    double distance = 0;        // metres
    double movingTime = 0;      // seconds
    double gain = 0;            // metres
    double loss = 0;            // metres, kept positive
    bool isAfterBreak = false;  // nothing is known of the way to it
};

/// One mark for each point with usable coordinates.
///
/// Who gets on by less than half a metre a second, from one point to the next that is at least five seconds
/// later, stands still. Where no point came for more than a minute and for ten times as long as usual, there was
/// a break, to which neither its time nor the distance across it is counted.
std::vector<WayMark> marksAlong(std::span<const CLLocation> points);

/// A part of the way.
struct Split {
    double distance = 0;    // metres
    double movingTime = 0;  // seconds
    double gain = 0;        // metres
    double loss = 0;        // metres, kept positive
};

/// The way cut every `length` metres; the last split is what remains. Empty for a way without length, and for one
/// of more than 10,000 splits, which nobody has gone.
std::vector<Split> splitsOf(std::span<const WayMark> marks, double length);

/// Without the points around both ends: those up to the first that is more than `radius` metres away from where
/// the way begins, and likewise at its end.
std::span<const CLLocation> withoutEnds(std::span<const CLLocation> points, double radius);

}  // namespace pedvar
