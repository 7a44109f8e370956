/// Fixes too far off to have been walked to.
#pragma once

#include "core/geodesy.h"

#include <deque>

namespace pedvar {

inline constexpr double jumpThreshold = 200;  // metres; farther than anybody moves between two fixes

/// Notices that places that were taken for faults agree: ten in a row within 200 metres of one another are where
/// the person is.
class JumpWatch {
public:
    /// A fix was rejected. Whether it and those before it agree on a new place.
    bool agreesOnNewPlace(const EarthPosition& rejected);
    /// A fix was no jump.
    void reset() { rejected_.clear(); }

private:
    std::deque<EarthPosition> rejected_;
};

}  // namespace pedvar
