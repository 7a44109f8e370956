#include "linux/web/desktop_pages.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace pedvar {

namespace {

// The shell ends at once and leaves the browser to the system, so that nobody has to wait for its end.
constexpr const char* startInBackground =
    R"(command -v xdg-open >/dev/null || exit 1; xdg-open "$1" </dev/null >/dev/null 2>&1 &)";

}  // namespace

bool DesktopPages::open(const std::string& address) {
    std::array<std::string, 5> words{"sh", "-c", startInBackground, "sh", address};
    std::array<char*, words.size() + 1> arguments{};
    for (std::size_t i = 0; i < words.size(); ++i) arguments[i] = words[i].data();
    pid_t process = 0;
    if (posix_spawn(&process, "/bin/sh", nullptr, nullptr, arguments.data(), environ) != 0) return false;
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace pedvar
