#include "core/units.h"

#include <doctest/doctest.h>

#include <string>

using namespace pedvar;

TEST_CASE("units convert by their definitions, decimal fractions to the last bit") {
    struct Case {
        std::string symbol;
        double value;
        double kept;
        std::string keptSymbol;
    };
    const Case cases[] = {
        {"cm", 175, 1.75, "m"},
        {"km", 42.195, 42195, "m"},
        {"mi", 26, 41842.944, "m"},
        {"ft", 6, 1.8288, "m"},
        {"Cal", 250, 250, "kcal"},
        {"kJ", 4.184, 1, "kcal"},
        {"J", 8368, 2, "kcal"},
        {"s", 180, 3, "min"},
        {"ms", 180'000, 3, "min"},
        {"hr", 1.5, 90, "min"},
        {"d", 1, 1440, "min"},
        {"mcg", 5'000, 0.000005, "kg"},
        {"lb", 150, 68.0388555, "kg"},
        {"oz", 16, 0.45359237, "kg"},
        {"fl_oz_us", 1, 29.5735295625, "mL"},
        {"fl_oz_imp", 1, 28.4130625, "mL"},
        {"pt_imp", 1, 568.26125, "mL"},
        {"degF", 212, 100, "degC"},
        {"degF", 32, 0, "degC"},
        {"degF", -40, -40, "degC"},
        {"K", 273.15, 0, "degC"},
        {"count/s", 2, 120, "count/min"},
        {"Hz", 1.5, 90, "count/min"},
        {"km/hr", 36, 10, "m/s"},
        {"mi/hr", 100, 44.704, "m/s"},
        {"%", 0.97, 0.97, "%"},
        {"inHg", 29.92, 759.968, "mmHg"},
        {"mL/min·kg", 47.5, 47.5, "mL/min·kg"},
    };
    for (const Case& unitCase : cases) {
        CAPTURE(unitCase.symbol);
        const auto unit = unitNamed(unitCase.symbol);
        REQUIRE(unit);
        CHECK(keptSymbol(unit->dimension) == unitCase.keptSymbol);
        CHECK(unit->toKept(unitCase.value) == doctest::Approx(unitCase.kept).epsilon(1e-15));
        CHECK(unit->fromKept(unitCase.kept) == doctest::Approx(unitCase.value).epsilon(1e-15));
    }
    CHECK(HKUnit::centimeter().toKept(35) == 0.35);
    CHECK(unitNamed("s")->toKept(23) == 23.0 / 60);
}

TEST_CASE("a symbol is known only as written, and the kept unit of a dimension changes nothing") {
    for (const char* symbol : {"", "KM", "kcal ", "kilo", "Kj", "LB", "furlong"}) {
        CAPTURE(symbol);
        CHECK(!unitNamed(symbol));
    }
    for (int dimension = 0; dimension <= static_cast<int>(Dimension::soundLevel); ++dimension) {
        const auto unit = unitNamed(keptSymbol(static_cast<Dimension>(dimension)));
        REQUIRE(unit);
        CHECK(static_cast<int>(unit->dimension) == dimension);
        CHECK(unit->toKept(0.1) == 0.1);
    }
}
