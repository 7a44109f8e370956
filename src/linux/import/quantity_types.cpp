#include "linux/import/quantity_types.h"

#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view quantityPrefix = "HKQuantityTypeIdentifier";

/// Without the prefix. Only types whose unit may change with the settings of the phone need to be here: their
/// samples have to stay comparable, and the same sample has to stay the same in a later export.
constexpr std::pair<std::string_view, Dimension> knownTypes[] = {
    {"StepCount", Dimension::count},
    {"DistanceWalkingRunning", Dimension::length},
    {"ActiveEnergyBurned", Dimension::energy},
    {"BasalEnergyBurned", Dimension::energy},
    {"HeartRate", Dimension::frequency},
    {"AppleExerciseTime", Dimension::time},
    {"AppleStandTime", Dimension::time},
    {"AppleMoveTime", Dimension::time},
    {"FlightsClimbed", Dimension::count},
    {"DistanceCycling", Dimension::length},
    {"DistanceSwimming", Dimension::length},
    {"DistanceWheelchair", Dimension::length},
    {"DistanceDownhillSnowSports", Dimension::length},
    {"DistanceCrossCountrySkiing", Dimension::length},
    {"DistancePaddleSports", Dimension::length},
    {"DistanceRowing", Dimension::length},
    {"DistanceSkatingSports", Dimension::length},
    {"PushCount", Dimension::count},
    {"SwimmingStrokeCount", Dimension::count},
    {"RestingHeartRate", Dimension::frequency},
    {"WalkingHeartRateAverage", Dimension::frequency},
    {"HeartRateRecoveryOneMinute", Dimension::frequency},
    {"RespiratoryRate", Dimension::frequency},
    {"BodyMass", Dimension::mass},
    {"LeanBodyMass", Dimension::mass},
    {"Height", Dimension::length},
    {"WaistCircumference", Dimension::length},
    {"BodyTemperature", Dimension::temperature},
    {"BasalBodyTemperature", Dimension::temperature},
    {"AppleSleepingWristTemperature", Dimension::temperature},
    {"WaterTemperature", Dimension::temperature},
    {"BloodPressureSystolic", Dimension::pressure},
    {"BloodPressureDiastolic", Dimension::pressure},
    {"DietaryWater", Dimension::volume},
    {"DietaryEnergyConsumed", Dimension::energy},
    {"WalkingSpeed", Dimension::speed},
    {"RunningSpeed", Dimension::speed},
    {"CyclingSpeed", Dimension::speed},
    {"StairAscentSpeed", Dimension::speed},
    {"StairDescentSpeed", Dimension::speed},
    {"WalkingStepLength", Dimension::length},
    {"RunningStrideLength", Dimension::length},
    {"RunningVerticalOscillation", Dimension::length},
    {"SixMinuteWalkTestDistance", Dimension::length},
    {"UnderwaterDepth", Dimension::length},
};

std::optional<Dimension> dimensionOf(std::string_view type) {
    type.remove_prefix(quantityPrefix.size());
    for (const auto& [name, dimension] : knownTypes) {
        if (name == type) return dimension;
    }
    return std::nullopt;
}

}  // namespace

bool isQuantityType(std::string_view type) {
    return type.starts_with(quantityPrefix) && type.size() > quantityPrefix.size();
}

std::optional<KeptUnit> keptUnit(std::string_view type, std::string_view unit) {
    const auto dimension = isQuantityType(type) ? dimensionOf(type) : std::nullopt;
    if (!dimension) return KeptUnit{.symbol = std::string(unit)};
    const std::optional<HKUnit> known = unitNamed(unit);
    if (!known || known->dimension != *dimension) return std::nullopt;
    return KeptUnit{std::string(keptSymbol(*dimension)), known};
}

}  // namespace pedvar
