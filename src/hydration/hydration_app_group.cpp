#include "hydration/hydration_app_group.h"

#include <cmath>
#include <string>
#include <utility>

namespace pedvar {

namespace {

constexpr std::string_view lastAmountKey = "hydrationLastAmountMilliliters";

double atLeast(double least, double amount) {
    return std::isfinite(amount) && amount > least ? amount : least;
}

}  // namespace

void HydrationAppGroup::updateWidgetSnapshot(double todayMilliliters, double goalMilliliters,
                                             const HydrationSettings& settings) {
    if (const UserDefaults* suite = userDefaults()) {
        const bool usesFluidOunces = settings.volumeUnit == VolumeUnit::fluidOunces;
        const HydrationContainer* container = defaultContainer(settings);
        const auto containerID =
            container ? std::optional<DefaultsValue>(container->id.text()) : std::optional<DefaultsValue>();
        std::vector<DefaultsChange> changes{
            {suite, "hydrationTodayMilliliters", atLeast(0, todayMilliliters)},
            {suite, "hydrationGoalMilliliters", atLeast(1, goalMilliliters)},
            {suite, "hydrationCachedDay", clock_.now()},
            {suite, "hydrationVolumeUnit", std::string(usesFluidOunces ? "floz" : "ml")},
            {suite, "hydrationDefaultContainerID", containerID},
        };
        if (auto document = encodeJson(settings.containers)) {
            changes.push_back({suite, "hydrationContainers", Data{std::move(*document)}});
        }
        write(changes);
    }
    widgets_.reloadAllTimelines();
}

double HydrationAppGroup::lastAmountMilliliters() const {
    const UserDefaults* suite = userDefaults();
    const auto amount = suite ? suite->real(lastAmountKey) : std::nullopt;
    return amount && *amount > 0 ? *amount : 0;
}

void HydrationAppGroup::saveLastAmount(double milliliters) {
    if (const UserDefaults* suite = userDefaults()) write({{suite, std::string(lastAmountKey), milliliters}});
}

void HydrationAppGroup::write(const std::vector<DefaultsChange>& changes) {
    const auto result = defaults_.write(changes);
    if (!result) log_.log(logSubsystem, "HydrationAppGroup", LogLevel::error, result.error().message.inEnglish());
}

}  // namespace pedvar
