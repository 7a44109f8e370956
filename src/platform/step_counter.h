/// A counter of steps that knows nothing of days and recordings.
#pragma once

#include "core/date.h"
#include "platform/pedometer.h"

#include <cstdint>
#include <expected>
#include <string>

namespace pedvar {

struct StepReading {
    std::int64_t steps = 0;  // since the counter began at 0
    std::string epoch;       // another one when the counter has begun anew: with the machine, or as another device
    Seconds age{};           // how long the machine has been on, asleep or not
    bool operator==(const StepReading&) const = default;
};

/// The steps from one reading to a later one. A counter that is lower than it was has begun anew in between.
inline std::int64_t stepsBetween(const StepReading& earlier, const StepReading& later) {
    const bool hasBegunAnew = later.epoch != earlier.epoch || later.steps < earlier.steps;
    return hasBegunAnew ? later.steps : later.steps - earlier.steps;
}

class StepCounter {
public:
    virtual ~StepCounter() = default;

    virtual bool isAvailable() const = 0;
    virtual CMAuthorizationStatus authorizationStatus() const = 0;
    /// Switches the counter on where that is needed.
    virtual std::expected<StepReading, CMError> read() = 0;
};

}  // namespace pedvar
