#include "core/units.h"

#include "core/check.h"

#include <algorithm>

namespace pedvar {

namespace {

// All exact by definition.
constexpr double kilogramsPerPound = 0.45359237;
constexpr double millilitersPerGallon = 3785.411784;  // of the United States
constexpr double millilitersPerImperialGallon = 4546.09;
constexpr double kilojoulesPerKilocalorie = 4.184;
constexpr double pascalsPerMillimeterOfMercury = 133.322387415;

/// The first unit of each dimension is the one in which its values are kept.
constexpr HKUnit allUnits[] = {
    HKUnit::count(),

    HKUnit::meter(),
    HKUnit::centimeter(),
    {"mm", Dimension::length, 1, 1000},
    {"km", Dimension::length, metersPerKilometer},
    {"mi", Dimension::length, metersPerMile},
    {"yd", Dimension::length, 0.9144},
    {"ft", Dimension::length, 0.3048},
    {"in", Dimension::length, 0.0254},

    HKUnit::kilocalorie(),
    {"Cal", Dimension::energy},
    {"cal", Dimension::energy, 1, 1000},
    {"kJ", Dimension::energy, 1, kilojoulesPerKilocalorie},
    {"J", Dimension::energy, 1, kilojoulesPerKilocalorie * 1000},

    HKUnit::minute(),
    {"ms", Dimension::time, 1, 60'000},
    {"s", Dimension::time, 1, 60},
    {"hr", Dimension::time, 60},
    {"d", Dimension::time, 1440},

    HKUnit::kilogram(),
    {"g", Dimension::mass, 1, 1000},
    {"mg", Dimension::mass, 1, 1'000'000},
    {"mcg", Dimension::mass, 1, 1'000'000'000},
    {"lb", Dimension::mass, kilogramsPerPound},
    {"oz", Dimension::mass, kilogramsPerPound, 16},
    {"st", Dimension::mass, kilogramsPerPound * 14},

    HKUnit::milliliter(),
    {"ml", Dimension::volume},
    {"L", Dimension::volume, 1000},
    {"fl_oz_us", Dimension::volume, millilitersPerGallon, 128},
    {"fl_oz_imp", Dimension::volume, millilitersPerImperialGallon, 160},
    {"cup_us", Dimension::volume, millilitersPerGallon, 16},
    {"cup_imp", Dimension::volume, millilitersPerImperialGallon, 16},
    {"pt_us", Dimension::volume, millilitersPerGallon, 8},
    {"pt_imp", Dimension::volume, millilitersPerImperialGallon, 8},

    {"degC", Dimension::temperature},
    {"degF", Dimension::temperature, 5, 9, 32},
    {"K", Dimension::temperature, 1, 1, 273.15},

    HKUnit::countPerMinute(),
    {"bpm", Dimension::frequency},
    {"count/s", Dimension::frequency, 60},
    {"Hz", Dimension::frequency, 60},

    {"m/s", Dimension::speed},
    {"km/hr", Dimension::speed, 1000, 3600},
    {"mi/hr", Dimension::speed, metersPerMile, 3600},

    {"%", Dimension::share},

    {"mmHg", Dimension::pressure},
    {"hPa", Dimension::pressure, 100, pascalsPerMillimeterOfMercury},
    {"mbar", Dimension::pressure, 100, pascalsPerMillimeterOfMercury},
    {"inHg", Dimension::pressure, 25.4},
    {"kPa", Dimension::pressure, 1000, pascalsPerMillimeterOfMercury},

    {"W", Dimension::power},
    {"kcal/hr·kg", Dimension::effort},
    {"mL/min·kg", Dimension::oxygenUse},
    {"dBASPL", Dimension::soundLevel},
};

}  // namespace

std::optional<HKUnit> unitNamed(std::string_view symbol) {
    const auto found = std::ranges::find(allUnits, symbol, &HKUnit::symbol);
    return found == std::ranges::end(allUnits) ? std::nullopt : std::optional(*found);
}

std::string_view keptSymbol(Dimension dimension) {
    const auto found = std::ranges::find(allUnits, dimension, &HKUnit::dimension);
    check(found != std::ranges::end(allUnits), "the table of units lacks a dimension");
    return found->symbol;
}

}  // namespace pedvar
