#include "cli/run_pedvar.h"

#include "core/check.h"

#include <doctest/doctest.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ranges>

namespace pedvar {
namespace {

/// The form in which the system takes lists of texts; they are not changed.
std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

}  // namespace

RunningPedvar::RunningPedvar(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                             const std::vector<std::string>& environment) {
    const std::string output = scratch_ / "output";
    const std::string errors = scratch_ / "errors";
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addchdir_np(&files, folder.c_str());
    posix_spawn_file_actions_addopen(&files, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, 1, output.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&files, 2, errors.c_str(), O_WRONLY | O_CREAT, 0600);

    std::vector<std::string> words{PEDVAR_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables(environment);
    for (const char* variable : {"TZ=Europe/Berlin", "LC_ALL=C.UTF-8", "HOME=/nonexistent"}) {
        variables.emplace_back(variable);  // the first of a name is the one that is found
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t hangUp;  // which whoever runs the tests may ignore
    sigemptyset(&hangUp);
    sigaddset(&hangUp, SIGHUP);
    posix_spawnattr_setsigdefault(&attributes, &hangUp);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    const int failure = posix_spawn(&process_, PEDVAR_PROGRAM, &files, &attributes, pointers(words).data(),
                                    pointers(variables).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    check(failure == 0, "the program cannot be started");
}

RunningPedvar::~RunningPedvar() {
    if (hasEnded()) return;
    signal(SIGKILL);
    finish();
}

bool RunningPedvar::says(std::string_view text) {
    return comesToSay([text](const std::string& said) { return said.contains(text); });
}

bool RunningPedvar::says(const std::regex& pattern) {
    return comesToSay([&pattern](const std::string& said) { return std::regex_search(said, pattern); });
}

bool RunningPedvar::comesToSay(const std::function<bool(const std::string&)>& isSought) {
    const auto hasSaid = [&] {
        return isSought(readFile(scratch_ / "output")) || isSought(readFile(scratch_ / "errors"));
    };
    while (!hasEnded()) {
        if (hasSaid()) return true;
        usleep(5'000);  // another process takes its own time
    }
    return hasSaid();
}

bool RunningPedvar::hasEnded() {
    int status = 0;
    if (!status_ && waitpid(process_, &status, WNOHANG) == process_) status_ = status;
    return status_.has_value();
}

void RunningPedvar::signal(int number) const {
    kill(process_, number);
}

Outcome RunningPedvar::finish() {
    if (int status = 0; !status_) {
        check(waitpid(process_, &status, 0) == process_, "the program cannot be waited for");
        status_ = status;
    }
    return {WIFEXITED(*status_) ? WEXITSTATUS(*status_) : -WTERMSIG(*status_), readFile(scratch_ / "output"),
            readFile(scratch_ / "errors")};
}

Outcome runPedvar(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                  const std::vector<std::string>& environment) {
    return RunningPedvar(folder, arguments, environment).finish();
}

void checkGolden(const std::string& name, const std::string& text) {
    const std::filesystem::path file = std::filesystem::path(PEDVAR_GOLDEN) / name;
    if (std::getenv("PEDVAR_REFRESH_GOLDEN")) {
        writeFile(file, text);
        return;
    }
    CAPTURE(name);
    CHECK(text == readFile(file));
}

}  // namespace pedvar
