#include "apps/cli/commands/amounts.h"

#include "apps/cli/commands/arguments.h"
#include "apps/cli/terminal.h"
#include "core/units.h"

#include <fmt/ranges.h>

#include <algorithm>

namespace pedvar {
namespace {

std::optional<HKUnit> volumeUnitNamed(std::string_view name) {
    if (name == "ml") return HKUnit::milliliter();
    if (name == "floz") return unitNamed("fl_oz_us");
    return std::nullopt;
}

}  // namespace

CommandResult<double> amountNamed(std::string_view amount, const std::optional<std::string>& unit,
                                  VolumeUnit usual, const Texts& text) {
    const std::size_t digits = std::min(amount.find_first_not_of("0123456789.,"), amount.size());
    std::string_view written = unit ? std::string_view(*unit) : amount.substr(digits);
    if (digits > 0 && written.starts_with(' ')) written.remove_prefix(1);
    const auto number = coarseNumberNamed(unit ? amount : amount.substr(0, digits));
    const auto measure = volumeUnitNamed(!written.empty()                   ? written
                                         : usual == VolumeUnit::fluidOunces ? "floz"
                                                                            : "ml");
    if (number && !measure) {
        return usageError(text("\"{}\" is no unit of drinks; valid: ml, floz.", harmless(written)));
    }
    const double milliliters = number ? measure->toKept(*number) : 0;
    if (!number || !isDrinkAmount(milliliters)) {
        return usageError(
            text("\"{}\" is no amount to drink; one is from {} to {} ml, like 250, 250 ml or 8 floz.",
                 harmless(amount), smallestAmount, largestAmount));
    }
    return milliliters;
}

CommandResult<DrinkType> drinkNamed(std::string_view name, const Texts& text) {
    if (const auto type = caseNamed<DrinkType>(name)) return *type;
    return usageError(text("There is no drink \"{}\"; valid: {}.", harmless(name),
                           fmt::format("{}", fmt::join(caseNames<DrinkType>, ", "))));
}

std::string labelOf(const HydrationContainer& container, const Texts& text) {
    const auto given = defaultHydrationSettings().containers;
    const bool isGiven = std::ranges::any_of(given, [&](const HydrationContainer& each) {
        return each.id == container.id && each.label == container.label;
    });
    return isGiven ? text.lookUp(container.label) : container.label;
}

CommandResult<const HydrationContainer*> containerNamed(const HydrationSettings& settings, std::string_view name,
                                                        const Texts& text) {
    if (const HydrationContainer* found = containerLabelled(settings, name)) return found;
    HydrationSettings shown = settings;
    for (HydrationContainer& container : shown.containers) container.label = labelOf(container, text);
    if (const HydrationContainer* found = containerLabelled(shown, name)) {
        return &settings.containers[static_cast<std::size_t>(found - shown.containers.data())];
    }
    return usageError(text("There is no container \"{}\"; `pedvar containers` lists them.", harmless(name)));
}

std::optional<CommandError> damageOf(const std::vector<std::string>& keys, const Texts& text) {
    if (keys.empty()) return std::nullopt;
    return CommandError{ErrorKind::damaged,
                        text("What was stored under {} cannot be read; it counts as absent and is kept.",
                             fmt::format("{}", fmt::join(keys, ", ")))};
}

}  // namespace pedvar
