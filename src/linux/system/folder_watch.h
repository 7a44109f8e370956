/// What others do to files.
#pragma once

#include "linux/system/readiness.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace pedvar {

/// Tells the names of a folder's entries when they change, also when other processes change them.
class FolderWatch {
public:
    enum class Change {
        anyWrite,      // anything written, made, moved or removed
        finishedFile,  // closed by who has written it, or moved there
        newEntry,      // made or moved there
    };
    using Handler = std::move_only_function<void(const std::vector<std::string>& names)>;

    /// Calls `handler` on the main executor; with no names when too much happened to tell, or the watch has
    /// ended. What prevents watching is for people.
    static std::expected<std::unique_ptr<FolderWatch>, std::string> open(Readiness& readiness,
                                                                         const std::filesystem::path& folder,
                                                                         Change change, Handler handler);
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;
    ~FolderWatch();

    /// Whether the folder was removed, moved or unmounted, so that nothing more is told. Not known of `anyWrite`.
    bool hasEnded() const { return hasEnded_; }

private:
    FolderWatch(int descriptor, Handler handler) : descriptor_(descriptor), handler_(std::move(handler)) {}

    void read();

    int descriptor_;
    Handler handler_;
    bool hasEnded_ = false;
    Subscription readable_;
};

}  // namespace pedvar
