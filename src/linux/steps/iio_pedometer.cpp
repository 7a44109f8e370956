#include "linux/steps/iio_pedometer.h"

#include "core/record_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace pedvar {

namespace fs = std::filesystem;

namespace {

constexpr const char* counterName = "in_steps_input";
constexpr const char* switchName = "in_steps_en";
constexpr Seconds pollingInterval{1};

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

bool switchTo(const fs::path& path, std::string_view value) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) return false;
    const bool isWritten = write(file, value.data(), value.size()) == static_cast<ssize_t>(value.size());
    close(file);
    return isWritten;
}

std::optional<fs::path> stepCounterIn(const fs::path& devices) {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(devices, error), end; !error && entry != end; entry.increment(error)) {
        if (fs::exists(entry->path() / counterName, error)) found.push_back(entry->path());
        error.clear();
    }
    return found.empty() ? std::nullopt : std::optional(*std::ranges::min_element(found));
}

}  // namespace

IIOPedometer::IIOPedometer(MainExecutor& executor, const Clock& clock, DefaultsDomains& defaults,
                           const KernelFiles& files)
    : executor_(executor),
      clock_(clock),
      defaults_(defaults),
      device_(stepCounterIn(files.devices)),
      boot_(lineOf(files.bootIdentity).value_or("")) {}

IIOPedometer::~IIOPedometer() {
    if (handler_ && isBegun_) save();
}

CMAuthorizationStatus IIOPedometer::authorizationStatus() const {
    if (!device_) return CMAuthorizationStatus::notDetermined;
    const bool isReadable = access((*device_ / counterName).c_str(), R_OK) == 0;
    const bool canRun = isOn() || access((*device_ / switchName).c_str(), W_OK) == 0;
    return isReadable && canRun ? CMAuthorizationStatus::authorized : CMAuthorizationStatus::denied;
}

/// A counter without a switch always runs.
bool IIOPedometer::isOn() const {
    const auto value = lineOf(*device_ / switchName);
    return value ? *value != "0" : value.error() == ENOENT;
}

void IIOPedometer::startUpdates(Date start, CMPedometerHandler handler) {
    if (!device_) return;
    handler_ = std::move(handler);
    told_.reset();
    hasFailed_ = false;
    isBegun_ = false;
    begin(start);
    timer_ = executor_.after(Seconds{}, [this] { poll(); });
}

void IIOPedometer::begin(Date start) {
    const auto stored = defaults_.standard().data(stepCountKey);
    const auto earlier = stored ? readJson<StepCountState>(stored->bytes) : std::nullopt;
    state_ = {};
    if (earlier && earlier->startDate == start) {
        state_ = *earlier;
        // A counter of another boot, or another counter, began at 0 when the person was on the way already.
        if (state_.boot != boot_ || state_.device != device_->string()) state_.counter = 0;
        isBegun_ = true;
    }
    saved_ = state_;
    state_.startDate = start;
    state_.boot = boot_;
    state_.device = device_->string();
    if (!isOn() && switchTo(*device_ / switchName, "1")) state_.wasSwitchedOn = true;
}

void IIOPedometer::stopUpdates() {
    if (!handler_) return;
    timer_.cancel();
    handler_ = nullptr;
    if (state_.wasSwitchedOn) switchTo(*device_ / switchName, "0");
    static_cast<void>(defaults_.write({{&defaults_.standard(), stepCountKey, std::nullopt}}));
}

std::expected<std::int64_t, CMError> IIOPedometer::readCounter() const {
    const fs::path path = *device_ / counterName;
    const auto line = lineOf(path);
    const auto failed = [&](std::string_view reason) {
        return std::unexpected(CMError{path.string() + ": " + std::string(reason)});
    };
    if (!line) return failed(std::strerror(line.error()));
    std::int64_t value = 0;
    const char* const end = line->data() + line->size();
    const auto [rest, problem] = std::from_chars(line->data(), end, value);
    if (problem != std::errc() || rest != end || value < 0) return failed("\"" + *line + "\" is no count");
    return value;
}

void IIOPedometer::poll() {
    timer_ = executor_.after(pollingInterval, [this] { poll(); });
    const auto counter = readCounter();
    if (!counter) {
        if (!std::exchange(hasFailed_, true)) handler_(std::unexpected(counter.error()));
        return;
    }
    hasFailed_ = false;
    if (isBegun_) {
        advanceTo(*counter);
    } else {
        state_.counter = *counter;
        isBegun_ = true;
        save();
    }
    sinceSaving_ += pollingInterval;
    if (sinceSaving_ >= savingInterval) save();
    if (told_.value_or(0) == state_.steps) return;
    told_ = state_.steps;
    handler_(CMPedometerData{state_.startDate, clock_.now(), state_.steps});
}

/// A counter that is lower than it was has begun anew.
void IIOPedometer::advanceTo(std::int64_t counter) {
    state_.steps += counter < state_.counter ? counter : counter - state_.counter;
    state_.counter = counter;
}

/// What cannot be saved is tried again the next time.
void IIOPedometer::save() {
    sinceSaving_ = {};
    if (state_ == saved_) return;
    const auto text = encodeJson(state_);
    if (text && defaults_.write({{&defaults_.standard(), stepCountKey, Data{*text}}})) saved_ = state_;
}

}  // namespace pedvar
