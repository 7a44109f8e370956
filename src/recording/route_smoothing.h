/// Places that waver less than the receiver's.
#pragma once

#include "recording/coordinate.h"

#include <optional>

namespace pedvar {

/// Draws each place a little towards the one before.
class RouteSmoothing {
public:
    Coordinate smooth(Coordinate raw);
    /// The next place stays where it is.
    void reset() { last_.reset(); }

private:
    std::optional<Coordinate> last_;
};

}  // namespace pedvar
