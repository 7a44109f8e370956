#include "hydration/hydration_settings.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace pedvar {

namespace {

constexpr double waterPerKilogram = 33;  // millilitres a day, the middle of what is commonly advised
constexpr double goalStep = 50;          // millilitres

/// Always the same, so that widgets find the container that they show.
UUID builtInID(std::uint8_t number) {
    return UUID::random({0x70, 0x65, 0x64, 0x76, 0x61, 0x72, 0, 0, 0, 0, 0, 0, 0, 0, 0, number});
}

bool isAlikeButForCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

}  // namespace

// i18n: texts
HydrationSettings defaultHydrationSettings() {
    return {.containers = {{builtInID(1), 250, DrinkType::water, "Glass"},
                           {builtInID(2), 200, DrinkType::coffee, "Cup"},
                           {builtInID(3), 500, DrinkType::water, "Bottle"}},
            .defaultContainerID = builtInID(1),
            .volumeUnit = std::nullopt};
}
// i18n: end

bool isSound(const HydrationSettings& settings) {
    std::set<UUID> ids;
    std::set<std::string> labels;
    const bool areSound = std::ranges::all_of(settings.containers, [&](const HydrationContainer& container) {
        return isDrinkAmount(container.milliliters) && !container.label.empty() &&
               ids.insert(container.id).second && labels.insert(container.label).second;
    });
    return areSound && isWaterGoal(settings.goalMilliliters);
}

const HydrationContainer* defaultContainer(const HydrationSettings& settings) {
    const auto found =
        std::ranges::find(settings.containers, settings.defaultContainerID, &HydrationContainer::id);
    return found != settings.containers.end() ? &*found : nullptr;
}

const HydrationContainer* containerLabelled(const HydrationSettings& settings, std::string_view label) {
    const auto& containers = settings.containers;
    if (const auto exact = std::ranges::find(containers, label, &HydrationContainer::label);
        exact != containers.end()) {
        return &*exact;
    }
    const HydrationContainer* found = nullptr;
    for (const HydrationContainer& container : containers) {
        if (!isAlikeButForCase(container.label, label)) continue;
        if (found) return nullptr;
        found = &container;
    }
    return found;
}

double goalByWeight(double kilograms) {
    return std::clamp(std::round(kilograms * waterPerKilogram / goalStep) * goalStep, lowestWaterGoal,
                      highestWaterGoal);
}

}  // namespace pedvar
