#include "apps/cli/application.h"
#include "apps/cli/commands/command.h"
#include "apps/cli/interruption.h"
#include "apps/cli/output_file.h"
#include "linux/backup/backup_file.h"
#include "linux/backup/data_copy.h"
#include "linux/system/private_folder.h"

#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace pedvar {
namespace {

namespace fs = std::filesystem;

/// A folder beside that of the data, which goes again unless it has taken its place.
class PreparedFolder {
public:
    static CommandResult<PreparedFolder> beside(const fs::path& folder) {
        std::string path = folder.string() + ".restoring-XXXXXX";
        if (makePrivateFolder(folder.parent_path()) == 0 && ::mkdtemp(path.data())) return PreparedFolder(path);
        return std::unexpected(CommandError{
            ErrorKind::unwritable,
            Phrase("\"{}\" cannot be written: {}.", {folder.parent_path().string(), std::strerror(errno)})});
    }
    PreparedFolder(PreparedFolder&& other) noexcept : path_(std::exchange(other.path_, {})) {}
    PreparedFolder& operator=(PreparedFolder&&) = delete;
    ~PreparedFolder() {
        std::error_code error;
        if (!path_.empty()) fs::remove_all(path_, error);
    }

    const fs::path& path() const { return path_; }
    void keep() { path_.clear(); }

private:
    explicit PreparedFolder(fs::path path) : path_(std::move(path)) {}

    fs::path path_;
};

CommandError stopped() {
    return {ErrorKind::interrupted, Phrase("Stopped. Nothing was changed.")};
}

/// Puts the backup in the place of the data. Where the old data is kept; none when there was none.
CommandResult<std::optional<fs::path>> restore(const fs::path& backup, const Interruption& interruption,
                                               Application& application) {
    std::error_code error;
    if (!fs::exists(backup, error)) {
        return std::unexpected(CommandError{ErrorKind::fileNotFound,
                                            application.text()("There is no backup \"{}\".", backup.string())});
    }
    if (::access(backup.c_str(), R_OK) != 0) {
        return std::unexpected(CommandError{
            ErrorKind::unreadable, Phrase("\"{}\" cannot be read: {}.", {backup.string(), std::strerror(errno)})});
    }
    fs::path folder = fs::weakly_canonical(application.folder(), error);
    if (!folder.has_filename()) folder = folder.parent_path();  // of a folder to be made: "data/"
    if (fs::equivalent(folder, fs::current_path(error), error)) {
        return std::unexpected(CommandError{
            ErrorKind::busy, application.text()("The data folder {} is the one you are in. Go to another folder, "
                                                "and restore again. Nothing was changed.",
                                                folder.string())});
    }
    auto prepared = PreparedFolder::beside(folder);
    if (!prepared) return std::unexpected(prepared.error());
    const auto read =
        commandResult(readBackup(backup, prepared->path(), [&] { return !interruption.hasHappened(); }));
    if (interruption.hasHappened()) return std::unexpected(stopped());
    if (!read) return std::unexpected(read.error());
    constexpr std::chrono::seconds patience{1};  // for commands that only look
    const auto alone = FolderUse::alone(folder, patience);
    if (!alone) {
        return std::unexpected(CommandError{
            ErrorKind::busy,
            application.text()("Another process works with the data in {}. End what records, imports or watches, "
                               "and restore again. Nothing was changed.",
                               folder.string())});
    }
    auto aside = commandResult(replaceFolder(folder, prepared->path()));
    if (!aside) return aside;
    prepared->keep();
    // Followers of the old folder find the new one in its place.
    if (*aside) FollowedWidgets(**aside).reloadAllTimelines();
    return aside;
}

}  // namespace

CommandResult<Report> run(const BackupRequest& request, Application& application) {
    std::error_code error;
    const auto isThere = [&](std::string_view name) { return fs::exists(application.folder() / name, error); };
    if (std::ranges::none_of(dataFiles, isThere)) {
        return std::unexpected(
            CommandError{ErrorKind::fileNotFound,
                         application.text()("There is no data in {} to keep.", application.folder().string())});
    }
    auto file = OutputFile::create(request.file,
                                   request.isForced ? OutputFile::Existing::replace : OutputFile::Existing::keep);
    if (!file) return std::unexpected(file.error());
    fs::permissions(file->unfinished(), fs::perms::owner_read | fs::perms::owner_write, error);
    const Interruption interruption;
    const auto written = commandResult(
        writeBackup(application.folder(), file->unfinished(), [&] { return !interruption.hasHappened(); }));
    if (interruption.hasHappened()) return std::unexpected(stopped());
    if (!written) return std::unexpected(written.error());
    const auto size = static_cast<std::int64_t>(fs::file_size(file->unfinished(), error));
    if (const auto kept = file->keep(); !kept) return std::unexpected(kept.error());
    if (application.wantsJson()) return Report{JsonObject{{"file", {request.file}}, {"bytes", {size}}}};
    const Screen screen = application.screen();
    return Report{screen.text("All data is in {0}, {1}.", harmless(request.file),
                              screen.figures.bytes(static_cast<double>(size))) +
                  "\n"};
}

CommandResult<Report> run(const RestoreRequest& request, Application& application) {
    const Interruption interruption;  // what comes too late to stop it does not keep it from its end
    const auto aside = restore(request.file, interruption, application);
    if (!aside) return std::unexpected(aside.error());
    application.hold();
    const auto refreshed = application.refresh();
    const auto problem = refreshed ? std::nullopt : std::optional(refreshed.error());
    if (application.wantsJson()) {
        const JsonValue kept = *aside ? JsonValue{(*aside)->string()} : JsonValue();
        return Report{JsonObject{{"file", {request.file}}, {"keptAside", kept}}, problem};
    }
    const Screen screen = application.screen();
    std::string view = screen.text("The data is that of {}.", harmless(request.file)) + "\n";
    if (*aside) {
        view += screen.text("What was there before is kept in {}.", harmless((*aside)->string())) + "\n";
    }
    return Report{std::move(view), problem};
}

}  // namespace pedvar
