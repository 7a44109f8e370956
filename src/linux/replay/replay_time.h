/// The time of a recording that is played back.
#pragma once

#include "core/async.h"
#include "platform/clock.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace pedvar {

/// The main executor and the clock of a replay. Time passes only within `passTo`, by steps from timer to timer;
/// posts may come from any thread.
class ReplayTime : public MainExecutor, public Clock {
public:
    /// `speed` is how many seconds pass in one of the machine's; without it time passes as fast as work is done.
    ReplayTime(Date start, std::optional<double> speed);

    Date now() const override { return now_; }
    void post(Job job) override;
    Timer after(Seconds delay, Job job) override;

    /// Which of the timers that are due at the end of the way run.
    enum class AtEnd { wait, run };
    /// Passes time until `end`, which is not before now. Stays short of it when `interrupt` was called.
    void passTo(Date end, AtEnd timers);
    /// From any thread: `passTo` returns as soon as it can, now and from now on.
    void interrupt();
    bool isInterrupted() const;

    /// Runs jobs, without time passing, until `task` has ended.
    void run(Task<> task);

private:
    using SteadyClock = std::chrono::steady_clock;
    struct Due {
        Date at;
        std::weak_ptr<Job> job;
    };

    /// Runs what is queued.
    void settle();
    /// Waits for its time to come, and does meanwhile what is asked for; false when interrupted.
    bool waitFor(Date moment);
    std::shared_ptr<Job> nextTimer(Date end, AtEnd timers, Date& at);

    Date start_;
    Date now_;
    std::optional<double> speed_;
    SteadyClock::time_point began_ = SteadyClock::now();
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Job> queue_;
    bool isInterrupted_ = false;
    std::vector<Due> timers_;  // in the order in which they were made
};

}  // namespace pedvar
