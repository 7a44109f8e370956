#include "recording/speed_average.h"

#include <cstddef>
#include <numeric>

namespace pedvar {

namespace {

constexpr double slowest = 0.3;  // metres per second
constexpr double fastest = 20;   // metres per second
constexpr std::size_t highestCount = 100;

}  // namespace

void SpeedAverage::add(double speed) {
    if (speed < slowest || speed > fastest) return;
    speedReadings_.push_back(speed);
    if (speedReadings_.size() > highestCount) speedReadings_.pop_front();
}

std::optional<double> SpeedAverage::value() const {
    if (speedReadings_.empty()) return std::nullopt;
    return std::reduce(speedReadings_.begin(), speedReadings_.end()) / static_cast<double>(speedReadings_.size());
}

}  // namespace pedvar
