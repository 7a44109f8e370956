#include "linux/replay/replay_time.h"

#include <algorithm>
#include <utility>

namespace pedvar {

namespace {

/// Moments that are nearer to each other are the same: sums of seconds are rounded.
constexpr Seconds instant{1e-4};

}  // namespace

ReplayTime::ReplayTime(Date start, std::optional<double> speed) : start_(start), now_(start), speed_(speed) {}

void ReplayTime::post(Job job) {
    {
        const std::scoped_lock lock(mutex_);
        queue_.push_back(std::move(job));
    }
    changed_.notify_one();
}

Timer ReplayTime::after(Seconds delay, Job job) {
    auto held = std::make_shared<Job>(std::move(job));
    timers_.push_back({now_ + delay, held});
    return Timer(std::move(held));
}

void ReplayTime::interrupt() {
    {
        const std::scoped_lock lock(mutex_);
        isInterrupted_ = true;
    }
    changed_.notify_one();
}

bool ReplayTime::isInterrupted() const {
    const std::scoped_lock lock(mutex_);
    return isInterrupted_;
}

void ReplayTime::passTo(Date end, AtEnd timers) {
    settle();
    Date at = now_;
    while (const auto job = nextTimer(end, timers, at)) {
        if (!waitFor(at)) return;
        now_ = std::max(now_, at);
        (*job)();
        settle();
    }
    if (waitFor(end)) now_ = std::max(now_, end);
}

std::shared_ptr<Job> ReplayTime::nextTimer(Date end, AtEnd timers, Date& at) {
    std::erase_if(timers_, [](const Due& due) { return due.job.expired(); });
    const auto first = std::ranges::min_element(timers_, {}, &Due::at);
    const Date limit = timers == AtEnd::run ? end + instant : end - instant;
    if (first == timers_.end() || first->at > limit) return nullptr;
    at = first->at;
    auto job = first->job.lock();
    timers_.erase(first);
    return job;
}

void ReplayTime::settle() {
    std::unique_lock lock(mutex_);
    while (!queue_.empty()) {
        Job job = std::move(queue_.front());
        queue_.pop_front();
        lock.unlock();
        job();
        lock.lock();
    }
}

bool ReplayTime::waitFor(Date moment) {
    std::unique_lock lock(mutex_);
    if (!speed_) return !isInterrupted_;
    const auto due =
        began_ + std::chrono::ceil<SteadyClock::duration>(Seconds((moment - start_).count() / *speed_));
    while (!isInterrupted_) {
        const bool isDue = !changed_.wait_until(lock, due, [&] { return isInterrupted_ || !queue_.empty(); });
        if (isDue) return true;
        lock.unlock();
        settle();
        lock.lock();
    }
    return false;
}

void ReplayTime::run(Task<> task) {
    TaskScope scope(*this);
    const CancellableTask running = scope.spawn(std::move(task));
    while (!running.isFinished()) {
        settle();
        if (running.isFinished()) return;
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return !queue_.empty(); });
    }
}

}  // namespace pedvar
