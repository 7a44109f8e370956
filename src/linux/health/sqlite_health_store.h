/// The health store on SQLite.
#pragma once

#include "core/calendar.h"
#include "core/executor.h"
#include "linux/health/health_database.h"
#include "platform/health_store.h"

#include <cstddef>
#include <memory>
#include <optional>

namespace pedvar {

/// Answers from the person's own store, on worker threads of its own that start when they are needed. Completions
/// are called on those threads; without any, on that of the caller before the call returns. A store that does not
/// exist yet is an empty one; saving creates it.
///
/// The request status is `shouldRequest` until a source was connected, then `unnecessary`; there is nobody to ask,
/// so a request completes at once. Failures have the domain "SQLite" and its extended code, or "PedvarStore".
class SqliteHealthStore : public HKHealthStore {
public:
    /// Keeps references to all. The intervals of collection queries follow the clock of `zone`. With a `horizon`
    /// queries see the store as if no sample had started at that moment or later.
    SqliteHealthStore(MainExecutor& executor, HealthDatabase& database, const ZoneRules& zone,
                      std::optional<Date> horizon = {}, std::size_t highestThreadCount = 2);
    /// Answers what is asked already, then ends its threads.
    ~SqliteHealthStore() override;

    void getRequestStatusForAuthorization(const HKTypeSets& types,
                                          HKHandler<HKAuthorizationRequestStatus> completion) override;
    void requestAuthorization(const HKTypeSets& types, HKHandler<void> completion) override;

    void execute(HKStatisticsQuery query) override;
    void execute(HKStatisticsCollectionQuery query) override;
    void execute(HKSampleQuery query) override;
    void execute(HKWorkoutQuery query) override;
    void execute(HKWorkoutRouteQuery query) override;

    void recall(std::string key, HKQuantityType type, HKHandler<RecalledText> completion) override;
    void keep(DerivedDocument document, std::int64_t state, HKHandler<void> completion) override;

    void save(std::vector<HKQuantitySample> samples, HKHandler<void> completion) override;
    void deleteSamples(std::vector<HKQuantitySample> samples, HKHandler<void> completion) override;

    /// Nothing wakes Pedvar on this platform: observers hear of what this process adds.
    void enableBackgroundDelivery(const HKQuantityType& type, HKUpdateFrequency frequency,
                                  HKHandler<void> completion) override;
    [[nodiscard]] Subscription observeNewSamples(const HKQuantityType& type,
                                                 std::move_only_function<void()> observer) override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace pedvar
