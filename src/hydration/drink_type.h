/// What people drink.
#pragma once

#include <string_view>

namespace pedvar {

enum class DrinkType { water, sparklingWater, tea, coffee, juice, milk, softDrink, sportsDrink };

/// How much of the drink is water, 0 to 1.
double waterShare(DrinkType type);

/// In English; the key under which its translation is looked up.
std::string_view displayName(DrinkType type);

}  // namespace pedvar
