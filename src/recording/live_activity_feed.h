/// Keeps the live activity up to date without flooding it.
#pragma once

#include "core/executor.h"
#include "platform/live_activity.h"

#include <optional>

namespace pedvar {

/// Passes updates on at most once a second: what comes in between waits, and the latest of it is shown when the
/// second has passed. Lives on the main executor.
class LiveActivityFeed {
public:
    /// Keeps references.
    LiveActivityFeed(MainExecutor& executor, LiveActivity& liveActivity)
        : executor_(executor), liveActivity_(liveActivity) {}

    void start(const LiveActivityState& state);
    void update(const LiveActivityState& state);
    /// Shows the state at once.
    void force(const LiveActivityState& state);
    void end();

private:
    void wait();

    MainExecutor& executor_;
    LiveActivity& liveActivity_;
    std::optional<LiveActivityState> pendingLiveActivityUpdate_;
    Timer waiting_;  // since the last update
};

}  // namespace pedvar
