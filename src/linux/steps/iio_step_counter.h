/// The kernel's step counter.
#pragma once

#include "platform/step_counter.h"

#include <filesystem>
#include <optional>
#include <string>

namespace pedvar {

/// Where the kernel is found.
struct KernelFiles {
    std::filesystem::path devices = "/sys/bus/iio/devices";
    std::filesystem::path bootIdentity = "/proc/sys/kernel/random/boot_id";
};

/// A device of industrial I/O. It counts while it is switched on, whether a program reads it or not, and begins at
/// 0 when the machine does. It stays switched on: another program may have begun to count with it.
class IIOStepCounter : public StepCounter {
public:
    /// The first device with a counter is taken.
    explicit IIOStepCounter(const KernelFiles& files);

    /// The device's folder.
    const std::optional<std::filesystem::path>& device() const { return device_; }

    bool isAvailable() const override { return device_.has_value(); }
    /// Denied when the counter may not be read, or is off and may not be switched on.
    CMAuthorizationStatus authorizationStatus() const override;
    std::expected<StepReading, CMError> read() override;

private:
    bool isOn() const;

    std::optional<std::filesystem::path> device_;
    std::string epoch_;
};

}  // namespace pedvar
