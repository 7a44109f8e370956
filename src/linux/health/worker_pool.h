/// Threads that work through a queue.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace pedvar {

/// Runs jobs in the order in which they come, on threads that start when there is more to do than the running ones
/// take; with none at all, on the calling thread, at once. Ends when all jobs are done.
template <class Context>
class WorkerPool {
public:
    /// A job works with what its thread keeps for all its jobs.
    using Job = std::move_only_function<void(Context&)>;

    explicit WorkerPool(std::size_t highestThreadCount) : highestThreadCount_(highestThreadCount) {}
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    ~WorkerPool() {
        {
            const std::scoped_lock lock(mutex_);
            isEnding_ = true;
        }
        changed_.notify_all();
    }

    void add(Job job) {
        if (highestThreadCount_ == 0) return job(ownContext_);
        {
            const std::scoped_lock lock(mutex_);
            jobs_.push_back(std::move(job));
            if (idleCount_ < jobs_.size() && threads_.size() < highestThreadCount_) {
                threads_.emplace_back([this] { work(); });
            }
        }
        changed_.notify_one();
    }

private:
    void work() {
        Context context;
        std::unique_lock lock(mutex_);
        while (true) {
            ++idleCount_;
            changed_.wait(lock, [this] { return isEnding_ || !jobs_.empty(); });
            --idleCount_;
            if (jobs_.empty()) return;
            Job job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            job(context);
            job = nullptr;
            lock.lock();
        }
    }

    const std::size_t highestThreadCount_;
    Context ownContext_;  // of the calling thread, where it does the work
    std::mutex mutex_;    // guards what follows
    std::condition_variable changed_;
    std::deque<Job> jobs_;
    std::size_t idleCount_ = 0;
    bool isEnding_ = false;
    std::vector<std::jthread> threads_;  // last: they end before what they use
};

}  // namespace pedvar
