/// The kernel's step counter.
#pragma once

#include "core/executor.h"
#include "core/record.h"
#include "platform/clock.h"
#include "platform/pedometer.h"
#include "platform/user_defaults.h"

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>

namespace pedvar {

/// Where the kernel is found.
struct KernelFiles {
    std::filesystem::path devices = "/sys/bus/iio/devices";
    std::filesystem::path bootIdentity = "/proc/sys/kernel/random/boot_id";
};

/// How far a count had come, kept for the case that the program or the machine ends.
struct StepCountState {
    Date startDate;
    std::string boot;            // in which `counter` was read
    std::string device;          // that was read
    std::int64_t counter = 0;    // its value, steps since the boot
    std::int64_t steps = 0;      // since the start
    bool wasSwitchedOn = false;  // by us, to be switched off at the end

    using Fields = FieldList<&StepCountState::startDate, &StepCountState::boot, &StepCountState::device,
                             &StepCountState::counter, &StepCountState::steps, &StepCountState::wasSwitchedOn>;
    bool operator==(const StepCountState&) const = default;
};
static_assert(isComplete<StepCountState>);

/// Reads the counter of an industrial I/O device once a second. The counter runs while it is switched on, also
/// while no program reads it, and begins at 0 when the machine does.
///
/// The count goes on when it is asked for again from the same start: after a kill nothing is missing, after a
/// reboot the steps of at most `savingInterval` before it, and those that nobody counted.
class IIOPedometer : public CMPedometer {
public:
    static constexpr Seconds savingInterval{15};

    /// Keeps the references. The first device with a counter is taken.
    IIOPedometer(MainExecutor& executor, const Clock& clock, DefaultsDomains& defaults, const KernelFiles& files);
    ~IIOPedometer() override;

    bool isStepCountingAvailable() const override { return device_.has_value(); }
    /// Denied when the counter may not be read, or is off and may not be switched on.
    CMAuthorizationStatus authorizationStatus() const override;
    /// The device's folder, for messages.
    const std::optional<std::filesystem::path>& device() const { return device_; }

    void startUpdates(Date start, CMPedometerHandler handler) override;
    void stopUpdates() override;

private:
    std::expected<std::int64_t, CMError> readCounter() const;
    bool isOn() const;
    /// Counts from what an earlier program has left, if that was the same count.
    void begin(Date start);
    void poll();
    /// Adds what the counter has counted since it was last read.
    void advanceTo(std::int64_t counter);
    void save();

    MainExecutor& executor_;
    const Clock& clock_;
    DefaultsDomains& defaults_;
    std::optional<std::filesystem::path> device_;
    std::string boot_;
    CMPedometerHandler handler_;
    StepCountState state_;
    std::optional<std::int64_t> told_;  // the steps that the handler knows
    bool hasFailed_ = false;            // which is told once
    bool isBegun_ = false;              // the counter has been read since the start
    StepCountState saved_;
    Seconds sinceSaving_{};
    Timer timer_;
};

inline constexpr const char* stepCountKey = "stepCount";

}  // namespace pedvar
