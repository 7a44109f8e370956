/// Files that are imported when they appear.
#pragma once

#include "linux/system/child_process.h"
#include "linux/system/folder_watch.h"
#include "platform/platform_log.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace pedvar {

/// Imports what lies in a folder and what appears there: health exports, and activities as GPX. A file whose
/// writer has not closed it, or that breaks off, waits until it is written again. What was imported moves to the
/// folder "imported" in there, what cannot be imported to "failed". A folder that is not there, or is taken away,
/// is waited for.
class DropFolder {
public:
    /// Begins with what is there. `importing` makes the command line that imports a file.
    using Command = std::function<std::vector<std::string>(const std::filesystem::path& file)>;
    DropFolder(MainExecutor& executor, Readiness& readiness, std::filesystem::path folder, Command importing,
               PlatformLog& log);

    const std::filesystem::path& folder() const { return folder_; }

    /// Looks for the folder if it is not watched.
    void follow();

private:
    using FolderIdentity = std::optional<std::pair<std::uint64_t, std::uint64_t>>;  // none when it is not there
    static FolderIdentity identityOf(const std::filesystem::path& folder);

    void look(const std::vector<std::string>& names);
    void settle();
    void next();
    void finish(const std::string& name, int exitCode);
    void say(LogLevel level, const std::string& message);

    MainExecutor& executor_;
    Readiness& readiness_;
    std::filesystem::path folder_;
    Command importing_;
    PlatformLog& log_;
    std::set<std::string> waiting_;       // to be looked at, by name
    std::unique_ptr<FolderWatch> watch_;  // of the folder, or of the last one on the way to it
    bool isThere_ = false;
    FolderIdentity identity_;  // of the folder that is watched; its path may come to mean another
    std::string problem_;      // why it is not
    std::unique_ptr<ChildProcess> import_;
    Timer settled_;
};

/// Whether nobody writes the file, and it does not break off.
bool isWhole(const std::filesystem::path& file);

/// What an activity in a GPX file was, where the file's name says so ("2024-05-01 hike.gpx"), a walk otherwise.
std::string activityTypeOf(const std::filesystem::path& file);

}  // namespace pedvar
