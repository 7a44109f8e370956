/// The main executor of a program.
#pragma once

#include "core/async.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace pedvar {

/// Runs jobs on the thread that calls `run`, and sleeps while there are none. Delays are measured by the steady
/// clock: setting the machine's clock neither hurries nor holds them.
class EventLoop : public MainExecutor {
public:
    void post(Job job) override;
    Timer after(Seconds delay, Job job) override;

    /// Runs jobs until `task` has ended and yields its result. What is still queued then stays for the next run.
    template <class T>
    T run(Task<T> task) {
        std::optional<T> result;
        TaskScope scope(*this);
        runUntilFinished(scope.spawn(store(std::move(task), result)));
        return std::move(*result);
    }
    void run(Task<> task) {
        TaskScope scope(*this);
        runUntilFinished(scope.spawn(std::move(task)));
    }

private:
    using SteadyClock = std::chrono::steady_clock;

    template <class T>
    static Task<> store(Task<T> task, std::optional<T>& result) {
        result.emplace(co_await task);
    }

    void runUntilFinished(const CancellableTask& root);
    /// The job whose turn it is, waited for if need be.
    Job next();
    void queueDueTimers();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Job> queue_;
    std::multimap<SteadyClock::time_point, std::weak_ptr<Job>> timers_;
};

}  // namespace pedvar
