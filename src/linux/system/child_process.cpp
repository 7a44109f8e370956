#include "linux/system/child_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

namespace pedvar {

namespace {

/// A descriptor that becomes readable when the process ends; negative without one. The header of glibc 2.36 lets C
/// only call its function for that.
int openProcess(pid_t process) {
    return static_cast<int>(syscall(SYS_pidfd_open, process, 0));
}

}  // namespace

std::expected<std::unique_ptr<ChildProcess>, std::string> ChildProcess::start(
    Readiness& readiness, std::vector<std::string> words, std::move_only_function<void(int)> handler) {
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    const int failure = posix_spawnp(&process, arguments.front(), &files, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (failure != 0) return std::unexpected(std::strerror(failure));
    std::unique_ptr<ChildProcess> child(new ChildProcess(process, openProcess(process), std::move(handler)));
    if (child->descriptor_ < 0) return std::unexpected(std::strerror(errno));
    child->readable_ = readiness.onReadable(child->descriptor_, [&self = *child] {
        self.readable_ = {};
        const int code = self.wait();
        auto told = std::move(self.handler_);
        told(code);  // may destroy the child
    });
    return child;
}

ChildProcess::~ChildProcess() {
    readable_ = {};
    if (process_ != 0) {
        kill(process_, SIGTERM);
        wait();
    }
    if (descriptor_ >= 0) close(descriptor_);
}

int ChildProcess::wait() {
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) continue;
    process_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace pedvar
