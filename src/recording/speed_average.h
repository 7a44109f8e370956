/// How fast a person is of late.
#pragma once

#include <deque>
#include <optional>

namespace pedvar {

/// The mean of the last 100 speeds of somebody who moves, in metres per second.
class SpeedAverage {
public:
    /// Speeds below 0.3 (standing) and above 20 (a fault, or a car) are left out.
    void add(double speed);
    /// None before the first one.
    std::optional<double> value() const;

private:
    std::deque<double> speedReadings_;
};

}  // namespace pedvar
