/// What the person drinks from, and how much of it they mean to drink.
#pragma once

#include "core/preferences.h"
#include "core/record.h"
#include "core/uuid.h"
#include "hydration/drink_type.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

// Millilitres. No single drink is larger, and no day's goal is healthy beyond the other two.
inline constexpr double smallestAmount = 1, largestAmount = 5'000;
inline constexpr double lowestWaterGoal = 500, highestWaterGoal = 10'000;

/// False for what is no number too.
constexpr bool isDrinkAmount(double milliliters) {
    return smallestAmount <= milliliters && milliliters <= largestAmount;
}
constexpr bool isWaterGoal(double milliliters) {
    return lowestWaterGoal <= milliliters && milliliters <= highestWaterGoal;
}

struct HydrationContainer {
    UUID id;
    double milliliters = 0;
    DrinkType drinkType = DrinkType::water;
    std::string label;  // the person's own text

    using Fields = FieldList<&HydrationContainer::id, &HydrationContainer::milliliters,
                             &HydrationContainer::drinkType, &HydrationContainer::label>;
    bool operator==(const HydrationContainer&) const = default;
};
static_assert(isComplete<HydrationContainer>);

struct HydrationSettings {
    std::vector<HydrationContainer> containers;
    std::optional<UUID> defaultContainerID;
    double goalMilliliters = 2'000;
    bool isGoalByWeight = false;           // where a weight is known
    std::optional<VolumeUnit> volumeUnit;  // that of the preferences when absent
    bool savesToHealth = true;

    using Fields = FieldList<&HydrationSettings::containers, &HydrationSettings::defaultContainerID,
                             &HydrationSettings::goalMilliliters, &HydrationSettings::isGoalByWeight,
                             &HydrationSettings::volumeUnit, &HydrationSettings::savesToHealth>;
    bool operator==(const HydrationSettings&) const = default;
};
static_assert(isComplete<HydrationSettings>);

/// The settings of a new person: a glass, a cup and a bottle.
HydrationSettings defaultHydrationSettings();

/// Whether the amounts are possible and each container has a label and an identifier of its own.
bool isSound(const HydrationSettings& settings);

/// The container to drink from when none is named; none when there is none.
const HydrationContainer* defaultContainer(const HydrationSettings& settings);
/// The container with this label, or the only one that has it but for case; none otherwise.
const HydrationContainer* containerLabelled(const HydrationSettings& settings, std::string_view label);

/// The goal of a person of this weight, in millilitres.
double goalByWeight(double kilograms);

}  // namespace pedvar
