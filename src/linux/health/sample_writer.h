/// Bulk writing into the health store.
#pragma once

#include "linux/health/samples.h"
#include "linux/health/store_error.h"
#include "platform/health_store.h"

#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace pedvar {

class HealthDatabase;

/// What one batch did.
struct WriteCounts {
    std::int64_t samplesAdded = 0;
    std::int64_t workoutsAdded = 0;
    std::int64_t routesAdded = 0;
};

/// Writes batches of samples and workouts: each batch is one transaction, kept whole or not at all, and adds only
/// what is not there yet. Totals that a batch makes stale are dropped in the same transaction and made anew by
/// `refreshTotals`; until then sums are counted from the samples. One writer at a time in all processes: others
/// wait, a bounded time.
class SampleWriter {
public:
    /// Nothing is opened or created before the first call.
    explicit SampleWriter(HealthDatabase& database);
    ~SampleWriter();
    SampleWriter(SampleWriter&&) noexcept;

    /// The number of the series of `type` in `unit` ("HKQuantityTypeIdentifierStepCount", "count"), new if need
    /// be. Where the dimension is known the unit has to be the one in which its values are kept.
    StoreResult<std::int32_t> series(std::string_view type, std::string_view unit);

    /// The number of the source, new if need be. New sources join the order of priority by their kind, behind
    /// those of the same kind.
    StoreResult<std::int32_t> source(const SourceDescription& description);

    /// What is added from now on belongs to one import, which `HealthAdministration::undoImport` can take back.
    StoreResult<> beginImport();

    /// A workout that is there already still receives the routes that it lacks.
    StoreResult<WriteCounts> write(std::span<const SampleRow> samples, std::span<const WorkoutRow> workouts = {});

    /// Writes a few samples and brings their totals up to date in the same transaction.
    StoreResult<WriteCounts> writeLive(std::span<const SampleRow> samples);

    /// Removes a few samples, and brings their totals up to date in the same transaction.
    StoreResult<> removeLive(std::span<const SampleRow> samples);

    /// Keeps the document, unless the samples of its type are no longer in `state`.
    StoreResult<> keep(const DerivedDocument& document, std::int64_t state);

    /// Makes missing totals. `progress` is told the share done, 0 to 1; returning false stops between two whole
    /// steps.
    StoreResult<> refreshTotals(const std::function<bool(double)>& progress = {});

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace pedvar
