#include "linux/health/cumulative_types.h"

#include <algorithm>
#include <array>

namespace pedvar {
namespace {

constexpr std::string_view prefix = "HKQuantityTypeIdentifier";

// In alphabetical order.
constexpr std::array<std::string_view, 24> cumulativeTypes{
    "ActiveEnergyBurned",
    "AppleExerciseTime",
    "AppleMoveTime",
    "AppleStandTime",
    "BasalEnergyBurned",
    "DistanceCrossCountrySkiing",
    "DistanceCycling",
    "DistanceDownhillSnowSports",
    "DistancePaddleSports",
    "DistanceRowing",
    "DistanceSkatingSports",
    "DistanceSwimming",
    "DistanceWalkingRunning",
    "DistanceWheelchair",
    "FlightsClimbed",
    "InhalerUsage",
    "InsulinDelivery",
    "NikeFuel",
    "NumberOfAlcoholicBeverages",
    "NumberOfTimesFallen",
    "PushCount",
    "StepCount",
    "SwimmingStrokeCount",
    "TimeInDaylight",
};
static_assert(std::ranges::is_sorted(cumulativeTypes));

}  // namespace

bool isCumulative(std::string_view type) {
    if (!type.starts_with(prefix)) return false;
    type.remove_prefix(prefix.size());
    return type.starts_with("Dietary") || std::ranges::binary_search(cumulativeTypes, type);
}

}  // namespace pedvar
