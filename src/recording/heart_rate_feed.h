/// The heart rate during a recording.
#pragma once

#include "core/coalesced_work.h"
#include "platform/clock.h"
#include "platform/health_store.h"

#include <functional>
#include <optional>

namespace pedvar {

/// Beats per minute.
struct HeartRate {
    double current = 0;
    double average = 0;  // since the start
};

/// Reads what others add to the health store. Lives on the main executor.
class HeartRateFeed {
public:
    using Handler = std::move_only_function<void(HeartRate)>;

    /// Keeps references. `handler` hears of each change between `start` and `stop`.
    HeartRateFeed(MainExecutor& executor, const Clock& clock, HKHealthStore& healthStore, Handler handler);

    void start(Date since);
    void stop();

private:
    Task<> read();

    MainExecutor& executor_;
    const Clock& clock_;
    HKHealthStore& healthStore_;
    Handler handler_;
    std::optional<Date> since_;
    Subscription newSamples_;
    CoalescedWork reading_;  // last: its coroutines use what stands above
};

}  // namespace pedvar
