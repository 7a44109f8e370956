/// Amounts, drinks and containers on the command line.
#pragma once

#include "apps/cli/error.h"
#include "apps/cli/texts.h"
#include "hydration/hydration_settings.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pedvar {

/// The millilitres of "250", "250 ml", "250ml" or "8 floz"; without a unit they are of `usual`.
CommandResult<double> amountNamed(std::string_view amount, const std::optional<std::string>& unit,
                                  VolumeUnit usual, const Texts& text);

CommandResult<DrinkType> drinkNamed(std::string_view name, const Texts& text);

/// What people read as the container's name: their own text, or that of one they were given, in their language.
std::string labelOf(const HydrationContainer& container, const Texts& text);

/// The container that is kept or shown under this name, in whatever case.
CommandResult<const HydrationContainer*> containerNamed(const HydrationSettings& settings, std::string_view name,
                                                        const Texts& text);

/// That documents under these keys do not decode; nothing without keys.
std::optional<CommandError> damageOf(const std::vector<std::string>& keys, const Texts& text);

}  // namespace pedvar
