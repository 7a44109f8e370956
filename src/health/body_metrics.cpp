#include "health/body_metrics.h"

#include "core/check.h"

#include <limits>
#include <utility>

namespace pedvar {

namespace {

const HKQuantityType bodyMass{HKQuantityTypeIdentifierBodyMass};
const HKQuantityType height{HKQuantityTypeIdentifierHeight};

constexpr Date longAgo = dateFromUnix(-1e10);  // in 1653, before anything that a store can hold of a person
constexpr std::chrono::seconds thisMoment{1};  // holds what is written now; stores round moments

std::optional<double> amountOf(const std::optional<HKQuantitySample>& sample, HKUnit unit) {
    if (!sample || sample->quantity.dimension() != unit.dimension) return std::nullopt;
    return sample->quantity.doubleValue(unit);
}

}  // namespace

BodyMetrics::BodyMetrics(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore, GatedReads& reads,
                         SettingsStore& settings, HealthDiagnostics& diagnostics)
    : personalMetrics(settings.personalMetrics()),
      executor_(executor),
      clock_(clock),
      healthStore_(healthStore),
      reads_(reads),
      settings_(settings),
      diagnostics_(diagnostics) {}

DefaultsResult BodyMetrics::changePersonalMetrics(const std::function<void(PersonalMetrics&)>& edit) {
    auto result = settings_.changePersonalMetrics(edit);
    reloadPersonalMetrics();
    return result;
}

void BodyMetrics::reloadPersonalMetrics() {
    personalMetrics = settings_.personalMetrics();
}

Task<bool> BodyMetrics::saveBodyMassToHealthKit(double kilograms) {
    const HKQuantity quantity(HKUnit::kilogram(), kilograms);
    const bool isSaved = co_await save(bodyMass, quantity);
    if (!isSaved) co_return false;
    countSave();
    currentWeight = kilograms;
    co_return true;
}

Task<bool> BodyMetrics::saveHeightToHealthKit(double centimeters) {
    const HKQuantity quantity(HKUnit::centimeter(), centimeters);
    const bool isSaved = co_await save(height, quantity);
    if (!isSaved) co_return false;
    countSave();
    currentHeight = centimeters;
    co_return true;
}

Task<bool> BodyMetrics::save(HKQuantityType type, HKQuantity quantity) {
    const Date now = clock_.now();
    Completion<HKResult<void>> answer(executor_);
    std::vector<HKQuantitySample> samples;
    samples.push_back({type, quantity, now, now});
    healthStore_.save(std::move(samples), answer.resolver());
    const auto saved = co_await answer;
    if (!saved) {
        diagnostics_.log(LogLevel::error, "HKDiag save FAILED " + type.identifier + " " + describe(saved.error()));
    }
    co_return saved.has_value();
}

void BodyMetrics::countSave() {
    check(bodyMetricsWriteGeneration_ < std::numeric_limits<std::int64_t>::max(),
          "more body metrics were saved than can be counted");
    ++bodyMetricsWriteGeneration_;
}

Task<> BodyMetrics::loadBodyMetrics() {
    const std::int64_t generation = bodyMetricsWriteGeneration_;
    const auto newestWeight = co_await fetchMostRecentSample(bodyMass);
    const auto newestHeight = co_await fetchMostRecentSample(height);
    if (bodyMetricsWriteGeneration_ == generation) {
        currentWeight = amountOf(newestWeight, HKUnit::kilogram());
        currentHeight = amountOf(newestHeight, HKUnit::centimeter());
    }
    didLoadBodyMetrics = true;
}

Task<std::optional<HKQuantitySample>> BodyMetrics::fetchMostRecentSample(HKQuantityType type) {
    const HKPredicate predicate{longAgo, clock_.now() + thisMoment};
    auto samples =
        co_await reads_.fetchSamples(type, predicate, 1, HKSampleSort::endDateDescending, QueryPriority::normal);
    if (!samples || samples->empty()) co_return std::nullopt;
    co_return std::move(samples->front());
}

Task<std::vector<HKQuantitySample>> BodyMetrics::fetchWeightReadings(Date from, Date to) {
    co_return co_await fetchReadings(bodyMass, Dimension::mass, from, to);
}

Task<std::vector<HKQuantitySample>> BodyMetrics::fetchHeightReadings(Date from, Date to) {
    co_return co_await fetchReadings(height, Dimension::length, from, to);
}

Task<std::vector<HKQuantitySample>> BodyMetrics::fetchReadings(HKQuantityType type, Dimension dimension, Date from,
                                                               Date to) {
    const HKPredicate predicate{from, to};
    auto found =
        co_await reads_.fetchSamples(type, predicate, 0, HKSampleSort::endDateAscending, QueryPriority::normal);
    auto samples = std::move(found).value_or(std::vector<HKQuantitySample>());
    std::erase_if(
        samples, [dimension](const HKQuantitySample& sample) { return sample.quantity.dimension() != dimension; });
    co_return samples;
}

}  // namespace pedvar
