#include "linux/import/batch_queue.h"

#include <utility>

namespace pedvar {

bool BatchQueue::take(ImportBatch batch) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isClosed_ || batches_.size() < mostQueued; });
    if (isClosed_) return false;
    batches_.push_back(std::move(batch));
    changed_.notify_all();
    return true;
}

std::optional<ImportBatch> BatchQueue::next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isClosed_ || !batches_.empty(); });
    if (batches_.empty()) {
        if (error_) std::rethrow_exception(error_);
        return std::nullopt;
    }
    ImportBatch batch = std::move(batches_.front());
    batches_.pop_front();
    changed_.notify_all();
    return batch;
}

void BatchQueue::close() {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    changed_.notify_all();
}

void BatchQueue::abandon() {
    const std::lock_guard lock(mutex_);
    batches_.clear();
    isClosed_ = true;
    changed_.notify_all();
}

void BatchQueue::fail(std::exception_ptr error) {
    const std::lock_guard lock(mutex_);
    error_ = std::move(error);
    isClosed_ = true;
    changed_.notify_all();
}

}  // namespace pedvar
