#include "cli/sample_data.h"

#include "core/calendar.h"
#include "core/check.h"
#include "hydration/hydration_documents.h"
#include "linux/health/health_database.h"
#include "linux/health/sample_writer.h"
#include "linux/system/sqlite_defaults.h"
#include "platform/health_store.h"
#include "routes/gpx_writer.h"

#include <cmath>
#include <filesystem>
#include <numbers>

namespace pedvar {
namespace {

using namespace std::chrono_literals;

constexpr Milliseconds millisecondsPerHour = 3'600'000;

/// A clock hour of a summer day in Berlin.
Milliseconds hourOf(Day day, int hour) {
    const auto utc = LocalTime(day) + std::chrono::hours(hour - 2);
    return millisecondsOf(dateFromUnix(utc.time_since_epoch().count()));
}

class SampleStore {
public:
    explicit SampleStore(const std::filesystem::path& folder)
        : database_(folder / "health.sqlite"), writer_(database_) {}

    void add(const SourceDescription& source, const char* type, const char* unit, Day day, int hour,
             double value) {
        const auto series = writer_.series(type, unit);
        const auto number = writer_.source(source);
        check(series && number, "the sample store cannot be prepared");
        rows_.push_back({*series, *number, hourOf(day, hour), millisecondsPerHour, value});
    }

    void finish() {
        check(writer_.write(rows_, {}).has_value(), "the sample store cannot be written");
        check(writer_.refreshTotals().has_value(), "the sample store has no totals");
    }

private:
    HealthDatabase database_;
    SampleWriter writer_;
    std::vector<SampleRow> rows_;
};

const SourceDescription watch{SourceKind::watch, "Ada’s Watch", "Watch2,4"};
const SourceDescription phone{SourceKind::phone, "Ada’s Phone", "Phone9,3"};

void addDay(SampleStore& store, Day day, int number) {
    const bool hasWatch = number % 11 != 10;
    for (int hour = 8; hour < 18; ++hour) {
        const double steps = 500 + 170 * ((number + 2) % 5) + 90 * (hour * hour % 7);
        store.add(phone, HKQuantityTypeIdentifierStepCount, "count", day, hour, steps);
        store.add(phone, HKQuantityTypeIdentifierDistanceWalkingRunning, "m", day, hour, steps * 0.75);
        if (hasWatch) store.add(watch, HKQuantityTypeIdentifierStepCount, "count", day, hour, steps + 40);
    }
    store.add(phone, HKQuantityTypeIdentifierFlightsClimbed, "count", day, 9, 3 + number % 4);
    store.add(watch, HKQuantityTypeIdentifierActiveEnergyBurned, "kcal", day, 12, 280 + 10 * number);
    store.add(watch, HKQuantityTypeIdentifierAppleExerciseTime, "min", day, 12, 20 + number);
}

std::string stepRecord(const std::string& hour, const std::string& value) {
    return R"( <Record type="HKQuantityTypeIdentifierStepCount" sourceName="Ada" unit="count")"
           " startDate=\"2024-05-01 " +
           hour + ":00:00 +0200\" endDate=\"2024-05-01 " + hour + ":10:00 +0200\" value=\"" + value + "\"/>\n";
}

}  // namespace

void writeSampleStore(const std::filesystem::path& folder) {
    SampleStore store(folder);
    const Day first{2024y / 4 / 8};
    for (int number = 0; number < 24; ++number) addDay(store, first + std::chrono::days(number), number);
    store.finish();
}

std::string sampleTrack() {
    constexpr int points = 360;
    const double start = LocalTime(Day{2024y / 4 / 30}).time_since_epoch().count() + 4.5 * 3600;
    std::vector<CLLocation> locations;
    for (int i = 0; i <= points; ++i) {
        const double angle = 2 * std::numbers::pi * i / points;
        locations.push_back({.latitude = 52.5 + 0.004 * std::sin(2 * angle) + 0.003 * std::sin(angle),
                             .longitude = 13.4 + 0.012 * (1 - std::cos(angle)),
                             .altitude = 60 + 25 * std::sin(3 * angle),
                             .verticalAccuracy = 3,
                             .timestamp = dateFromUnix(start + 9 * i)});
    }
    return writeGPX(locations, "Round & round", "Walking", locations.front().timestamp);
}

void addBodySamples(const std::filesystem::path& folder) {
    SampleStore store(folder);
    for (int number = 1; number <= 28; number += 3) {
        const Day day = Day{2024y / 4 / 1} + std::chrono::days(number - 1);
        store.add(phone, HKQuantityTypeIdentifierBodyMass, "kg", day, 7, 74 - 0.1 * number + 0.25 * (number % 4));
    }
    store.add(phone, HKQuantityTypeIdentifierHeight, "m", Day{2024y / 4 / 1}, 7, 1.715);
    store.add(phone, HKQuantityTypeIdentifierHeight, "m", Day{2024y / 4 / 9}, 7, 1.72);
    store.finish();
}

void addDrinks(const std::filesystem::path& folder) {
    const Day today{2024y / 5 / 1};
    SampleStore store(folder);
    store.add(phone, HKQuantityTypeIdentifierDietaryWater, "mL", today, 7, 150);
    store.finish();
    std::vector<Drink> drinks;
    const auto drink = [&](int hour, double milliliters, DrinkType type) {
        UUID::Bytes number{};
        number[0] = static_cast<std::uint8_t>(drinks.size());
        drinks.push_back({UUID::random(number), dateOfMilliseconds(hourOf(today, hour)), milliliters, type,
                          milliliters * waterShare(type), false});
    };
    drink(8, 300, DrinkType::water);
    drink(14, 200, DrinkType::coffee);
    drink(20, 500, DrinkType::juice);
    SqliteDefaults defaults(folder, SqliteDefaults::Access::readWrite);
    const bool isWritten =
        defaults
            .write({{&defaults.standard(), "hydrationDrinks.2024-05", Data{encodeJson(drinks).value()}},
                    {defaults.shared(), "hydrationLastAmountMilliliters", 500.0}})
            .has_value();
    check(isWritten, "the drinks cannot be written");
}

std::string sampleExport() {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<HealthData locale="en_GB">
 <ExportDate value="2024-05-01 18:00:00 +0200"/>
 <Me HKCharacteristicTypeIdentifierDateOfBirth="1990-06-15"/>
)" + stepRecord("08", "900") +
           stepRecord("09", "700") + stepRecord("10", "many") + "</HealthData>\n";
}

}  // namespace pedvar
