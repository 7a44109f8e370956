/// Handing batches from the thread that reads to the thread that writes.
#pragma once

#include "linux/import/import_batch.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>

namespace pedvar {

/// A short queue: the reader waits when the writer falls behind, so that few batches are in memory.
class BatchQueue : public BatchSink {
public:
    /// For the reader; false once the queue is closed.
    bool take(ImportBatch batch) override;

    /// For the writer: the next batch; none when the queue is closed and empty. Throws what the reader threw.
    std::optional<ImportBatch> next();

    /// By either side. A writer that wants no more drops what is queued.
    void close();
    void abandon();
    /// The reader has thrown.
    void fail(std::exception_ptr error);

private:
    static constexpr std::size_t mostQueued = 2;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<ImportBatch> batches_;
    std::exception_ptr error_;
    bool isClosed_ = false;
};

}  // namespace pedvar
