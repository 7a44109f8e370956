/// Age, weight, height and what the person wants them to be.
#pragma once

#include "core/async.h"
#include "core/published.h"
#include "health/gated_reads.h"
#include "health/health_diagnostics.h"
#include "health/settings_store.h"
#include "platform/clock.h"
#include "platform/health_store.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace pedvar {

/// Keeps the personal metrics, which Pedvar stores itself, and the newest weight and height of the health store. A
/// value that the person has just saved is never replaced by one that was read before. Lives on the main executor.
class BodyMetrics {
public:
    BodyMetrics(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore, GatedReads& reads,
                SettingsStore& settings, HealthDiagnostics& diagnostics);

    Published<PersonalMetrics> personalMetrics;
    Published<std::optional<double>> currentWeight;  // kilograms
    Published<std::optional<double>> currentHeight;  // centimetres
    Published<bool> didLoadBodyMetrics;

    /// Edits what is stored, stores and publishes it.
    DefaultsResult changePersonalMetrics(const std::function<void(PersonalMetrics&)>& edit);
    /// Publishes what is stored, after somebody else has changed it.
    void reloadPersonalMetrics();

    /// Write one sample of this moment. False, and nothing has changed, when the store refuses it.
    Task<bool> saveBodyMassToHealthKit(double kilograms);
    Task<bool> saveHeightToHealthKit(double centimeters);

    /// Publishes the newest weight and height, unless one is saved meanwhile.
    Task<> loadBodyMetrics();

    /// The sample of `type` that ends last, up to now.
    Task<std::optional<HKQuantitySample>> fetchMostRecentSample(HKQuantityType type);
    /// Samples that reach into the interval, oldest first; none when they cannot be read.
    Task<std::vector<HKQuantitySample>> fetchWeightReadings(Date from, Date to);
    Task<std::vector<HKQuantitySample>> fetchHeightReadings(Date from, Date to);

private:
    Task<bool> save(HKQuantityType type, HKQuantity quantity);
    /// Counts a save, so that loads that began before it publish nothing.
    void countSave();
    Task<std::vector<HKQuantitySample>> fetchReadings(HKQuantityType type, Dimension dimension, Date from,
                                                      Date to);

    MainExecutor& executor_;
    const Clock& clock_;
    HKHealthStore& healthStore_;
    GatedReads& reads_;
    SettingsStore& settings_;
    HealthDiagnostics& diagnostics_;
    std::int64_t bodyMetricsWriteGeneration_ = 0;
};

}  // namespace pedvar
