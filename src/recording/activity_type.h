/// What a person does while recording.
#pragma once

#include <string_view>

namespace pedvar {

/// Stored as the name of the case.
enum class ActivityType { walk, run, hike, cycle };

/// What people read, in English; the key under which the translation is looked up.
std::string_view displayName(ActivityType type);

/// The name of the symbol that stands for it on screens.
std::string_view symbolName(ActivityType type);

/// Kilocalories per kilometre.
int calorieFactor(ActivityType type);

inline constexpr int calorieFactorWithoutSession = 50;  // kilocalories per kilometre

}  // namespace pedvar
