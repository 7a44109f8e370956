#include "recording/live_activity_feed.h"

#include <utility>

namespace pedvar {

namespace {

constexpr Seconds liveActivityMinInterval{1};

}  // namespace

void LiveActivityFeed::start(const LiveActivityState& state) {
    liveActivity_.start(state);
    wait();
}

void LiveActivityFeed::update(const LiveActivityState& state) {
    if (waiting_) {
        pendingLiveActivityUpdate_ = state;
    } else {
        force(state);
    }
}

void LiveActivityFeed::force(const LiveActivityState& state) {
    liveActivity_.update(state);
    wait();
}

void LiveActivityFeed::end() {
    pendingLiveActivityUpdate_.reset();
    waiting_.cancel();
    liveActivity_.end();
}

void LiveActivityFeed::wait() {
    pendingLiveActivityUpdate_.reset();
    waiting_ = executor_.after(liveActivityMinInterval, [this] {
        waiting_.cancel();
        if (const auto pending = std::exchange(pendingLiveActivityUpdate_, std::nullopt)) force(*pending);
    });
}

}  // namespace pedvar
