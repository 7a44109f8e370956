#include "linux/system/process_lock.h"

#include "linux/system/private_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <utility>

namespace pedvar {

namespace {

std::optional<pid_t> writtenOwner(int descriptor) {
    std::array<char, 32> text{};
    const auto count = pread(descriptor, text.data(), text.size(), 0);
    pid_t owner = 0;
    if (count > 0) std::from_chars(text.data(), text.data() + count, owner);
    return owner > 0 ? std::optional(owner) : std::nullopt;
}

}  // namespace

std::expected<ProcessLock, ProcessLock::Refusal> ProcessLock::take(const std::filesystem::path& file) {
    const auto failed = [](int error) { return std::unexpected(Refusal{error, std::nullopt}); };
    if (const int failure = makePrivateFolder(file.parent_path()); failure != 0) return failed(failure);
    const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) return failed(errno);
    ProcessLock lock(descriptor);
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK) return failed(errno);
        return std::unexpected(Refusal{0, writtenOwner(descriptor)});
    }
    // Without room on the disk the lock holds all the same; it only cannot say who has it.
    const std::string owner = std::to_string(getpid()) + "\n";
    if (ftruncate(descriptor, 0) == 0) static_cast<void>(!pwrite(descriptor, owner.data(), owner.size(), 0));
    return lock;
}

ProcessLock::ProcessLock(ProcessLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

ProcessLock& ProcessLock::operator=(ProcessLock&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

ProcessLock::~ProcessLock() {
    if (descriptor_ >= 0) close(descriptor_);
}

}  // namespace pedvar
