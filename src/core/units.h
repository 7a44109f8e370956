/// Units of measurement, one table for all of them.
#pragma once

#include <optional>
#include <string_view>

namespace pedvar {

/// What a unit measures. Beside each the unit in which its values are kept.
enum class Dimension {
    count,        // count
    length,       // m
    energy,       // kcal
    time,         // min
    mass,         // kg
    volume,       // mL
    temperature,  // degC
    frequency,    // count/min
    speed,        // m/s
    share,        // %, as a fraction of 1
    pressure,     // mmHg
    power,        // W
    effort,       // kcal/hr·kg
    oxygenUse,    // mL/min·kg
    soundLevel,   // dBASPL
};

/// A unit of one dimension: `kept = (value - zero) * factor / divisor`. A divisor rounds less than a factor below
/// 1 would: 35 cm are 0.35 m to the last bit.
struct HKUnit {
    std::string_view symbol;
    Dimension dimension;
    double factor = 1;
    double divisor = 1;
    double zero = 0;  // the value, in this unit, of a kept 0

    constexpr double toKept(double value) const { return (value - zero) * factor / divisor; }
    constexpr double fromKept(double kept) const { return kept * divisor / factor + zero; }

    static constexpr HKUnit count() { return {"count", Dimension::count}; }
    static constexpr HKUnit meter() { return {"m", Dimension::length}; }
    static constexpr HKUnit centimeter() { return {"cm", Dimension::length, 1, 100}; }
    static constexpr HKUnit kilocalorie() { return {"kcal", Dimension::energy}; }
    static constexpr HKUnit minute() { return {"min", Dimension::time}; }
    static constexpr HKUnit kilogram() { return {"kg", Dimension::mass}; }
    static constexpr HKUnit milliliter() { return {"mL", Dimension::volume}; }
    static constexpr HKUnit countPerMinute() { return {"count/min", Dimension::frequency}; }
};

/// The unit written as `symbol`, the way exports write them ("km", "Cal", "count/min"); none when unknown. Symbols
/// that differ only in case differ in meaning ("Cal" is a kilocalorie, "cal" a thousandth of one).
std::optional<HKUnit> unitNamed(std::string_view symbol);

/// The symbol of the unit in which values of `dimension` are kept.
std::string_view keptSymbol(Dimension dimension);

inline constexpr double metersPerMile = 1609.344;
inline constexpr double metersPerKilometer = 1000;
inline constexpr double kilogramsPerPound = 0.45359237;
inline constexpr double centimetersPerInch = 2.54;

}  // namespace pedvar
