#include "apps/cli/output_file.h"

#include "linux/sqlite/database_file.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

namespace pedvar {

namespace fs = std::filesystem;

namespace {

std::unexpected<CommandError> unwritable(const fs::path& path, int code) {
    const ErrorKind kind = code == ENOSPC || code == EDQUOT ? ErrorKind::full : ErrorKind::unwritable;
    return std::unexpected(
        CommandError{kind, Phrase("\"{}\" cannot be written: {}.", {path.string(), std::strerror(code)})});
}

std::unexpected<CommandError> alreadyThere(const fs::path& path) {
    return std::unexpected(CommandError{ErrorKind::fileExists,
                                        Phrase("\"{}\" is there already; --force replaces it.", {path.string()})});
}

/// Gives a finished file its name; an error number when that fails.
int rename(const fs::path& from, const fs::path& to, OutputFile::Existing existing) {
    if (existing == OutputFile::Existing::replace) {
        return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
    }
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // A file system that cannot tell; that none is there has been seen before.
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

}  // namespace

CommandResult<OutputFile> OutputFile::create(const fs::path& path, Existing existing) {
    std::error_code error;
    fs::path target = path;
    if (const auto status = fs::symlink_status(path, error); fs::exists(status)) {
        if (existing == Existing::keep) return alreadyThere(path);
        if (fs::is_directory(path, error)) return unwritable(path, EISDIR);
        if (fs::is_symlink(status)) target = fs::canonical(path, error);
        if (!error && !fs::is_regular_file(target, error)) return unwritable(path, EINVAL);
        if (error) return unwritable(path, error.value());
        if (isDatabase(target)) {  // forcing is for what was exported before, not for the data itself
            return std::unexpected(CommandError{
                ErrorKind::unwritable,
                Phrase("\"{}\" is a database, which nothing replaces; choose another name.", {path.string()})});
        }
    }
    fs::path unfinished = target;
    unfinished.replace_filename(fmt::format(".{}.{}", target.filename().string().substr(0, 200), ::getpid()));
    if (target.filename().empty()) return unwritable(path, EISDIR);
    const int descriptor = ::open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) return unwritable(path, errno);
    return OutputFile(std::move(target), existing, std::move(unfinished), descriptor);
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : target_(std::move(other.target_)),
      existing_(other.existing_),
      unfinished_(std::move(other.unfinished_)),
      descriptor_(std::exchange(other.descriptor_, -1)),
      failure_(other.failure_) {}

OutputFile::~OutputFile() {
    if (descriptor_ < 0) return;
    ::close(descriptor_);
    ::unlink(unfinished_.c_str());
}

void OutputFile::write(std::string_view text) {
    while (!text.empty() && failure_ == 0) {
        const ssize_t count = ::write(descriptor_, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            failure_ = errno;
        }
    }
}

CommandResult<void> OutputFile::keep() {
    if (failure_ == 0 && ::fsync(descriptor_) != 0) failure_ = errno;
    if (failure_ == 0) failure_ = rename(unfinished_, target_, existing_);
    if (failure_ == EEXIST) return alreadyThere(target_);
    if (failure_ != 0) return unwritable(target_, failure_);
    ::close(std::exchange(descriptor_, -1));
    return {};
}

}  // namespace pedvar
