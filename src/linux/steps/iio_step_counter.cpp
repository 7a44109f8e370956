#include "linux/steps/iio_step_counter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <ctime>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace pedvar {

namespace fs = std::filesystem;

namespace {

constexpr const char* counterName = "in_steps_input";
constexpr const char* switchName = "in_steps_en";

/// The first line of a file of the kernel's; an error number when it cannot be read.
std::expected<std::string, int> lineOf(const fs::path& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return std::unexpected(errno);
    std::array<char, 128> text{};
    const auto count = read(file, text.data(), text.size());
    const int failure = errno;
    close(file);
    if (count < 0) return std::unexpected(failure);
    const std::string_view all(text.data(), static_cast<std::size_t>(count));
    return std::string(all.substr(0, all.find('\n')));
}

std::expected<void, int> switchOn(const fs::path& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) return std::unexpected(errno);
    const bool isWritten = write(file, "1", 1) == 1;
    const int failure = errno;
    close(file);
    if (!isWritten) return std::unexpected(failure);
    return {};
}

Seconds sinceBoot() {
    timespec time{};
    clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::optional<fs::path> stepCounterIn(const fs::path& devices) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(devices, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code unreadable;
        if (fs::exists(entry->path() / counterName, unreadable)) found.push_back(entry->path());
    }
    return found.empty() ? std::nullopt : std::optional(*std::ranges::min_element(found));
}

}  // namespace

IIOStepCounter::IIOStepCounter(const KernelFiles& files) : device_(stepCounterIn(files.devices)) {
    if (device_) epoch_ = lineOf(files.bootIdentity).value_or("") + " " + device_->string();
}

CMAuthorizationStatus IIOStepCounter::authorizationStatus() const {
    if (!device_) return CMAuthorizationStatus::notDetermined;
    const bool isReadable = access((*device_ / counterName).c_str(), R_OK) == 0;
    const bool canRun = isOn() || access((*device_ / switchName).c_str(), W_OK) == 0;
    return isReadable && canRun ? CMAuthorizationStatus::authorized : CMAuthorizationStatus::denied;
}

/// A counter without a switch always runs.
bool IIOStepCounter::isOn() const {
    const auto value = lineOf(*device_ / switchName);
    return value ? *value != "0" : value.error() == ENOENT;
}

std::expected<StepReading, CMError> IIOStepCounter::read() {
    if (!device_) return std::unexpected(CMError{Phrase("there is no step counter")});
    const auto failed = [](const fs::path& path, Phrase reason) {
        return std::unexpected(CMError{Phrase("{}: {}", {path.string(), std::move(reason)})});
    };
    if (!isOn()) {
        const fs::path path = *device_ / switchName;
        if (const auto isSwitched = switchOn(path); !isSwitched) {
            return failed(path, std::strerror(isSwitched.error()));
        }
    }
    const fs::path path = *device_ / counterName;
    const auto line = lineOf(path);
    if (!line) return failed(path, std::strerror(line.error()));
    std::int64_t steps = 0;
    const char* const end = line->data() + line->size();
    const auto [rest, problem] = std::from_chars(line->data(), end, steps);
    if (problem != std::errc() || rest != end || steps < 0) {
        return failed(path, Phrase("\"{}\" is no count", {*line}));
    }
    return StepReading{steps, epoch_, sinceBoot()};
}

}  // namespace pedvar
