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

CommandResult<const HydrationContainer*> containerNamed(const HydrationSettings& settings, std::string_view name,
                                                        const Texts& text);

/// That documents under these keys do not decode; nothing without keys.
std::optional<CommandError> damageOf(const std::vector<std::string>& keys, const Texts& text);

}  // namespace pedvar
