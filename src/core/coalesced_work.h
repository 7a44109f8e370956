/// Work that many events ask for and that is done once for all of them.
#pragma once

#include "core/async.h"

#include <functional>
#include <optional>
#include <utility>

namespace pedvar {

/// Runs its work when asked, once at a time. However often it is asked while it runs, it runs exactly once more.
/// Make it one of the last members, like a `TaskScope`.
class CoalescedWork {
public:
    /// `work` makes the task of one run.
    CoalescedWork(MainExecutor& executor, std::function<Task<>()> work)
        : work_(std::move(work)), tasks_(executor) {}

    void request() {
        isRequested_ = true;
        if (!running_ || running_->isFinished()) running_ = tasks_.spawn(run());
    }

    /// `co_await work.finished()`: returns once nothing is asked for any more.
    Task<> finished() {
        if (running_) co_await running_->finished();
    }

private:
    Task<> run() {
        while (std::exchange(isRequested_, false)) co_await work_();
    }

    std::function<Task<>()> work_;
    bool isRequested_ = false;
    std::optional<CancellableTask> running_;
    TaskScope tasks_;
};

}  // namespace pedvar
