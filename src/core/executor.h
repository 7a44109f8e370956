/// The one thread that runs all logic.
#pragma once

#include "core/date.h"

#include <functional>
#include <memory>
#include <utility>

namespace pedvar {

using Job = std::move_only_function<void()>;

/// Keeps a delayed job alive: destroying or cancelling the timer drops the job.
class Timer {
public:
    Timer() = default;
    explicit Timer(std::shared_ptr<Job> job) : job_(std::move(job)) {}

    void cancel() { job_.reset(); }
    explicit operator bool() const { return job_ != nullptr; }

private:
    std::shared_ptr<Job> job_;
};

/// Runs jobs one after another, in the order in which they were posted.
class MainExecutor {
public:
    virtual ~MainExecutor() = default;

    /// Runs `job` after what is queued already. From any thread; never inside the call.
    virtual void post(Job job) = 0;

    /// Runs `job` once when `delay` has passed. On the main thread.
    [[nodiscard]] virtual Timer after(Seconds delay, Job job) = 0;
};

}  // namespace pedvar
