/// The file of the health store.
#pragma once

#include "core/event.h"
#include "linux/health/store_error.h"
#include "linux/sqlite/connection.h"

#include <chrono>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace pedvar {

/// The health store of one person as a file of SQLite's, and the news of what this process adds to it. From any
/// thread.
class HealthDatabase {
public:
    /// Opens and creates nothing. `patience` is how long a writer waits for another one.
    explicit HealthDatabase(std::filesystem::path path,
                            std::chrono::milliseconds patience = std::chrono::seconds(10));

    const std::filesystem::path& path() const { return path_; }
    const std::string& name() const { return name_; }  // the path for messages

    /// Whether there is a file that can be read as a store; false when there is none yet.
    StoreResult<bool> verify();

    /// A connection that cannot change the store; none while there is no store. A folder or file system that
    /// cannot be written does no harm.
    StoreResult<std::optional<Connection>> connectForReading();

    /// A connection that can write; creates the store, its folder (0700) and file (0600) if need be.
    StoreResult<Connection> connectForWriting();

    /// Calls `listener` with the types of which this process has added samples, on the thread that added them.
    [[nodiscard]] Subscription onSamplesAdded(Event<std::vector<std::string>>::Observer listener);
    void tellSamplesAdded(const std::vector<std::string>& types);

private:
    StoreResult<std::optional<Connection>> openForReading();
    StoreResult<> createFile();

    std::filesystem::path path_;
    std::string name_;
    std::chrono::milliseconds patience_;
    std::mutex creating_;              // held while the file is made
    std::mutex mutex_;                 // guards what follows
    std::optional<Connection> spare_;  // opened to verify, handed to the next reader
    Event<std::vector<std::string>> samplesAdded_;
};

}  // namespace pedvar
