/// Time that tests drive.
#pragma once

#include "core/async.h"
#include "core/check.h"
#include "platform/clock.h"

#include <deque>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace pedvar {

/// The main executor and the clock of a test. Nothing runs and no time passes until the test says so. `post` may
/// come from other threads.
class VirtualTime : public MainExecutor, public Clock {
public:
    explicit VirtualTime(Date start = Date{}) : now_(start) {}

    Date now() const override { return now_; }
    /// Sets the clock without passing time: what is due stays as far off as it was.
    void setClock(Date now) { now_ = now; }
    /// The time that has passed, whatever the clock shows.
    Seconds elapsed() const { return elapsed_; }

    void post(Job job) override {
        const std::scoped_lock lock(mutex_);
        queue_.push_back(std::move(job));
    }

    Timer after(Seconds delay, Job job) override {
        auto held = std::make_shared<Job>(std::move(job));
        timers_.push_back({elapsed_ + delay, held});
        return Timer(std::move(held));
    }

    /// Runs what needs no time.
    void settle() {
        while (Job job = next()) job();
    }

    /// Passes time, stopping at each timer on the way.
    void advance(Seconds duration) {
        const Seconds end = elapsed_ + duration;
        settle();
        while (runFirstTimer(end)) settle();
        pass(end);
    }

    /// Runs `task` to its end, which has to need no time, and yields its result.
    template <class T>
    T run(Task<T> task) {
        std::optional<T> result;
        TaskScope scope(*this);
        scope.spawn(store(std::move(task), result));
        settle();
        check(result.has_value(), "the task did not end without time passing");
        return std::move(*result);
    }
    void run(Task<> task) {
        TaskScope scope(*this);
        const auto running = scope.spawn(std::move(task));
        settle();
        check(running.isFinished(), "the task did not end without time passing");
    }

private:
    struct Due {
        Seconds at;
        std::weak_ptr<Job> job;
    };

    template <class T>
    static Task<> store(Task<T> task, std::optional<T>& result) {
        result.emplace(co_await task);
    }

    Job next() {
        const std::scoped_lock lock(mutex_);
        if (queue_.empty()) return {};
        Job job = std::move(queue_.front());
        queue_.pop_front();
        return job;
    }

    bool runFirstTimer(Seconds end) {
        std::erase_if(timers_, [](const Due& due) { return due.job.expired(); });
        auto first = timers_.end();
        for (auto it = timers_.begin(); it != timers_.end(); ++it) {
            if (it->at <= end && (first == timers_.end() || it->at < first->at)) first = it;
        }
        if (first == timers_.end()) return false;
        const Due due = *first;
        timers_.erase(first);
        pass(due.at);
        if (const auto job = due.job.lock()) (*job)();
        return true;
    }

    void pass(Seconds to) {
        now_ += to - elapsed_;
        elapsed_ = to;
    }

    Date now_;
    Seconds elapsed_{};
    std::mutex mutex_;
    std::deque<Job> queue_;
    std::vector<Due> timers_;
};

}  // namespace pedvar
