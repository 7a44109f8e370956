/// One process at a time.
#pragma once

#include <sys/types.h>

#include <expected>
#include <filesystem>
#include <optional>
#include <string>

namespace pedvar {

/// Held by one process of all those that name the same file, until it is destroyed or the process ends, however
/// it ends. The file stays, and says in which process.
class ProcessLock {
public:
    struct Refusal {
        int error = 0;               // what keeps the file from being made; 0 when somebody holds it
        std::optional<pid_t> owner;  // who holds it, where the file says
        bool operator==(const Refusal&) const = default;
    };

    /// Makes file and folder if need be.
    static std::expected<ProcessLock, Refusal> take(const std::filesystem::path& file);
    ProcessLock(ProcessLock&& other) noexcept;
    ProcessLock& operator=(ProcessLock&& other) noexcept;
    ~ProcessLock();

private:
    explicit ProcessLock(int descriptor) : descriptor_(descriptor) {}

    int descriptor_;  // -1 when the lock has moved on
};

}  // namespace pedvar
