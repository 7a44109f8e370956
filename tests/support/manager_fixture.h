/// A manager among fakes.
#pragma once

#include "health/health_kit_manager.h"
#include "linux/system/nlohmann_json_parser.h"
#include "support/fake_companions.h"
#include "support/fake_defaults.h"
#include "support/fake_health_store.h"
#include "support/fake_locale.h"
#include "support/fake_log.h"
#include "support/fake_zone.h"
#include "support/virtual_time.h"

#include <string>
#include <vector>

namespace pedvar {

/// Noon of Friday 2024-05-03 in a zone whose clocks went forward on 2024-03-31; weeks begin on Monday.
struct ManagerFixture {
    static constexpr Day today{std::chrono::year(2024) / 5 / 3};

    std::vector<std::string> trace;
    FakeZone zone{std::chrono::hours(1),
                  {{utc(std::chrono::year(2024) / 3 / 31, std::chrono::hours(1)), std::chrono::hours(2)}}};
    FakeLocale locale{zone};
    VirtualTime time{utc(std::chrono::year(2024) / 5 / 3, std::chrono::hours(10))};
    FakeHealthStore store{zone};
    FakeDefaults defaults{trace};
    NlohmannJsonParser json;
    SettingsStore settings{defaults, json, locale};
    FakeLog log;
    HealthDiagnostics diagnostics{log};
    FakeStepGoalNotifications notifications{trace};
    HealthKitManager manager{time, time, store, settings, diagnostics, notifications};

    /// Steps at noon of the day so many days ago.
    void walk(double steps, int daysAgo) {
        store.addSteps(steps, settings.calendar().start(today - std::chrono::days(daysAgo)) +
                                  std::chrono::hours(12) - std::chrono::seconds(1));
    }
    /// Every read fails from now on.
    void breakStore() {
        for (const char* type :
             {HKQuantityTypeIdentifierStepCount, HKQuantityTypeIdentifierDistanceWalkingRunning,
              HKQuantityTypeIdentifierActiveEnergyBurned, HKQuantityTypeIdentifierAppleExerciseTime,
              HKQuantityTypeIdentifierFlightsClimbed}) {
            store.failures.emplace(type, HKError{"com.example.health", 6, "The store is locked"});
        }
    }
};

}  // namespace pedvar
