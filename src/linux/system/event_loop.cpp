#include "linux/system/event_loop.h"

#include <algorithm>

namespace pedvar {

namespace {

constexpr Seconds longestDelay{1e9};  // thirty years; keeps the steady clock from overflowing

}  // namespace

void EventLoop::post(Job job) {
    {
        const std::scoped_lock lock(mutex_);
        queue_.push_back(std::move(job));
    }
    changed_.notify_one();
}

Timer EventLoop::after(Seconds delay, Job job) {
    auto held = std::make_shared<Job>(std::move(job));
    const Seconds wait = std::max(Seconds{}, std::min(delay, longestDelay));
    const auto due = SteadyClock::now() + std::chrono::ceil<SteadyClock::duration>(wait);
    const std::scoped_lock lock(mutex_);
    timers_.emplace(due, held);
    return Timer(std::move(held));
}

void EventLoop::runUntilFinished(const CancellableTask& root) {
    while (!root.isFinished()) {
        Job job = next();
        job();
    }
}

Job EventLoop::next() {
    std::unique_lock lock(mutex_);
    while (true) {
        queueDueTimers();
        if (!queue_.empty()) {
            Job job = std::move(queue_.front());
            queue_.pop_front();
            return job;
        }
        if (timers_.empty()) {
            changed_.wait(lock);
        } else {
            changed_.wait_until(lock, timers_.begin()->first);
        }
    }
}

void EventLoop::queueDueTimers() {
    while (!timers_.empty()) {
        const auto first = timers_.begin();
        const bool isCancelled = first->second.expired();
        if (!isCancelled && first->first > SteadyClock::now()) return;
        if (!isCancelled) {
            queue_.push_back([weak = std::move(first->second)] {
                if (const auto job = weak.lock()) (*job)();
            });
        }
        timers_.erase(first);
    }
}

}  // namespace pedvar
