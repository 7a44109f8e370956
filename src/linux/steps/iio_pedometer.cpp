#include "linux/steps/iio_pedometer.h"

#include "core/record_reader.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

constexpr Seconds pollingInterval{1};

}  // namespace

IIOPedometer::IIOPedometer(MainExecutor& executor, const Clock& clock, DefaultsDomains& defaults,
                           const KernelFiles& files)
    : executor_(executor), clock_(clock), defaults_(defaults), counter_(files) {}

IIOPedometer::~IIOPedometer() {
    IIOPedometer::detach();
}

void IIOPedometer::startUpdates(Date start, std::int64_t known, CMPedometerHandler handler) {
    handler_ = std::move(handler);
    known_ = known;
    told_ = 0;
    hasFailed_ = false;
    state_ = {.startDate = start};
    last_.reset();
    const auto stored = defaults_.standard().data(stepCountKey);
    const auto earlier = stored ? readJson<StepCountState>(stored->bytes) : std::nullopt;
    if (earlier && earlier->startDate == start) {
        state_ = *earlier;
        last_ = StepReading{earlier->reading, earlier->epoch};
    }
    saved_ = state_;
    timer_ = executor_.after(Seconds{}, [this] { poll(); });
}

void IIOPedometer::detach() {
    if (!handler_) return;
    timer_.cancel();
    handler_ = nullptr;
    if (last_) save();
}

void IIOPedometer::stopUpdates() {
    if (!handler_) return;
    timer_.cancel();
    handler_ = nullptr;
    static_cast<void>(defaults_.write({{&defaults_.standard(), stepCountKey, std::nullopt}}));
}

void IIOPedometer::poll() {
    timer_ = executor_.after(pollingInterval, [this] { poll(); });
    const auto reading = counter_.read();
    if (!reading) {
        if (!std::exchange(hasFailed_, true)) handler_(std::unexpected(reading.error()));
        return;
    }
    hasFailed_ = false;
    advanceTo(*reading);
    if (std::exchange(told_, state_.steps) != state_.steps) {
        handler_(CMPedometerData{state_.startDate, clock_.now(), state_.steps});
    }
}

/// The first reading is the base, which is kept at once. A counter that began anew has lost what was not kept.
void IIOPedometer::advanceTo(const StepReading& reading) {
    const bool isBase = !last_;
    const bool isAnew = isBase || last_->epoch != reading.epoch || reading.steps < last_->steps;
    if (isAnew) state_.steps = std::max(state_.steps, known_);
    if (!isBase) state_.steps += stepsBetween(*last_, reading);
    last_ = reading;
    state_.epoch = reading.epoch;
    state_.reading = reading.steps;
    sinceSaving_ += pollingInterval;
    if (isBase || sinceSaving_ >= savingInterval) save();
}

/// What cannot be saved is tried again the next time.
void IIOPedometer::save() {
    sinceSaving_ = {};
    if (state_ == saved_) return;
    const auto text = encodeJson(state_);
    if (text && defaults_.write({{&defaults_.standard(), stepCountKey, Data{*text}}})) saved_ = state_;
}

}  // namespace pedvar
