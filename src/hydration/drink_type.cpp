#include "hydration/drink_type.h"

#include "core/reflection.h"

#include <array>

namespace pedvar {

namespace {

struct Drink {
    std::string_view name;
    double waterShare;  // by volume, as tables of nutrients have it for the usual kind
};

// i18n: texts
constexpr std::array drinks = std::to_array<Drink>({
    {"Water", 1},
    {"Sparkling water", 1},
    {"Tea", 0.99},
    {"Coffee", 0.99},
    {"Juice", 0.88},
    {"Milk", 0.88},
    {"Soft drink", 0.9},
    {"Sports drink", 0.94},
});
// i18n: end
static_assert(drinks.size() == caseNames<DrinkType>.size());

}  // namespace

double waterShare(DrinkType type) {
    return drinks[caseIndex(type)].waterShare;
}

std::string_view displayName(DrinkType type) {
    return drinks[caseIndex(type)].name;
}

}  // namespace pedvar
