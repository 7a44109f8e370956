/// Steps since the start of a recording, by the kernel's counter.
#pragma once

#include "core/executor.h"
#include "core/record.h"
#include "linux/steps/iio_step_counter.h"
#include "platform/clock.h"
#include "platform/pedometer.h"
#include "platform/user_defaults.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace pedvar {

/// How far a count had come, kept for the case that the program or the machine ends.
struct StepCountState {
    Date startDate;
    std::string epoch;         // of the counter when it was read last
    std::int64_t reading = 0;  // the counter itself
    std::int64_t steps = 0;    // since the start

    using Fields = FieldList<&StepCountState::startDate, &StepCountState::epoch, &StepCountState::reading,
                             &StepCountState::steps>;
    bool operator==(const StepCountState&) const = default;
};
static_assert(isComplete<StepCountState>);

/// Reads the counter once a second.
///
/// The count goes on when it is asked for again from the same start: after a kill nothing is missing, after a loss
/// of power the steps of at most `savingInterval` before it that the caller does not know either, and those that
/// the kernel did not count.
class IIOPedometer : public CMPedometer {
public:
    static constexpr Seconds savingInterval{30};

    /// Keeps the references.
    IIOPedometer(MainExecutor& executor, const Clock& clock, DefaultsDomains& defaults, const KernelFiles& files);
    ~IIOPedometer() override;

    bool isStepCountingAvailable() const override { return counter_.isAvailable(); }
    CMAuthorizationStatus authorizationStatus() const override { return counter_.authorizationStatus(); }
    /// The device's folder, for messages.
    const std::optional<std::filesystem::path>& device() const { return counter_.device(); }

    void startUpdates(Date start, std::int64_t known, CMPedometerHandler handler) override;
    void detach() override;
    void stopUpdates() override;

private:
    void poll();
    void advanceTo(const StepReading& reading);
    void save();

    MainExecutor& executor_;
    const Clock& clock_;
    DefaultsDomains& defaults_;
    IIOStepCounter counter_;
    CMPedometerHandler handler_;
    StepCountState state_;
    std::optional<StepReading> last_;  // none before the first since the start
    std::int64_t known_ = 0;           // the steps that the caller knew at the start
    std::int64_t told_ = 0;            // the steps that the handler knows
    bool hasFailed_ = false;           // which is told once
    StepCountState saved_;
    Seconds sinceSaving_{};
    Timer timer_;
};

inline constexpr const char* stepCountKey = "stepCount";

}  // namespace pedvar
