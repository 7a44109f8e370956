/// The device's step counter.
#pragma once

#include "core/date.h"
#include "platform/phrase.h"

#include <cstdint>
#include <expected>
#include <functional>

namespace pedvar {

enum class CMAuthorizationStatus { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

struct CMPedometerData {
    Date startDate;
    Date endDate;
    std::int64_t numberOfSteps = 0;  // between the two
    bool operator==(const CMPedometerData&) const = default;
};

/// Why steps cannot be counted, for people.
struct CMError {
    Phrase localizedDescription;
};

/// Called on the main executor, again and again.
using CMPedometerHandler = std::move_only_function<void(std::expected<CMPedometerData, CMError>)>;

/// To be called on the main executor.
class CMPedometer {
public:
    virtual ~CMPedometer() = default;

    virtual bool isStepCountingAvailable() const = 0;
    virtual CMAuthorizationStatus authorizationStatus() const = 0;

    /// Tells `handler` the steps since `start` whenever there are more, until `stopUpdates` or another start.
    /// Asked again from the same start, also by another process, it goes on counting where it was, and not below
    /// the steps `known` from before.
    virtual void startUpdates(Date start, std::int64_t known, CMPedometerHandler handler) = 0;
    /// The handler is not called any more, while the count goes on for whoever asks from the same start.
    virtual void detach() = 0;
    /// The count is over. The handler is not called any more.
    virtual void stopUpdates() = 0;
};

}  // namespace pedvar
