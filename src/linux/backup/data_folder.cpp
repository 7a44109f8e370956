#include "linux/backup/data_folder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>

namespace pedvar {

namespace fs = std::filesystem;

namespace {

int openFolder(const fs::path& folder) {
    return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

/// Whether the open folder is still the one of this path.
bool isAt(int descriptor, const fs::path& folder) {
    struct stat held{}, found{};
    return ::fstat(descriptor, &held) == 0 && ::stat(folder.c_str(), &found) == 0 && held.st_ino == found.st_ino &&
           held.st_dev == found.st_dev;
}

void syncFolder(const fs::path& folder) {
    const int descriptor = openFolder(folder);
    if (descriptor < 0) return;
    ::fsync(descriptor);
    ::close(descriptor);
}

/// A name beside `folder` that is free: "pedvar.before-restore", "pedvar.before-restore-2".
fs::path freeName(const fs::path& folder) {
    fs::path name = folder;
    name += ".before-restore";
    const fs::path first = name;
    std::error_code error;
    for (int number = 2; fs::exists(fs::symlink_status(name, error)); ++number) {
        name = first;
        name += fmt::format("-{}", number);
    }
    return name;
}

/// 0, or the system's error number.
int rename(const fs::path& from, const fs::path& to, unsigned flags) {
    return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0 ? 0 : errno;
}

}  // namespace

FolderUse FolderUse::among(const fs::path& folder) {
    while (true) {
        const int descriptor = openFolder(folder);
        if (descriptor < 0) return FolderUse(-1);
        while (::flock(descriptor, LOCK_SH) != 0 && errno == EINTR) {
        }
        FolderUse use(descriptor);
        if (isAt(descriptor, folder)) return use;
    }
}

std::optional<FolderUse> FolderUse::alone(const fs::path& folder, std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds pause{20};
    FolderUse use(openFolder(folder));
    if (use.descriptor_ < 0) return use;
    for (auto waited = pause; ::flock(use.descriptor_, LOCK_EX | LOCK_NB) != 0; waited += pause) {
        if (waited > patience) return std::nullopt;
        std::this_thread::sleep_for(pause);
    }
    return isAt(use.descriptor_, folder) ? std::optional(std::move(use)) : std::nullopt;
}

FolderUse::FolderUse(FolderUse&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

FolderUse& FolderUse::operator=(FolderUse&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

FolderUse::~FolderUse() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

StoreResult<std::optional<fs::path>> replaceFolder(const fs::path& folder, const fs::path& prepared) {
    const auto failed = [&](int error) {
        return std::unexpected(StoreError{error == ENOSPC ? StoreError::Kind::full : StoreError::Kind::unwritable,
                                          Phrase("The data folder {} cannot be replaced: {}. Nothing was changed.",
                                                 {folder.string(), std::strerror(error)})});
    };
    syncFolder(prepared);
    int error = rename(prepared, folder, RENAME_NOREPLACE);
    if (error == 0) {
        syncFolder(folder.parent_path());
        return std::nullopt;
    }
    if (error != EEXIST) return failed(error);
    error = rename(prepared, folder, RENAME_EXCHANGE);
    if (error != 0) return failed(error);
    syncFolder(folder.parent_path());
    const fs::path aside = freeName(folder);
    // Where that fails the old data stays under the name of the prepared folder.
    return rename(prepared, aside, RENAME_NOREPLACE) == 0 ? aside : prepared;
}

}  // namespace pedvar
